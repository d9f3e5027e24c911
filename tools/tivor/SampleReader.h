#pragma once

#include <Tivor/Data1D.h>
#include <Tivor/Data2D.h>

#include <functional>

namespace Qor::Tivor::Tool {

/// The sample with these indices as it is stored; what is not finite is a point that is missing. It keeps the samples
/// alive.
using SurfaceReader = std::function<double(std::size_t row, std::size_t column)>;
using ProfileReader = std::function<double(std::size_t index)>;

/// Raises a `ToolError` for samples that are no real numbers, and where there are none.
SurfaceReader ReadSamples(const Data2D& surface);
ProfileReader ReadSamples(const Data1D& profile);

} // namespace Qor::Tivor::Tool
