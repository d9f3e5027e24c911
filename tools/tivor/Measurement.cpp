#include "Measurement.h"

#include "Elements.h"
#include "Properties.h"
#include "Values.h"

#include <Tivor/Codec.h>
#include <Tivor/MatrixView.h>

#include <limits>
#include <numeric>
#include <set>
#include <type_traits>

namespace Qor::Tivor::Tool {

namespace {

template <class T>
void AddParts(std::vector<double>& numbers, const T& sample) {
    if constexpr (requires { sample.real(); }) {
        numbers.push_back(static_cast<double>(sample.real()));
        numbers.push_back(static_cast<double>(sample.imag()));
    } else if constexpr (std::is_arithmetic_v<T>) {
        numbers.push_back(static_cast<double>(sample));
    } else {
        numbers.push_back(static_cast<double>(sample.value));
    }
}

template <class T>
void AddRows(std::vector<double>& numbers, const MatrixView<const T>& view) {
    numbers.reserve(view.size());
    for (std::size_t i = 0; i < view.size1(); ++i)
        for (std::size_t j = 0; j < view.size2(); ++j)
            AddParts(numbers, view(i, j));
}

template <class T>
bool IsMatrixOf(const DataObject& object) {
    return dynamic_cast<const GenericWrapper<RowMajorMatrix<T>>*>(&object) != nullptr ||
           dynamic_cast<const GenericWrapper<ColumnMajorMatrix<T>>*>(&object) != nullptr;
}

std::vector<double> NumbersOf(const Data2D& surface) {
    std::vector<double> numbers;
    const auto samples = surface.GetMatrixDataObject();
#define TIVOR_ROW(T, STEM, code, position, name)                                                                       \
    if (samples && IsMatrixOf<T>(*samples))                                                                            \
        AddRows(numbers, MatrixView<const T>(*samples));
    TIVOR_MATRIX_ELEMENT_TYPES(TIVOR_ROW)
#undef TIVOR_ROW
    return numbers;
}

std::vector<double> NumbersOf(const Data1D& profile) {
    std::vector<double> numbers;
#define TIVOR_ROW(T, STEM, code, position, name)                                                                       \
    for (const auto& sample : profile.GetSamples<T>())                                                                 \
        AddParts(numbers, sample);
    TIVOR_ARRAY_ELEMENT_TYPES(TIVOR_ROW)
#undef TIVOR_ROW
    return numbers;
}

std::size_t PartsOf(const Data2D& surface) {
    const auto samples = surface.GetMatrixDataObject();
    return samples && IsMatrixOf<std::complex<double>>(*samples) ? 2 : 1;
}
std::size_t PartsOf(const Data1D&) { return 1; }

void Scale(Quantities& quantities) {
    for (double& number : quantities.numbers) {
        number *= quantities.factor;
        if (quantities.offset != 0)
            number += quantities.offset;
    }
}

Quantities Scaled(std::vector<double> numbers, const UnitizedDouble& scale) {
    const Core::UnitDescriptor& unit = *scale.GetUnits();
    Quantities quantities{unit.GetExponents(), InSI(scale.GetValue(), unit), unit.GetOffset(), std::move(numbers)};
    Scale(quantities);
    return quantities;
}

/// None of more points than there are samples, whatever a file claims.
Positions EvenPositions(const UnitizedDouble& spacing, std::uint64_t points, std::size_t numSamples) {
    if (points > numSamples)
        return {};
    std::vector<double> numbers(static_cast<std::size_t>(points));
    std::iota(numbers.begin(), numbers.end(), 0.0);
    return {Scaled(std::move(numbers), spacing), spacing};
}

Positions ListedPositions(const Core::QorConstArray<double>& list,
                          const Core::QorConstPtr<Core::UnitDescriptor>& unit) {
    if (!unit)
        return {};
    Positions positions;
    positions.exponents = unit->GetExponents();
    positions.factor = unit->GetScale();
    positions.offset = unit->GetOffset();
    for (const double number : std::span(list.get(), list.size()))
        positions.numbers.push_back(InSI(number, *unit) + positions.offset);
    return positions;
}

std::vector<Positions> PositionsOf(const Data2D& surface, std::size_t numSamples) {
    const auto positions = surface.GetPositionFunction();
    if (!positions)
        return std::vector<Positions>(2);
    if (const auto fixed = std::dynamic_pointer_cast<const FixedSpacing2D>(positions))
        return {EvenPositions(fixed->GetDim1Spacing(), surface.GetNumDimension1Points(), numSamples),
                EvenPositions(fixed->GetDim2Spacing(), surface.GetNumDimension2Points(), numSamples)};
    return {ListedPositions(surface.GetDim1PositionArray(), surface.GetDim1PositionUnits()),
            ListedPositions(surface.GetDim2PositionArray(), surface.GetDim2PositionUnits())};
}

std::vector<Positions> PositionsOf(const Data1D& profile, std::size_t numSamples) {
    const auto positions = profile.GetPositionFunction();
    if (!positions)
        return std::vector<Positions>(1);
    if (const auto fixed = std::dynamic_pointer_cast<const FixedSpacing1D>(positions))
        return {EvenPositions(fixed->GetSpacing(), profile.GetNumPoints(), numSamples)};
    return {ListedPositions(profile.GetPositionArray(), profile.GetPositionUnits())};
}

std::vector<std::uint64_t> PointsOf(const Data2D& surface) {
    return {surface.GetNumDimension1Points(), surface.GetNumDimension2Points()};
}
std::vector<std::uint64_t> PointsOf(const Data1D& profile) { return {profile.GetNumPoints()}; }

std::string OriginOf(const Data2D& surface) {
    return FindNameOfValue(surface, "Origin").value_or(std::to_string(surface.GetOrigin()));
}
std::string OriginOf(const Data1D&) { return {}; }

std::shared_ptr<Data2D> AnySurface() { return Data2D::Create(MakeData(RowMajorMatrix<double>(1, 1))); }
std::shared_ptr<Data1D> AnyProfile() { return Data1D::CreateFrom(std::make_shared<Array<double>>(1)); }

std::shared_ptr<const DataContainer> FurtherPropertiesOf(const MeasuredArray& bare, const MeasuredArray& any) {
    auto further = DataContainer::Create();
    const auto usual = any.GetContent();
    for (const auto& [key, object] : *bare.GetContent())
        if (!usual->Exists(key))
            further->Put(key, object);
    return further;
}

template <class T>
Measurement Describe(const T& measured, const MeasuredArray& any, Path path) {
    T bare(measured, false);
    bare.RemovePositionInfo();
    const UnitizedDouble scale = measured.GetDataScale();
    Quantities samples = Scaled(NumbersOf(measured), scale);
    const std::size_t numSamples = samples.numbers.size();
    return {std::move(path),
            ValueTraits<T>::GetTypeName(),
            measured.GetValueTypeName(),
            measured.GetDataKind(),
            OriginOf(measured),
            scale,
            PointsOf(measured),
            std::move(samples),
            PartsOf(measured),
            PositionsOf(measured, numSamples),
            FurtherPropertiesOf(bare, any)};
}

Measurement Describe(const Data2D& surface, Path path) { return Describe(surface, *AnySurface(), std::move(path)); }
Measurement Describe(const Data1D& profile, Path path) { return Describe(profile, *AnyProfile(), std::move(path)); }

template <class T>
std::shared_ptr<const T> Holding(const DataObject& object) {
    const auto* const wrapper = dynamic_cast<const GenericWrapper<T>*>(&object);
    return wrapper != nullptr ? wrapper->GetData() : nullptr;
}

std::shared_ptr<IDataSet> FindDataSet(const DataContainer& container) {
    const auto copy = std::make_shared<DataContainer>(container); // a data set may complete what it is made of
    if (const auto metaData = container.GetPtr<DataContainer>(sMETA_DATA))
        copy->Put(sMETA_DATA, metaData->Clone());
    try {
        return Decode(copy, {});
    } catch (const NoCodecFound&) {
        return nullptr;
    }
}

/// The keys of the metadata that tell no more than the items do.
std::set<std::string> FindLayoutKeys(const IDataSet& set) {
    DataSet any(AnySurface(), "surface");
    any.StoreData(AnyProfile(), "profile");
    DataContainer layout;
    any.StoreDataSet(layout);
    std::set<std::string> keys;
    layout.GetPtr<DataContainer>(sMETA_DATA)->EnumData(keys);
    keys.erase(sDATASET_NAME);
    if (set.GetNumData2DItems() > 1)
        keys.erase(DataSet::sPRIMARY_2D_DATA_KEY);
    return keys;
}

bool IsEmptyText(const DataObject& object) {
    const auto text = Holding<std::string>(object);
    return text && text->empty();
}

std::shared_ptr<DataContainer> EntriesOf(IDataSet& set, const DataContainer& container) {
    auto entries = DataContainer::Create();
    const std::set<std::string> ofLayout = FindLayoutKeys(set);
    for (const auto& [key, object] : *set.GetMetaData())
        if (!ofLayout.contains(key) && !(key == sDATASET_NAME && IsEmptyText(*object)))
            entries->Put(key, object);
    if (DataSet::IsDataSetFormat(container))
        for (const auto& [key, object] : container)
            if (key != sMETA_DATA && key != DataSet::s2D_DATA && key != DataSet::s1D_DATA && !entries->Exists(key))
                entries->Put(key, object);
    return entries;
}

void VisitBelow(const DataContainer& container, Path& path, const std::function<void(Measurement)>& visit) {
    for (const auto& [key, object] : container) {
        path.push_back(key);
        if (auto measurement = FindMeasurement(*object, path))
            visit(std::move(*measurement));
        else if (const auto below = EntriesIn(*object))
            VisitBelow(*below, path, visit);
        path.pop_back();
    }
}

} // namespace

std::uint64_t Measurement::GetNumPoints() const {
    return std::accumulate(points.begin(), points.end(), std::uint64_t{1}, std::multiplies<>());
}

MeasuredContent::MeasuredContent(const DataContainer& container)
    : m_set(FindDataSet(container)),
      m_entries(m_set ? EntriesOf(*m_set, container) : std::make_shared<DataContainer>(container)) {}

void MeasuredContent::ForEach(const std::function<void(Measurement)>& visit) const {
    Path path;
    if (m_set) {
        VisitBelow(*m_set->GetAllData2DItems(), path, visit);
        VisitBelow(*m_set->GetAllData1DItems(), path, visit);
    }
    VisitBelow(*m_entries, path, visit);
}

std::vector<Measurement> MeasuredContent::List() const {
    std::vector<Measurement> list;
    ForEach([&](Measurement measurement) { list.push_back(std::move(measurement)); });
    return list;
}

std::optional<Measurement> FindMeasurement(const DataObject& object, Path path) {
    if (const auto surface = Holding<Data2D>(object))
        return Describe(*surface, std::move(path));
    if (const auto profile = Holding<Data1D>(object))
        return Describe(*profile, std::move(path));
    return std::nullopt;
}

bool IsMeasured(const DataObject& object) { return Holding<Data2D>(object) || Holding<Data1D>(object); }

double InSI(double number, const Core::UnitDescriptor& unit) {
    constexpr double tolerance = 4 * std::numeric_limits<double>::epsilon();
    const double scale = unit.GetScale();
    const double parts = 1 / scale;
    const double whole = std::round(parts);
    const bool isOneOfSeveral = whole > 1 && whole < 0x1p53 && std::abs(parts - whole) <= tolerance * whole;
    return isOneOfSeveral ? number / whole : number * scale;
}

std::string UnitText(const Core::UnitDescriptor::Exponents& exponents) {
    static constexpr const char* bases[] = {"m", "kg", "s", "A", "K", "mol", "cd", "rad"};
    if (exponents == Core::UnitDescriptor::Exponents{})
        return {};
    const auto unit = Core::UnitDictionary::Instance().FindLike(exponents, 1);
    if (unit && !unit->GetSymbol().empty())
        return unit->GetSymbol();
    std::string text;
    for (std::size_t i = 0; i < exponents.size(); ++i)
        if (exponents[i] != 0)
            text += (text.empty() ? "" : "*") + std::string(bases[i]) +
                    (exponents[i] == 1 ? "" : '^' + std::to_string(exponents[i]));
    return text;
}

std::string QuantityText(double number, const Core::UnitDescriptor::Exponents& exponents) {
    const std::string unit = UnitText(exponents);
    return NumberText(number) + (unit.empty() ? "" : ' ' + unit);
}

} // namespace Qor::Tivor::Tool
