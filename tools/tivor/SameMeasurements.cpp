#include "SameMeasurements.h"

#include "Display.h"

#include <Tivor/Codec.h>

#include <algorithm>
#include <cmath>

namespace Qor::Tivor::Tool {

namespace {

constexpr double tolerance = 1e-6; // what 32-bit floats round

bool MeansSame(double left, double right) {
    if (!std::isfinite(left) || !std::isfinite(right))
        return !std::isfinite(left) && !std::isfinite(right);
    return std::abs(left - right) <= tolerance * std::max(std::abs(left), std::abs(right));
}

AxisPositions PositionsOf(const Core::QorConstArray<double>& positions,
                          const Core::QorConstPtr<Core::UnitDescriptor>& unit) {
    const UnitizedDouble scale(1, unit);
    const double factor = scale.GetSIValue();
    std::vector<double> steps(positions.begin(), positions.end());
    for (double& step : steps)
        step = (step - positions[0]) * factor; // where the first one lies, not each format can say
    return {scale.GetUnits()->GetExponents(), std::move(steps)};
}

SampledArray Describe(const std::string& key, const Data2D& surface) {
    return {key,
            surface.GetValueTypeName(),
            surface.GetDataScale(),
            Samples(surface),
            {PositionsOf(surface.GetDim1PositionArray(), surface.GetDim1PositionUnits()),
             PositionsOf(surface.GetDim2PositionArray(), surface.GetDim2PositionUnits())}};
}

SampledArray Describe(const std::string& key, const Data1D& profile) {
    return {key,
            profile.GetValueTypeName(),
            profile.GetDataScale(),
            Samples(profile),
            {PositionsOf(profile.GetPositionArray(), profile.GetPositionUnits())}};
}

} // namespace

bool AxisPositions::operator==(const AxisPositions& other) const {
    return exponents == other.exponents &&
           std::equal(numbers.begin(), numbers.end(), other.numbers.begin(), other.numbers.end(), MeansSame);
}

// A surface of a single row may have become a profile, which has no positions along y.
bool SampledArray::HasSamePositions(const SampledArray& other) const {
    return positions.back() == other.positions.back() &&
           (positions.size() != other.positions.size() || positions.front() == other.positions.front());
}

bool SampledArray::MeansSameAs(const SampledArray& other) const {
    if (!HasSamePoints(other) || !HasSamePositions(other) ||
        scale.GetUnits()->GetExponents() != other.scale.GetUnits()->GetExponents())
        return false;
    const double factor = scale.GetSIValue(), otherFactor = other.scale.GetSIValue();
    for (std::size_t row = 0; row < samples.NumRows(); ++row)
        for (std::size_t column = 0; column < samples.NumColumns(); ++column)
            if (!MeansSame(static_cast<double>(samples.At(row, column)) * factor,
                           static_cast<double>(other.samples.At(row, column)) * otherFactor))
                return false;
    return true;
}

std::vector<SampledArray> ListSampledArrays(const DataContainer& container) {
    const auto copy = std::make_shared<DataContainer>(container); // a data set may complete what it is made of
    if (const auto metaData = container.GetPtr<DataContainer>(sMETA_DATA))
        copy->Put(sMETA_DATA, metaData->Clone());
    const auto set = Decode(copy, {});
    std::vector<SampledArray> list;
    std::vector<std::string> keys;
    set->GetAllData2DItems()->EnumData(keys);
    for (const std::string& key : keys)
        if (const auto surface = set->GetData2D(key))
            list.push_back(Describe(key, std::as_const(*surface)));
    keys.clear();
    set->GetAllData1DItems()->EnumData(keys);
    for (const std::string& key : keys)
        if (const auto profile = set->GetData1D(key))
            list.push_back(Describe(key, std::as_const(*profile)));
    return list;
}

std::string FindForeignMeasurement(const DataContainer& expected, const DataContainer& found) {
    const std::vector<SampledArray> ours = ListSampledArrays(expected);
    const std::vector<SampledArray> theirs = ListSampledArrays(found);
    for (const SampledArray& their : theirs)
        if (std::none_of(ours.begin(), ours.end(), [&](const SampledArray& our) { return our.MeansSameAs(their); }))
            return Show(their.key);
    return theirs.empty() ? "all of it" : std::string();
}

} // namespace Qor::Tivor::Tool
