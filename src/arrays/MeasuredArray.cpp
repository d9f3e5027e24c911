#include "../properties/PropertyUpdate.h"
#include "MeasuredLayout.h"

#include <QorCore/Utf8.h>
#include <Tivor/MeasuredArray.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace Qor::Tivor {

namespace {

template <class T>
std::optional<std::uint64_t> AsNumber(const DataObject& object) {
    if constexpr (std::is_integral_v<T> && !std::is_same_v<T, bool>) {
        const auto* const wrapper = dynamic_cast<const GenericWrapper<T>*>(&object);
        const auto value = wrapper != nullptr ? wrapper->GetData() : nullptr;
        if (value && *value >= T(0))
            return static_cast<std::uint64_t>(*value);
    }
    return std::nullopt;
}

// Whether a number that was worked out from the other one is it but for rounding.
bool AreClose(const UnitizedDouble& left, const UnitizedDouble& right) {
    if (!left.GetUnits()->IsDimensionallyEquivalent(*right.GetUnits()))
        return false;
    constexpr double tolerance = 8 * std::numeric_limits<double>::epsilon();
    const double expected = left.ConvertTo(right.GetUnits()).GetValue();
    return std::abs(expected - right.GetValue()) <= tolerance * std::abs(right.GetValue());
}

} // namespace

std::string GetValueTypeName(ETypeID type) {
    switch (type) {
#define TIVOR_ROW(T, STEM, code, position, name)                                                                       \
    case e##STEM:                                                                                                      \
        return name;
        TIVOR_NUMERIC_TYPES(TIVOR_ROW)
#undef TIVOR_ROW
    case eCOMPLEX:
        return "complex";
    default:
        return "Unknown Type";
    }
}

MeasuredArray::MeasuredArray() : PropertyContainer(true) {
    static const bool areRegistered = [] {
        ScalarData::RegisterType(typeid(ETypeID), "ETypeID");
        ScalarData::RegisterType(typeid(EMatrixTypeID), "EMatrixTypeID");
        return true;
    }();
    static_cast<void>(areRegistered);
}
MeasuredArray::~MeasuredArray() = default;

std::shared_ptr<DataContainer> MeasuredArray::GetContent() const { return GetPropertyData(Unconst(*this)); }

// --- Values

std::optional<std::uint64_t> MeasuredArray::FindNumber(const std::string& key) const {
    const auto object = FindValue(key);
    if (!object)
        return std::nullopt;
    if (dynamic_cast<const ScalarData*>(object.get()) != nullptr) {
        const std::int64_t number = GetScalarNumber(object.get());
        return number >= 0 ? std::optional(static_cast<std::uint64_t>(number)) : std::nullopt;
    }
    std::optional<std::uint64_t> number;
#define TIVOR_ROW(T, STEM, code, position, name) number = number ? number : AsNumber<T>(*object);
    TIVOR_SCALAR_TYPES(TIVOR_ROW)
#undef TIVOR_ROW
    return number;
}

std::string MeasuredArray::FindText(const std::string& key) const {
    if (const auto narrow = GetContent()->GetPtr<std::string>(key))
        return *narrow;
    const auto wide = GetContent()->GetPtr<std::wstring>(key);
    return wide ? Core::Utf8FromWide(*wide) : std::string();
}

std::string MeasuredArray::GetDataKind() const { return FindText(Layout::dataKind.key); }

void MeasuredArray::SetDataKind(const std::string& kind) { SetValue(Layout::dataKind.key, kind); }

UnitizedDouble MeasuredArray::GetDataScale() const {
    const auto scale = GetContent()->GetPtr<UnitizedDouble>(Layout::dataScale.key);
    return scale ? *scale : UnitizedDouble(1.0);
}

void MeasuredArray::SetDataScale(const UnitizedDouble& scale) { SetValue(Layout::dataScale.key, scale); }

void MeasuredArray::ConvertDataScale(const std::string& unitName) {
    const Update update(*this);
    SetDataScale(GetDataScale().ConvertTo(unitName));
}

// --- Properties

const MeasuredArray::Property* MeasuredArray::FindProperty(const std::string& key) const {
    for (const Property& property : GetLayout().properties)
        if (key == property.key)
            return &property;
    return nullptr;
}

const MeasuredArray::Axis* MeasuredArray::FindExtent(const std::string& key) const {
    for (const Axis& axis : GetLayout().axes)
        if (key == axis.extent)
            return &axis;
    return nullptr;
}

// Gives a property what its class says of it, however it came here.
void MeasuredArray::Adopt(const std::string& key) {
    const Property* const property = FindProperty(key);
    if (property == nullptr)
        return;
    SetPermissions(key, property->permissions);
    if (property->texts.displayName != nullptr)
        SetTexts(key, property->texts);
    if (key == GetLayout().samples)
        SetChangeHandler(key, Core::MakeCallback(*this, &MeasuredArray::OnSamplesSet));
    else if (FindExtent(key) != nullptr)
        SetChangeHandler(key, Core::MakeCallback(*this, &MeasuredArray::OnExtentSet));
}

void MeasuredArray::Store(const char* key, std::shared_ptr<DataObject> value) {
    const Update update(*this);
    const auto former = FindValue(key);
    if (!former) {
        AddProperty(key, std::move(value), eREADABLE_WRITABLE);
        Adopt(key);
    } else if (PropertyValuesDiffer(former, value)) {
        UpdateProperty(key, std::move(value), false);
    }
}

void MeasuredArray::StoreNumber(const char* key, std::uint64_t number, std::shared_ptr<DataObject> value) {
    if (FindNumber(key) != number)
        Store(key, std::move(value));
}

void MeasuredArray::StoreText(const char* key, const std::string& text) {
    if (!FindValue(key) || FindText(key) != text)
        Store(key, MakePropertyValue(text));
}

void MeasuredArray::StoreVersion() { StoreText(Layout::version.key, "1.0"); }

void MeasuredArray::CopyFrom(const MeasuredArray& other, bool cloneValues) {
    if (&other == this)
        return;
    CopyContents(other, cloneValues);
    const Update update(*this);
    for (const auto& entry : *GetContent())
        Adopt(entry.key);
}

void MeasuredArray::InputProperties(const DataContainer& values) {
    const Update update(*this);
    const char* const samplesKey = GetLayout().samples;
    if (const auto samples = values.Get(samplesKey); samples && AreSamples(*samples))
        CountSamples(*samples);
    {
        const bool wasReading = std::exchange(m_isReading, true);
        const std::shared_ptr<void> end(nullptr, [&](void*) { m_isReading = wasReading; });
        PropertyContainer::InputProperties(values);
    }
    for (const auto& entry : *GetContent())
        if (!values.Exists(entry.key))
            RemoveProperty(entry.key);
    if (const auto samples = FindValue(samplesKey); samples && AreSamples(*samples))
        StoreSampleFacts(*samples, CountSamples(*samples));
}

// --- Samples

void MeasuredArray::ReplaceSamples(std::shared_ptr<DataObject> samples) {
    const Update update(*this);
    const char* const key = GetLayout().samples;
    CountSamples(*samples);
    if (FindValue(key)) {
        UpdateProperty(key, samples, false);
        SetAttribute(key, sPROPERTY_DEFAULT, samples); // so that the former ones are not kept
    } else {
        Store(key, samples);
    }
    FitToSamples(*samples);
}

void MeasuredArray::FitToSamples(const DataObject& samples) {
    const auto counts = CountSamples(samples);
    const auto positions = FindValue(Layout::positionFunction);
    std::optional<Spacings> spacings;
    if (counts)
        spacings = positions ? GetFixedSpacings(*positions) : FindSpacings();
    StoreSampleFacts(samples, counts);
    if (!counts)
        return;
    for (std::size_t i = 0; i < counts->size(); ++i) {
        const Axis& axis = GetLayout().axes[i];
        const std::uint64_t count = (*counts)[i];
        if (spacings && count != 0 && FindValue(axis.extent))
            Store(axis.extent, MakeData((*spacings)[i] * UnitizedDouble(static_cast<double>(count - 1))));
        if (const auto array = GetContent()->GetPtr<Array<double>>(axis.positions); array && array->GetCount() != count)
            RemoveArrays(axis);
    }
    if (positions && !spacings && !PositionsFit(*positions, *counts))
        RemoveProperty(Layout::positionFunction);
}

EPropertyChangeResult MeasuredArray::OnSamplesSet(const PropertyChangeEvent& event) {
    const auto& samples = event.GetNewValue();
    if (m_isReading || !samples)
        return eACCEPT_CHANGE;
    if (!AreSamples(*samples))
        return eREFUSE_CHANGE;
    FitToSamples(*samples);
    SetAttribute(event.GetPropertyName(), sPROPERTY_DEFAULT, FindValue(event.GetPropertyName()));
    return eACCEPT_CHANGE;
}

EPropertyChangeResult MeasuredArray::OnExtentSet(const PropertyChangeEvent& event) {
    if (m_isReading || !event.GetNewValue())
        return eACCEPT_CHANGE;
    if (!GetContent()->GetPtr<UnitizedDouble>(event.GetPropertyName()))
        return eREFUSE_CHANGE;
    FollowExtents();
    return eACCEPT_CHANGE;
}

EPropertyChangeResult MeasuredArray::OnExternalPropertyAdded(const PropertyChangeEvent& event) {
    const std::string& key = event.GetPropertyName();
    Adopt(key);
    if (m_isReading)
        return eACCEPT_CHANGE;
    if (key == GetLayout().samples)
        return OnSamplesSet(event);
    if (FindExtent(key) != nullptr)
        return OnExtentSet(event);
    if (key == Layout::positionFunction) {
        if (!ArePositions(*event.GetNewValue()))
            return eREFUSE_CHANGE;
        RemoveExtents();
        RemoveArrays();
    }
    for (const Axis& axis : GetLayout().axes)
        if (key == axis.positions) {
            if (!GetContent()->GetPtr<Array<double>>(key))
                return eREFUSE_CHANGE;
            RemoveExtents();
            RemoveProperty(Layout::positionFunction);
        }
    return eACCEPT_CHANGE;
}

// --- Positions

std::optional<MeasuredArray::Spacings> MeasuredArray::FindSpacings() const {
    Spacings spacings;
    for (const Axis& axis : GetLayout().axes) {
        const auto extent = GetContent()->GetPtr<UnitizedDouble>(axis.extent);
        const std::uint64_t count = FindNumber(axis.numPoints).value_or(0);
        if (!extent || count == 0)
            return std::nullopt;
        spacings.push_back(count == 1 ? *extent : *extent / UnitizedDouble(static_cast<double>(count - 1)));
    }
    return spacings;
}

std::shared_ptr<DataObject> MeasuredArray::TakePositionFunction() {
    const Update update(*this);
    if (const auto stored = FindValue(Layout::positionFunction))
        return ArePositions(*stored) ? stored : nullptr;
    if (const auto spacings = FindSpacings()) {
        Store(Layout::positionFunction, MakeFixedSpacing(*spacings));
        return FindValue(Layout::positionFunction);
    }
    const auto isWithoutPoints = [this](const Axis& axis) { return FindNumber(axis.numPoints) == 0; };
    if (std::any_of(GetLayout().axes.begin(), GetLayout().axes.end(), isWithoutPoints))
        RemoveExtents();
    return nullptr;
}

void MeasuredArray::StoreSpacings(const Spacings& spacings, std::shared_ptr<DataObject> positionFunction) {
    const Update update(*this);
    std::vector<std::shared_ptr<DataObject>> extents;
    for (std::size_t i = 0; i < spacings.size(); ++i) {
        const std::uint64_t count = FindNumber(GetLayout().axes[i].numPoints).value_or(0);
        extents.push_back(count == 0 ? nullptr
                                     : MakeData(spacings[i] * UnitizedDouble(static_cast<double>(count - 1))));
    }
    Store(Layout::positionFunction, std::move(positionFunction));
    for (std::size_t i = 0; i < spacings.size(); ++i) {
        const char* const key = GetLayout().axes[i].extent;
        if (!FindValue(key))
            Store(key, MakeData(UnitizedDouble(0.0, "Millimeter")));
        if (extents[i])
            Store(key, extents[i]);
    }
    RemoveArrays();
    OnSpacingsStored();
}

void MeasuredArray::StorePositions(std::shared_ptr<DataObject> positionFunction) {
    const Update update(*this);
    Store(Layout::positionFunction, std::move(positionFunction));
    RemoveExtents();
    RemoveArrays();
}

// An extent was set: the spacing that it tells replaces what told the positions, unless it is the one that is there.
void MeasuredArray::FollowExtents() {
    const auto spacings = FindSpacings();
    if (!spacings)
        return;
    RemoveArrays();
    const auto stored = FindValue(Layout::positionFunction);
    if (!stored)
        return;
    const auto former = GetFixedSpacings(*stored);
    if (former && std::equal(former->begin(), former->end(), spacings->begin(), spacings->end(), AreClose))
        return;
    Store(Layout::positionFunction, MakeFixedSpacing(*spacings));
    OnSpacingsStored();
}

void MeasuredArray::RemoveArrays(const Axis& axis) {
    RemoveProperty(axis.positions);
    RemoveProperty(axis.units);
}

void MeasuredArray::RemoveArrays() {
    for (const Axis& axis : GetLayout().axes)
        RemoveArrays(axis);
}

void MeasuredArray::RemoveExtents() {
    for (const Axis& axis : GetLayout().axes)
        RemoveProperty(axis.extent);
}

void MeasuredArray::RemovePositionInfo() {
    const Update update(*this);
    RemoveProperty(Layout::positionFunction);
    RemoveExtents();
    RemoveArrays();
}

bool MeasuredArray::HasArrays() const {
    return std::any_of(GetLayout().axes.begin(), GetLayout().axes.end(), [this](const Axis& axis) {
        return GetContent()->GetPtr<Array<double>>(axis.positions) != nullptr;
    });
}

MeasuredArray::PositionList MeasuredArray::FindPositions(std::size_t index) const {
    const Axis& axis = GetLayout().axes[index];
    const auto array = GetContent()->GetPtr<Array<double>>(axis.positions);
    if (!array)
        return ListPositions(index);
    const auto units = GetContent()->GetPtr<const Core::UnitDescriptor>(axis.units);
    return {array->GetData(), array->GetCount(), units ? units : UnitizedDouble().GetUnits()};
}

MeasuredArray::PositionList MeasuredArray::GetPositions(std::size_t index) const {
    const Update update(Unconst(*this));
    return FindPositions(index);
}

MeasuredArray::PositionList MeasuredArray::MakePositions(std::size_t index) {
    const Update update(*this);
    PositionList list = FindPositions(index);
    const Axis& axis = GetLayout().axes[index];
    if (list.values && !FindValue(axis.positions)) {
        Store(axis.positions, std::make_shared<Array<double>>(list.values, list.count));
        Store(axis.units, MakeData(*list.units));
    }
    return list;
}

} // namespace Qor::Tivor
