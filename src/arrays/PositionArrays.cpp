#include "PositionArrays.h"

#include "../serialization/ValueOperations.h"

#include <QorCore/Message.h>
#include <Tivor/ArrayDataObjects.h>

namespace Qor::Tivor::PositionArrays {

void RequirePositions(const boost::shared_array<double>& positions, std::uint64_t size,
                      const Core::CodeContext& context, const char* category) {
    if (!positions && size != 0)
        Core::Error::RaiseError(
            Core::NullPointerError(Core::FormatText("Expected an array of %1% positions, found none", {size})), context,
            category);
}

std::shared_ptr<Core::UnitDescriptor> UnitsOrPlain(std::shared_ptr<Core::UnitDescriptor> units) {
    return units ? std::move(units) : Core::UnitDescriptor::Create({}, {});
}

boost::shared_array<double> Copy(const boost::shared_array<double>& positions, std::uint64_t size) {
    auto copy = AllocateArray<double>(static_cast<std::size_t>(size));
    std::copy_n(positions.get(), size, copy.get());
    return copy;
}

bool AreSame(const Core::QorConstArray<double>& left, const Core::UnitDescriptor& leftUnits,
             const Core::QorConstArray<double>& right, const Core::UnitDescriptor& rightUnits) {
    return left.size() == right.size() && leftUnits == rightUnits &&
           Details::SameElements(left.get(), right.get(), left.size());
}

std::string Text(const Core::QorConstArray<double>& positions, const Core::UnitDescriptor& units) {
    const std::string& label = units.GetSymbol().empty() ? units.GetName() : units.GetSymbol();
    return Details::ListText<double>(positions.begin(), positions.size()) + (label.empty() ? "" : ' ' + label);
}

} // namespace Qor::Tivor::PositionArrays
