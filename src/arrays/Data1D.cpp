#include "../properties/PropertyUpdate.h"
#include "MeasuredArraySerializer.h"
#include "MeasuredLayout.h"
#include "MeasuredPositions.h"

#include <QorCore/Message.h>
#include <Tivor/Data1D.h>

namespace Qor::Tivor {

namespace {

constexpr const char* arrayKey = "Array";
constexpr const char* numPointsKey = "NumPoints";
constexpr const char* valueTypeIDKey = "ValueTypeID";
constexpr const char* valueTypeNameKey = "ValueTypeName";

std::optional<std::uint64_t> CountOf(const DataObject& object) {
#define TIVOR_ROW(T, STEM, code, position, name)                                                                       \
    if (const auto* const array = dynamic_cast<const Array<T>*>(&object))                                              \
        return array->GetCount();
    TIVOR_ARRAY_ELEMENT_TYPES(TIVOR_ROW)
#undef TIVOR_ROW
    return std::nullopt; // of a class that is not known here
}

void RequireArray(const DataObject* array, Core::CodeContext context) {
    if (array == nullptr)
        Core::AssertFailed("(p_spArrayData != nullptr)", context);
    if (!IsScalarArrayData(*array))
        Core::AssertFailed("IsScalarArrayData( *p_spArrayData )", context);
}

} // namespace

std::shared_ptr<Data1D> Data1D::Create() { return std::make_shared<Data1D>(); }
std::shared_ptr<Data1D> Data1D::Create(const Data1D& other) { return std::make_shared<Data1D>(other); }
std::shared_ptr<Data1D> Data1D::Clone() const { return Create(*this); }

std::shared_ptr<Data1D> Data1D::CreateFrom(std::shared_ptr<DataObject> arrayData) {
    RequireArray(arrayData.get(), QOR_CODE_CONTEXT("Data1D"));
    return std::shared_ptr<Data1D>(new Data1D(std::move(arrayData)));
}

Data1D::Data1D() : Data1D(std::shared_ptr<DataObject>()) {}

Data1D::Data1D(std::shared_ptr<DataObject> arrayData) {
    if (arrayData)
        Store(arrayKey, arrayData);
    Store(Layout::dataKind.key, MakePropertyValue("Unknown"));
    Store(Layout::dataScale.key, MakeData(UnitizedDouble(1.0)));
    if (arrayData) {
        StoreSampleFacts(*arrayData, CountSamples(*arrayData));
    } else {
        Store(numPointsKey, MakeData(std::uint64_t(0)));
        Store(valueTypeIDKey, MakeStoredEnum(eNO_TYPE));
        Store(valueTypeNameKey, MakePropertyValue(Tivor::GetValueTypeName(eNO_TYPE)));
    }
    StoreVersion();
}

Data1D::Data1D(const Data1D& other, bool cloneValues) : MeasuredArray() { CopyFrom(other, cloneValues); }

Data1D& Data1D::operator=(const Data1D& other) {
    CopyFrom(other, true);
    return *this;
}

Data1D::~Data1D() = default;

const MeasuredArray::Layout& Data1D::GetLayout() const {
    static constexpr Axis axes[] = {{numPointsKey, "Extent", "PositionArray", "PositionUnits"}};
    static constexpr Property properties[] = {
        {arrayKey, eREADABLE_WRITABLE},
        Layout::dataKind,
        Layout::dataScale,
        {"Extent", eREADABLE_WRITABLE, {"Extent", "Misc"}},
        {numPointsKey, eREADABLE, {"NumPoints", "Misc"}},
        {valueTypeIDKey, eREADABLE, {"ValueTypeID", "Misc"}},
        {valueTypeNameKey, eREADABLE, {"ValueTypeName", "Misc"}},
        Layout::version,
        Layout::positions,
        {"PositionArray", eREADABLE},
        {"PositionUnits", eREADABLE},
    };
    static constexpr Layout layout{arrayKey, axes, properties};
    return layout;
}

bool Data1D::AreSamples(const DataObject& object) const { return IsScalarArrayData(object); }

std::optional<MeasuredArray::Counts> Data1D::CountSamples(const DataObject& samples) const {
    const auto count = CountOf(samples);
    return count ? std::optional(Counts{*count}) : std::nullopt;
}

void Data1D::StoreSampleFacts(const DataObject& samples, const std::optional<Counts>& counts) {
    if (counts)
        StoreNumber(numPointsKey, (*counts)[0], MakeData((*counts)[0]));
    ETypeID type = eNO_TYPE;
    std::string unused;
    samples.GetBaseDataTypeInfo(type, unused);
    StoreNumber(valueTypeIDKey, type, MakeStoredEnum(type));
    StoreText(valueTypeNameKey, Tivor::GetValueTypeName(type));
}

void Data1D::SetArrayDataObject(std::shared_ptr<DataObject> arrayData) {
    RequireArray(arrayData.get(), QOR_CODE_CONTEXT("Data1D"));
    ReplaceSamples(std::move(arrayData));
}

std::uint64_t Data1D::GetNumPoints() const { return FindNumber(numPointsKey).value_or(0); }

ETypeID Data1D::GetValueTypeID() const { return static_cast<ETypeID>(FindNumber(valueTypeIDKey).value_or(eNO_TYPE)); }

std::string Data1D::GetValueTypeName() const { return FindText(valueTypeNameKey); }

std::string Data1D::ToString() const {
    return Core::FormatText("Data1D of %1% %2%", {GetNumPoints(), GetValueTypeName()});
}

// --- Positions

bool Data1D::ArePositions(const DataObject& object) const {
    return MeasuredPositions::Of<Position1D>(object) != nullptr;
}

std::shared_ptr<DataObject> Data1D::MakeFixedSpacing(const Spacings& spacings) const {
    return MakeData(FixedSpacing1D(spacings[0]));
}

std::optional<MeasuredArray::Spacings> Data1D::GetFixedSpacings(const DataObject& positionFunction) const {
    const auto fixed = MeasuredPositions::As<FixedSpacing1D>(positionFunction);
    return fixed ? std::optional(Spacings{fixed->GetSpacing()}) : std::nullopt;
}

bool Data1D::PositionsFit(const DataObject& positionFunction, const Counts& counts) const {
    const auto array = MeasuredPositions::As<ArrayPosition1D>(positionFunction);
    return !array || array->GetArraySize() == counts[0];
}

MeasuredArray::PositionList Data1D::ListPositions(std::size_t) const {
    const auto positions = FindPositionFunction();
    if (!positions)
        return {};
    if (const auto array = std::dynamic_pointer_cast<ArrayPosition1D>(positions))
        return MeasuredPositions::Share(array->GetPositionArray(), array->GetPositionUnits());
    return MeasuredPositions::Sample(GetNumPoints(), [&](std::uint64_t i) { return positions->GetPosition(i); });
}

std::shared_ptr<Position1D> Data1D::FindPositionFunction() const {
    if (const auto stored = FindValue(Layout::positionFunction))
        return MeasuredPositions::Of<Position1D>(*stored);
    if (const auto spacings = FindSpacings())
        return std::make_shared<FixedSpacing1D>((*spacings)[0]);
    if (!HasArrays())
        return nullptr;
    const PositionList list = FindPositions(0);
    return std::make_shared<ArrayPosition1D>(list.values, list.count, list.units->Clone());
}

Core::QorConstPtr<Position1D> Data1D::GetPositionFunction() const {
    const Update update(Unconst(*this));
    return FindPositionFunction();
}

std::shared_ptr<Position1D> Data1D::GetPositionFunction() {
    const Update update(*this);
    TakePositionFunction();
    return FindPositionFunction();
}

void Data1D::SetPositionFunction(std::shared_ptr<Position1D> positions) {
    if (const auto fixed = std::dynamic_pointer_cast<FixedSpacing1D>(positions))
        SetFixedSpacing(fixed->GetSpacing());
    else
        StorePositions(MeasuredPositions::Wrap<ArrayPosition1D>(std::move(positions)));
}

bool Data1D::GetFixedSpacing(UnitizedDouble& spacing) const {
    const auto fixed = std::dynamic_pointer_cast<const FixedSpacing1D>(GetPositionFunction());
    if (fixed)
        spacing = fixed->GetSpacing();
    return fixed != nullptr;
}

void Data1D::SetFixedSpacing(const UnitizedDouble& spacing) { StoreSpacings({spacing}, MakeFixedSpacing({spacing})); }

template struct BuiltInTraits<Data1D>;
template class GenericWrapper<Data1D>;
template class Data<Data1D>;

} // namespace Qor::Tivor
