#include "Measured.h"

#include "Extremes.h"

#include <QorCore/NumberText.h>
#include <Tivor/LengthBounds.h>

#include <algorithm>
#include <charconv>
#include <cmath>

namespace Qor::Tivor::Measurements {

namespace {

const char* const lengthUnit = "Meter";

bool IsLength(const Core::UnitDescriptor& unit) {
    return unit.IsDimensionallyEquivalent(*Core::UnitDictionary::Instance().Get(lengthUnit));
}

Axis EvenAxis(std::uint64_t points, const UnitizedDouble& spacing) {
    return {points, spacing.GetUnits(), 0, spacing.GetValue(), {}};
}

/// `list` as positions with a first one and a spacing where these tell them exactly.
Axis ListedAxis(std::uint64_t points, const Core::QorConstArray<double>& list, const Unit& unit) {
    Axis axis{points, nullptr, 0, 0, {}};
    if (list.size() != points || !unit)
        return axis;
    axis.unit = unit;
    const std::span<const double> positions(list.get(), list.size());
    if (const auto increment = FindIncrement(positions)) {
        axis.first = positions.empty() ? 0 : positions[0];
        axis.spacing = *increment;
    } else {
        axis.positions.assign(positions.begin(), positions.end());
    }
    return axis;
}

boost::shared_array<double> ListPositions(const Axis& axis) {
    const auto list = AllocateArray<double>(static_cast<std::size_t>(axis.points));
    for (std::size_t i = 0; i < axis.points; ++i)
        list.get()[i] = axis.At(i);
    return list;
}

bool BeginsAtZero(const Axis& axis) { return axis.IsEven() && axis.first == 0; }

UnitizedDouble SpacingOf(const Axis& axis) { return {axis.spacing, axis.unit}; }

std::shared_ptr<Data2D> AnySurface() { return Data2D::Create(MakeData(RowMajorMatrix<double>(1, 1))); }

std::shared_ptr<Data1D> AnyProfile() { return Data1D::CreateFrom(std::make_shared<Array<double>>(1)); }

/// The keys of the metadata that each data set has.
std::set<std::vector<std::string>> FindImpliedMetaData() {
    DataSet set(AnySurface(), "surface");
    set.StoreData(AnyProfile(), "profile");
    DataContainer layout;
    set.StoreDataSet(layout);
    std::set<std::vector<std::string>> keys;
    for (const auto& [key, object] : *layout.GetPtr<DataContainer>(sMETA_DATA))
        keys.insert({key});
    return keys;
}

/// Warns of what is left of the properties of `bare`, which has no positions any more, and of a new one they are none.
template <class T>
void WarnOfProperties(const T& bare, const T& fresh, const std::string& key, const Report& report) {
    const auto usual = fresh.GetContent();
    for (const auto& [name, object] : *bare.GetContent())
        if (!usual->Exists(name))
            report.Loses(key, "the format has no place for the property " + name);
}

/// Which positions lie beyond those that an increment leads to.
struct Fit {
    bool IsExact() const { return !hasHigher && !hasLower && !hasInfinite; }
    bool IsTooLow() const { return hasHigher && !hasLower && !hasInfinite; }
    bool IsTooHigh() const { return hasLower && !hasHigher && !hasInfinite; }

    bool hasHigher = false, hasLower = false, hasInfinite = false;
};

Fit FitIncrement(std::span<const double> positions, double increment) {
    Fit fit;
    for (std::size_t i = 0; i < positions.size() && !(fit.hasHigher && fit.hasLower) && !fit.hasInfinite; ++i) {
        const double position = positions[0] + static_cast<double>(i) * increment;
        fit.hasHigher |= positions[i] > position;
        fit.hasLower |= positions[i] < position;
        fit.hasInfinite |= !std::isfinite(positions[i] - position);
    }
    return fit;
}

/// The number of the fewest digits, from six on, that fits as this increment does: what somebody wrote down has few.
double FindShortest(std::span<const double> positions, double increment, double divisor) {
    for (int digits = 6; digits < std::numeric_limits<double>::max_digits10; ++digits)
        if (char text[32]; true) {
            const auto end = std::to_chars(text, text + sizeof text, increment, std::chars_format::scientific, digits);
            double rounded = 0;
            std::from_chars(text, end.ptr, rounded);
            if (FitIncrement(positions, rounded / divisor).IsExact())
                return rounded;
        }
    return increment;
}

} // namespace

std::optional<Axis> Axis::InMetres() const {
    if (!unit || !IsLength(*unit))
        return std::nullopt;
    const auto convert = [this](double position) { return *Measurements::InMetres({position, unit}); };
    Axis metres{points, Core::UnitDictionary::Instance().Get(lengthUnit), convert(first), convert(spacing), {}};
    std::transform(positions.begin(), positions.end(), std::back_inserter(metres.positions), convert);
    return metres;
}

Measured::Measured(std::string key, std::shared_ptr<Data2D> surface)
    : m_key(std::move(key)), m_surface(std::move(surface)), m_kind(m_surface->GetDataKind()),
      m_scale(m_surface->GetDataScale()) {
    const Data2D& data = *m_surface;
    m_y.points = data.GetNumDimension1Points();
    m_x.points = data.GetNumDimension2Points();
    if (data.GetMatrixDataObject())
        m_type = data.GetValueType();
    const auto positions = data.GetPositionFunction();
    if (const auto fixed = std::dynamic_pointer_cast<const FixedSpacing2D>(positions)) {
        m_y = EvenAxis(m_y.points, fixed->GetDim1Spacing());
        m_x = EvenAxis(m_x.points, fixed->GetDim2Spacing());
    } else if (positions) {
        m_y = ListedAxis(m_y.points, data.GetDim1PositionArray(), data.GetDim1PositionUnits());
        m_x = ListedAxis(m_x.points, data.GetDim2PositionArray(), data.GetDim2PositionUnits());
    }
}

Measured::Measured(std::string key, std::shared_ptr<Data1D> profile)
    : m_key(std::move(key)), m_profile(std::move(profile)), m_kind(m_profile->GetDataKind()),
      m_scale(m_profile->GetDataScale()) {
    const Data1D& data = *m_profile;
    m_x.points = data.GetNumPoints();
    m_y.points = 1;
    if (data.GetArrayDataObject())
        m_type = data.GetValueTypeID();
    const auto positions = data.GetPositionFunction();
    if (const auto fixed = std::dynamic_pointer_cast<const FixedSpacing1D>(positions))
        m_x = EvenAxis(m_x.points, fixed->GetSpacing());
    else if (positions)
        m_x = ListedAxis(m_x.points, data.GetPositionArray(), data.GetPositionUnits());
}

void Measured::WarnOfLostProperties(const Report& report, const std::string& impliedKind) const {
    if (m_kind != impliedKind)
        report.Loses(m_key, "the format does not say what kind of data it holds; this is " + Quote(m_kind));
    if (m_profile) {
        Data1D bare(*m_profile, false);
        bare.RemovePositionInfo();
        WarnOfProperties(bare, *AnyProfile(), m_key, report);
    } else {
        Data2D bare(*m_surface, false);
        bare.RemovePositionInfo();
        const auto fresh = AnySurface();
        WarnOfProperties(bare, *fresh, m_key, report);
        if (bare.GetOrigin() != fresh->GetOrigin())
            report.Loses(m_key, "the format does not say in which corner the first sample lies");
    }
}

Content::Content(const DataContainer& container, const Report& report) : m_report(report) {
    // Of its own where a data set might write: what is saved does not change.
    const auto copy = std::make_shared<DataContainer>(container);
    if (const auto metaData = container.GetPtr<DataContainer>(sMETA_DATA))
        copy->Put(sMETA_DATA, metaData->Clone());
    m_set = Decode(copy, {});
    if (DataSet::IsDataSetFormat(*copy)) {
        m_rest = copy;
        for (const std::string& key : {sMETA_DATA, DataSet::s2D_DATA, DataSet::s1D_DATA, sDATA_FORMAT})
            m_rest->Remove(key);
    }
    std::string primary;
    if (!m_set->GetPrimaryData2DKey(primary))
        primary.clear();
    std::vector<std::string> keys;
    m_set->GetAllData2DItems()->EnumData(keys);
    std::stable_partition(keys.begin(), keys.end(), [&](const std::string& key) { return key == primary; });
    for (const std::string& key : keys)
        if (auto surface = m_set->GetData2D(key))
            m_measured.emplace_back(key, std::move(surface));
    keys.clear();
    m_set->GetAllData1DItems()->EnumData(keys);
    for (const std::string& key : keys)
        if (auto profile = m_set->GetData1D(key))
            m_measured.emplace_back(key, std::move(profile));
    m_taken = FindImpliedMetaData();
}

std::shared_ptr<DataObject> Content::Find(const std::vector<std::string>& path) const {
    auto object = m_set->GetMetaData()->Get(path.front());
    for (std::size_t level = 1; object && level < path.size(); ++level) {
        const auto wrapper = std::dynamic_pointer_cast<GenericWrapper<DataContainer>>(object);
        object = wrapper ? wrapper->GetData()->Get(path[level]) : nullptr;
    }
    return object;
}

std::shared_ptr<DataObject> Content::Take(const std::vector<std::string>& path) {
    auto object = Find(path);
    if (object)
        m_taken.insert(path);
    return object;
}

std::optional<std::string> Content::TakeText(const std::vector<std::string>& path) {
    const auto text = std::dynamic_pointer_cast<GenericWrapper<std::string>>(Find(path));
    if (!text)
        return std::nullopt;
    m_taken.insert(path);
    return *text->GetData();
}

std::vector<std::pair<std::string, std::string>> Content::TakeTexts(const std::vector<std::string>& path) {
    std::vector<std::pair<std::string, std::string>> texts;
    std::vector<std::string> place = path;
    if (const auto container = std::dynamic_pointer_cast<GenericWrapper<DataContainer>>(Find(path)))
        for (const auto& [key, object] : *container->GetData()) {
            place.resize(path.size());
            place.push_back(key);
            if (auto text = TakeText(place))
                texts.emplace_back(key, std::move(*text));
        }
    return texts;
}

void Content::Take(const Measured& measured) { m_takenKeys.insert(measured.GetKey()); }

void Content::WarnOfLosses() const {
    for (const Measured& measured : m_measured)
        if (!m_takenKeys.contains(measured.GetKey()))
            m_report.Loses(measured.GetKey(), "the format has no place for it beside what is written");
    std::vector<std::string> path;
    WarnOfLosses(*m_set->GetMetaData(), path);
    if (m_rest)
        WarnOfLosses(*m_rest, path);
}

void Content::WarnOfLosses(const DataContainer& container, std::vector<std::string>& path) const {
    for (const auto& [key, object] : container) {
        path.push_back(key);
        if (!m_taken.contains(path)) {
            if (const auto below = std::dynamic_pointer_cast<GenericWrapper<DataContainer>>(object)) {
                WarnOfLosses(*below->GetData(), path);
            } else {
                std::string place;
                for (const std::string& name : path)
                    place += (place.empty() ? "" : "/") + name;
                m_report.Loses(place, "the format has no place for it");
            }
        }
        path.pop_back();
    }
}

void SetPositions(Data2D& surface, const Axis& x, const Axis& y) {
    if (BeginsAtZero(x) && BeginsAtZero(y))
        surface.SetFixedSpacing(SpacingOf(y), SpacingOf(x));
    else
        surface.SetPositionFunction(std::make_shared<ArrayPosition2D>(ListPositions(y), ListPositions(x), y.points,
                                                                      x.points, y.unit->Clone(), x.unit->Clone()));
}

void SetPositions(Data1D& profile, const Axis& x) {
    if (BeginsAtZero(x))
        profile.SetFixedSpacing(SpacingOf(x));
    else
        profile.SetPositionFunction(std::make_shared<ArrayPosition1D>(ListPositions(x), x.points, x.unit->Clone()));
}

std::optional<double> FindIncrement(std::span<const double> positions, double divisor) {
    if (positions.size() < 2)
        return 0.0;
    const double first = positions.front(), last = positions.back();
    const double steps = static_cast<double>(positions.size() - 1) / divisor;
    const double mean = (last - first) / steps;
    // More than the roundings of the last position and of the mean may shift it.
    const double slack = 4 * std::numeric_limits<double>::epsilon() * std::max(std::abs(first), std::abs(last)) / steps;
    double least = mean - slack, most = mean + slack;
    for (int bit = 0; bit < std::numeric_limits<double>::digits; ++bit) {
        const double increment = least + (most - least) / 2;
        const Fit fit = FitIncrement(positions, increment / divisor);
        if (fit.IsExact())
            return FindShortest(positions, increment, divisor);
        if (!fit.IsTooLow() && !fit.IsTooHigh())
            return std::nullopt;
        (fit.IsTooLow() ? least : most) = increment;
    }
    return std::nullopt;
}

std::optional<double> InMetres(const UnitizedDouble& value) {
    if (!IsLength(*value.GetUnits()))
        return std::nullopt;
    return value.ConvertTo(lengthUnit).GetValue();
}

namespace {

void WarnUnless(const LengthBound& bound, double length, const Report& report, const std::string& place) {
    if (!bound.Accepts(length))
        report.Deviates(place, bound.Expectation(), LengthBound::Finding(length));
}

double WidthOf(const Axis& axis) { return axis.points < 2 ? 0 : std::abs(axis.At(axis.points - 1) - axis.At(0)); }

double StepOf(const Axis& axis) { return axis.points < 2 ? 0 : WidthOf(axis) / static_cast<double>(axis.points - 1); }

} // namespace

void WarnOfImplausibleLengths(const Report& report, const Measured& measured) {
    const auto x = measured.GetX().InMetres();
    const auto scale = InMetres(measured.GetScale());
    if (!x || !scale)
        return;
    const Axis y = measured.GetY().InMetres().value_or(Axis{1, nullptr, 0, 0, {}});
    Extremes<double> heights;
    measured.VisitSamples([&]<class T>(std::span<const T> samples) { heights = FindHeights(samples, *scale); });
    const std::string& place = measured.GetKey();
    WarnUnless(lengthBoundsAlongX.samples, StepOf(*x), report, place);
    WarnUnless(lengthBoundsAlongY.samples, StepOf(y), report, place);
    WarnUnless(lengthBoundsAlongX.ends, WidthOf(*x), report, place);
    WarnUnless(lengthBoundsAlongY.ends, WidthOf(y), report, place);
    WarnUnless(heightBound, heights.highest - heights.lowest, report, place);
}

} // namespace Qor::Tivor::Measurements
