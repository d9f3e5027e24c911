#include "SameMeasurements.h"

#include "Measurement.h"

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

bool MeanSame(const Quantities& left, const Quantities& right) {
    return left.exponents == right.exponents &&
           std::equal(left.numbers.begin(), left.numbers.end(), right.numbers.begin(), right.numbers.end(), MeansSame);
}

/// From the first one on: where that lies, not each format can say.
Quantities StepsOf(Quantities positions) {
    if (!positions.numbers.empty())
        for (const double first = positions.numbers.front(); double& number : positions.numbers)
            number -= first;
    return positions;
}

bool MeanSame(const Measurement& left, const Measurement& right) {
    return left.points == right.points && MeanSame(left.samples, right.samples) &&
           std::equal(
               left.positions.begin(), left.positions.end(), right.positions.begin(), right.positions.end(),
               [](const Positions& one, const Positions& other) { return MeanSame(StepsOf(one), StepsOf(other)); });
}

} // namespace

std::string FindForeignMeasurement(const DataContainer& expected, const DataContainer& found) {
    const std::vector<Measurement> ours = MeasuredContent(expected).List();
    const std::vector<Measurement> theirs = MeasuredContent(found).List();
    for (const Measurement& their : theirs)
        if (std::none_of(ours.begin(), ours.end(), [&](const Measurement& our) { return MeanSame(our, their); }))
            return ShowPath(their.path);
    return theirs.empty() ? "all of it" : std::string();
}

} // namespace Qor::Tivor::Tool
