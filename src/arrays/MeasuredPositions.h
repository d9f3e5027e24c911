#pragma once

#include <QorCore/Message.h>
#include <Tivor/MeasuredArray.h>

/// Position functions of measured arrays, of one dimension or two.
namespace Qor::Tivor::MeasuredPositions {

/// The position function that a data object holds, or an empty pointer.
template <class Position>
std::shared_ptr<Position> Of(const DataObject& object) {
    const auto* const wrapper = dynamic_cast<const GenericWrapper<Position>*>(&object);
    return wrapper != nullptr ? std::const_pointer_cast<Position>(wrapper->GetData()) : nullptr;
}

/// The same, if it is of that class.
template <class T>
std::shared_ptr<T> As(const DataObject& object) {
    return std::dynamic_pointer_cast<T>(Of<typename WrappedAs<T>::type>(object));
}

/// A data object that holds the position function, and stores it if it is of one of the classes `Stored`.
template <class... Stored, class Position>
std::shared_ptr<DataObject> Wrap(std::shared_ptr<Position> positions) {
    if (!positions)
        Core::Error::RaiseError(Core::NullPointerError("A position function is needed; it is null"),
                                QOR_CODE_CONTEXT("MeasuredArray"), "Qor.Tivor.MeasuredArray");
    std::shared_ptr<DataObject> object;
    const auto wrapAs = [&]<class T>(std::type_identity<T>) {
        if (auto stored = std::dynamic_pointer_cast<T>(positions))
            object = ValueTraits<T>::MakeData(std::move(stored));
    };
    (wrapAs(std::type_identity<Stored>()), ...);
    return object ? object : GenericWrapper<Position>::Create(std::move(positions));
}

using List = MeasuredArray::PositionList;

/// The very array, not a copy.
inline List Share(const Core::QorConstArray<double>& array, Core::QorConstPtr<Core::UnitDescriptor> units) {
    const boost::shared_array<double> values(const_cast<double*>(array.get()), [array](double*) {});
    return {values, array.size(), std::move(units)};
}

/// The positions of the indices below `count`, in the unit of the first one.
template <class GetPosition>
List Sample(std::uint64_t count, GetPosition getPosition) {
    if (count == 0)
        return {};
    List list{AllocateArray<double>(count), count, getPosition(0).GetUnits()};
    for (std::uint64_t i = 0; i < count; ++i)
        list.values[static_cast<std::ptrdiff_t>(i)] = getPosition(i).ConvertTo(list.units).GetValue();
    return list;
}

} // namespace Qor::Tivor::MeasuredPositions
