#include "../properties/PropertyUpdate.h"
#include "MeasuredArraySerializer.h"
#include "MeasuredLayout.h"
#include "MeasuredPositions.h"

#include <QorCore/Message.h>
#include <Tivor/Data2D.h>
#include <Tivor/PropertyHandlers.h>

#include <limits>

namespace Qor::Tivor {

namespace {

constexpr const char* matrixKey = "Matrix";
constexpr const char* dim1PointsKey = "Dimension1Points";
constexpr const char* dim2PointsKey = "Dimension2Points";
constexpr const char* matrixTypeKey = "MatrixType";
constexpr const char* aspectKey = "Aspect";
constexpr const char* originKey = "Origin";

std::optional<std::pair<std::size_t, std::size_t>> SizesOf(const DataObject& object) {
#define TIVOR_VALUE(T, id, name)                                                                                       \
    if (const auto* const matrix = dynamic_cast<const GenericWrapper<T>*>(&object))                                    \
        if (const auto value = matrix->GetData())                                                                      \
            return std::pair(value->size1(), value->size2());
    TIVOR_MATRIX_VALUES
#undef TIVOR_VALUE
    return std::nullopt;
}

void RequireMatrix(const DataObject& matrix, Core::CodeContext context) {
    if (!IsMatrixData(matrix))
        Core::AssertFailed("IsMatrixData( *p_spMatrixData )", context);
}

std::shared_ptr<EnumValidator> MakeOrigins() {
    ScalarData::RegisterType(typeid(Data2D::EOrigin), "Data2D::EOrigin");
    auto origins = std::make_shared<EnumValidator>(EnumValidator::For<Data2D::EOrigin>());
    for (const auto& [origin, text] :
         {std::pair(Data2D::eUPPER_LEFT, "Upper Left"), std::pair(Data2D::eLOWER_LEFT, "Lower Left"),
          std::pair(Data2D::eUPPER_RIGHT, "Upper Right"), std::pair(Data2D::eLOWER_RIGHT, "Lower Right")})
        origins->AddValue(origin, text);
    return origins;
}

} // namespace

std::shared_ptr<Data2D> Data2D::Create() { return std::make_shared<Data2D>(); }
std::shared_ptr<Data2D> Data2D::Create(const Data2D& other) { return std::make_shared<Data2D>(other); }
std::shared_ptr<Data2D> Data2D::Create(std::shared_ptr<DataObject> matrixData) {
    return std::make_shared<Data2D>(std::move(matrixData));
}
std::shared_ptr<Data2D> Data2D::Clone() const { return Create(*this); }

std::shared_ptr<Data2D> Data2D::CreateLike(const Data2D& other, std::shared_ptr<DataObject> matrixData) {
    auto surface = Create(std::move(matrixData));
    for (const char* const key : {Layout::dataKind.key, Layout::dataScale.key})
        if (const auto value = other.FindValue(key))
            surface->Store(key, value->Clone());
    return surface;
}

Data2D::Data2D() { InitProperties(nullptr); }

Data2D::Data2D(std::shared_ptr<DataObject> matrixData) {
    if (!matrixData)
        Core::AssertFailed("(p_spMatrixData!= nullptr)", QOR_CODE_CONTEXT("Data2D"));
    InitProperties(std::move(matrixData));
}

Data2D::Data2D(const Data2D& other, bool cloneValues) : MeasuredArray() { CopyFrom(other, cloneValues); }

Data2D& Data2D::operator=(const Data2D& other) {
    CopyFrom(other, true);
    return *this;
}

Data2D::~Data2D() = default;

const MeasuredArray::Layout& Data2D::GetLayout() const {
    static constexpr Axis axes[] = {
        {dim1PointsKey, "Dimension1Extent", "Dim1PositionArray", "Dim1PositionUnits"},
        {dim2PointsKey, "Dimension2Extent", "Dim2PositionArray", "Dim2PositionUnits"},
    };
    static constexpr Property properties[] = {
        {matrixKey, eNO_PERMISSIONS},
        {dim1PointsKey, eREADABLE, {"Dimension1Points", "Misc"}},
        {dim2PointsKey, eREADABLE, {"Dimension2Points", "Misc"}},
        {matrixTypeKey, eREADABLE, {"MatrixType", "Misc"}},
        {aspectKey, eREADABLE_WRITABLE, {"Aspect", "Misc"}},
        {"Dimension1Extent", eREADABLE_WRITABLE, {"Dimension1Extent", "Misc"}},
        {"Dimension2Extent", eREADABLE_WRITABLE, {"Dimension2Extent", "Misc"}},
        {originKey, eREADABLE_WRITABLE, {"Origin", "Misc"}},
        Layout::dataKind,
        Layout::dataScale,
        Layout::version,
        Layout::positions,
        {"Dim1PositionArray", eREADABLE},
        {"Dim1PositionUnits", eREADABLE},
        {"Dim2PositionArray", eREADABLE},
        {"Dim2PositionUnits", eREADABLE},
    };
    static constexpr Layout layout{matrixKey, axes, properties};
    return layout;
}

void Data2D::InitProperties(std::shared_ptr<DataObject> matrixData) {
    if (matrixData) {
        RequireMatrix(*matrixData, QOR_CODE_CONTEXT("Data2D"));
        const auto counts = CountSamples(*matrixData);
        Store(matrixKey, matrixData);
        StoreSampleFacts(*matrixData, counts);
    } else {
        Store(dim1PointsKey, MakeData(std::uint32_t(0)));
        Store(dim2PointsKey, MakeData(std::uint32_t(0)));
        Store(matrixTypeKey, MakeStoredEnum(eNO_MATRIX_TYPE));
    }
    Store(aspectKey, MakeData(1.0F));
    Store(Layout::dataScale.key, MakeData(UnitizedDouble(1.0)));
    Store(Layout::dataKind.key, MakePropertyValue("Unknown"));
    StoreVersion();
    static const auto& origins = *new auto(MakeOrigins());
    Store(originKey, MakeStoredEnum(eUPPER_LEFT));
    AddValidator(originKey, origins);
}

// Listeners hear of the samples and of what follows from them at once.
void Data2D::UpdateProperties(std::shared_ptr<DataObject> matrixData) {
    RequireMatrix(*matrixData, QOR_CODE_CONTEXT("Data2D"));
    ReplaceSamples(std::move(matrixData));
}

void Data2D::SetMatrixDataObject(std::shared_ptr<DataObject> matrixData) {
    if (!matrixData)
        Core::AssertFailed("(p_spMatrixData!= nullptr)", QOR_CODE_CONTEXT("Data2D"));
    UpdateProperties(std::move(matrixData));
}

bool Data2D::AreSamples(const DataObject& object) const { return IsMatrixData(object); }

std::optional<MeasuredArray::Counts> Data2D::CountSamples(const DataObject& samples) const {
    const auto sizes = SizesOf(samples);
    if (!sizes)
        return std::nullopt;
    constexpr std::uint64_t most = std::numeric_limits<std::uint32_t>::max();
    if (sizes->first > most || sizes->second > most)
        Core::Error::RaiseError(
            Core::OutOfRangeError(Core::FormatText("Expected at most %1% points along a dimension, found %2% x %3%",
                                                   {most, sizes->first, sizes->second})),
            QOR_CODE_CONTEXT("Data2D"), "Qor.Tivor.Data2D");
    return Counts{sizes->first, sizes->second};
}

void Data2D::StoreSampleFacts(const DataObject& samples, const std::optional<Counts>& counts) {
    if (counts)
        for (std::size_t i = 0; i < counts->size(); ++i)
            StoreNumber(GetLayout().axes[i].numPoints, (*counts)[i],
                        MakeData(static_cast<std::uint32_t>((*counts)[i])));
    const auto type = static_cast<EMatrixTypeID>(samples.GetTypeID());
    StoreNumber(matrixTypeKey, type, MakeStoredEnum(type));
}

std::string Data2D::GetMatrixTypeName() const {
    const auto matrix = GetMatrixDataObject();
    return matrix ? matrix->GetTypeName() : std::string();
}

EMatrixTypeID Data2D::GetMatrixType() const {
    return static_cast<EMatrixTypeID>(FindNumber(matrixTypeKey).value_or(eNO_MATRIX_TYPE));
}

ETypeID Data2D::GetValueType() const {
    ETypeID type = eNO_TYPE;
    std::string unused;
    if (const auto matrix = GetMatrixDataObject())
        matrix->GetBaseDataTypeInfo(type, unused);
    return type;
}

std::string Data2D::GetValueTypeName() const { return Tivor::GetValueTypeName(GetValueType()); }

std::uint32_t Data2D::GetNumDimension1Points() const {
    return static_cast<std::uint32_t>(FindNumber(dim1PointsKey).value_or(0));
}

std::uint32_t Data2D::GetNumDimension2Points() const {
    return static_cast<std::uint32_t>(FindNumber(dim2PointsKey).value_or(0));
}

float Data2D::GetAspect() const {
    const auto aspect = GetContent()->GetPtr<float>(aspectKey);
    return aspect ? *aspect : 1.0F;
}

Data2D::EOrigin Data2D::GetOrigin() const { return static_cast<EOrigin>(FindNumber(originKey).value_or(eUPPER_LEFT)); }

void Data2D::SetOrigin(EOrigin origin) { SetProperty(originKey, MakeStoredEnum(origin)); }

std::string Data2D::ToString() const {
    return Core::FormatText("Data2D of %1% x %2% %3%",
                            {GetNumDimension1Points(), GetNumDimension2Points(), GetValueTypeName()});
}

// --- Positions

bool Data2D::ArePositions(const DataObject& object) const {
    return MeasuredPositions::Of<Position2D>(object) != nullptr;
}

std::shared_ptr<DataObject> Data2D::MakeFixedSpacing(const Spacings& spacings) const {
    return MakeData(FixedSpacing2D(spacings[0], spacings[1]));
}

std::optional<MeasuredArray::Spacings> Data2D::GetFixedSpacings(const DataObject& positionFunction) const {
    const auto fixed = MeasuredPositions::As<FixedSpacing2D>(positionFunction);
    return fixed ? std::optional(Spacings{fixed->GetDim1Spacing(), fixed->GetDim2Spacing()}) : std::nullopt;
}

bool Data2D::PositionsFit(const DataObject& positionFunction, const Counts& counts) const {
    const auto arrays = MeasuredPositions::As<ArrayPosition2D>(positionFunction);
    return !arrays || (arrays->GetDim1Size() == counts[0] && arrays->GetDim2Size() == counts[1]);
}

MeasuredArray::PositionList Data2D::ListPositions(std::size_t axis) const {
    const auto positions = FindPositionFunction();
    if (!positions)
        return {};
    if (const auto arrays = std::dynamic_pointer_cast<ArrayPosition2D>(positions))
        return axis == 0 ? MeasuredPositions::Share(arrays->GetDim1PositionArray(), arrays->GetDim1Units())
                         : MeasuredPositions::Share(arrays->GetDim2PositionArray(), arrays->GetDim2Units());
    Nalix::Vector<UnitizedDouble> position;
    return MeasuredPositions::Sample(axis == 0 ? GetNumDimension1Points() : GetNumDimension2Points(),
                                     [&](std::uint64_t index) {
                                         positions->GetPosition(axis == 0 ? index : 0, axis == 0 ? 0 : index, position);
                                         return position[axis];
                                     });
}

std::shared_ptr<Position2D> Data2D::FindPositionFunction() const {
    if (const auto stored = FindValue(Layout::positionFunction))
        return MeasuredPositions::Of<Position2D>(*stored);
    if (const auto spacings = FindSpacings())
        return std::make_shared<FixedSpacing2D>((*spacings)[0], (*spacings)[1]);
    if (!HasArrays())
        return nullptr;
    const PositionList dim1 = FindPositions(0);
    const PositionList dim2 = FindPositions(1);
    return std::make_shared<ArrayPosition2D>(dim1.values, dim2.values, dim1.count, dim2.count, dim1.units->Clone(),
                                             dim2.units->Clone());
}

Core::QorConstPtr<Position2D> Data2D::GetPositionFunction() const {
    const Update update(Unconst(*this));
    return FindPositionFunction();
}

std::shared_ptr<Position2D> Data2D::GetPositionFunction() {
    const Update update(*this);
    TakePositionFunction();
    return FindPositionFunction();
}

void Data2D::SetPositionFunction(std::shared_ptr<Position2D> positions) {
    if (const auto fixed = std::dynamic_pointer_cast<FixedSpacing2D>(positions))
        StoreFixedSpacing(*fixed);
    else
        StorePositions(MeasuredPositions::Wrap<ArrayPosition2D>(std::move(positions)));
}

// In the data object of the source where it is the same: whoever made that may have given it a stored form.
void Data2D::SetCustomPositionFunction(std::shared_ptr<Position2D> positions, const Data2D& source) {
    const auto former = source.FindValue(Layout::positionFunction);
    if (former && MeasuredPositions::Of<Position2D>(*former) == positions)
        StorePositions(former);
    else
        StorePositions(MeasuredPositions::Wrap<FixedSpacing2D, ArrayPosition2D>(std::move(positions)));
}

bool Data2D::GetFixedSpacing(UnitizedDouble& dim1, UnitizedDouble& dim2) const {
    const auto positions = GetPositionFunction();
    if (!positions || !positions->Dim1SpacingIsFixed() || !positions->Dim2SpacingIsFixed())
        return false;
    const auto first = positions->GetFixedDim1Spacing();
    const auto second = positions->GetFixedDim2Spacing();
    if (!first || !second)
        return false;
    dim1 = *first;
    dim2 = *second;
    return true;
}

void Data2D::SetFixedSpacing(const UnitizedDouble& dim1, const UnitizedDouble& dim2) {
    StoreFixedSpacing(FixedSpacing2D(dim1, dim2));
}

void Data2D::SetFixedSpacing(const UnitizedDouble& dim1, float aspect) {
    StoreFixedSpacing(FixedSpacing2D(dim1, aspect));
}

void Data2D::StoreFixedSpacing(const FixedSpacing2D& spacing) {
    StoreSpacings({spacing.GetDim1Spacing(), spacing.GetDim2Spacing()}, MakeData(spacing));
}

void Data2D::OnSpacingsStored() {
    if (const auto fixed = MeasuredPositions::As<FixedSpacing2D>(*FindValue(Layout::positionFunction)))
        Store(aspectKey, MakeData(fixed->GetAspect()));
}

template struct BuiltInTraits<Data2D>;
template class GenericWrapper<Data2D>;
template class Data<Data2D>;

} // namespace Qor::Tivor
