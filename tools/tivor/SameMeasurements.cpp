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

Quantities PositionsOf(const Core::QorConstArray<double>& positions,
                       const Core::QorConstPtr<Core::UnitDescriptor>& unit) {
    const UnitizedDouble scale(1, unit);
    const double factor = scale.GetSIValue();
    std::vector<double> steps(positions.begin(), positions.end());
    for (double& step : steps)
        step = (step - positions[0]) * factor; // where the first one lies, not each format can say
    return {scale.GetUnits()->GetExponents(), std::move(steps)};
}

Measurement Describe(const std::string& key, const Data2D& surface) {
    return {key,
            surface.GetValueTypeName(),
            surface.GetDataScale(),
            Samples(surface),
            {PositionsOf(surface.GetDim1PositionArray(), surface.GetDim1PositionUnits()),
             PositionsOf(surface.GetDim2PositionArray(), surface.GetDim2PositionUnits())}};
}

Measurement Describe(const std::string& key, const Data1D& profile) {
    return {key,
            profile.GetValueTypeName(),
            profile.GetDataScale(),
            Samples(profile),
            {PositionsOf(profile.GetPositionArray(), profile.GetPositionUnits())}};
}

} // namespace

bool Quantities::operator==(const Quantities& other) const {
    return exponents == other.exponents &&
           std::equal(numbers.begin(), numbers.end(), other.numbers.begin(), other.numbers.end(), MeansSame);
}

// A surface of a single row may have become a profile, which has no positions along y.
bool Measurement::HasSamePositions(const Measurement& other) const {
    return positions.back() == other.positions.back() &&
           (positions.size() != other.positions.size() || positions.front() == other.positions.front());
}

bool Measurement::MeansSameAs(const Measurement& other) const {
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

std::vector<Measurement> ListMeasurements(const DataContainer& container) {
    const auto copy = std::make_shared<DataContainer>(container); // a data set may complete what it is made of
    if (const auto metaData = container.GetPtr<DataContainer>(sMETA_DATA))
        copy->Put(sMETA_DATA, metaData->Clone());
    const auto set = Decode(copy, {});
    std::vector<Measurement> list;
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
    const std::vector<Measurement> ours = ListMeasurements(expected);
    const std::vector<Measurement> theirs = ListMeasurements(found);
    for (const Measurement& their : theirs)
        if (std::none_of(ours.begin(), ours.end(), [&](const Measurement& our) { return our.MeansSameAs(their); }))
            return Show(their.key);
    return theirs.empty() ? "all of it" : std::string();
}

} // namespace Qor::Tivor::Tool
