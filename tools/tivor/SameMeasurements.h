#pragma once

#include "Samples.h"

#include <Tivor/DataContainer.h>

#include <string>
#include <vector>

namespace Qor::Tivor::Tool {

/// The positions along one dimension, from the first one on, in SI units.
struct AxisPositions {
    bool operator==(const AxisPositions& other) const;

    Core::UnitDescriptor::Exponents exponents{};
    std::vector<double> numbers;
};

/// A measured array of a data set.
struct SampledArray {
    bool HasSamePoints(const SampledArray& other) const {
        return samples.NumRows() == other.samples.NumRows() && samples.NumColumns() == other.samples.NumColumns();
    }
    bool HasSamePositions(const SampledArray& other) const;
    /// As far as formats of measurements can keep it: the same points, missing ones among them, heights and distances
    /// that mean the same but for the rounding of 32-bit floats.
    bool MeansSameAs(const SampledArray& other) const;

    std::string key;
    std::string valueType;
    UnitizedDouble scale;
    Samples samples;
    std::vector<AxisPositions> positions;
};

/// Those of the data set that a container holds, surfaces first. The samples are shared with the container.
std::vector<SampledArray> ListSampledArrays(const DataContainer& container);

/// Which measured array of the second container means the same as none of the first one's. Empty when each does, and
/// there are some.
std::string FindForeignMeasurement(const DataContainer& expected, const DataContainer& found);

} // namespace Qor::Tivor::Tool
