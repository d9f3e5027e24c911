#pragma once

#include <Tivor/DataContainer.h>

#include <string>

namespace Qor::Tivor::Tool {

/// Which measured array of the second container is none of the first one's, as far as formats of measurements can keep
/// it: the same points, missing ones among them, heights and distances that mean the same but for the rounding of
/// 32-bit floats. Empty when each is, and there are some.
std::string FindForeignMeasurement(const DataContainer& expected, const DataContainer& found);

} // namespace Qor::Tivor::Tool
