#pragma once

#include "Measurement.h"
#include "Tolerance.h"

namespace Qor::Tivor::Tool {

/// One thing in which two measured arrays differ, for people and for machines.
struct MeasuredDifference {
    std::string text;
    Json json;
};

/// Samples differ that are farther apart than the tolerance, where that is of their dimension, and than the roundings
/// of units and scales that differ.
std::vector<MeasuredDifference> CompareMeasurements(const Measurement& a, const Measurement& b,
                                                    const Tolerance& tolerance);

} // namespace Qor::Tivor::Tool
