#pragma once

#include "SurfaceText.h"

#include <Tivor/DataContainer.h>

#include <functional>
#include <string>

namespace Qor::Tivor::Tool {

/// Puts a surface into an empty container: Name; Samples; Axes with X, Y and Value; Comments with Source, what the text
/// says of it, and Review.
void PutSurface(DataContainer& container, const SurfaceText& surface);

/// Where a container is not what `PutSurface` makes of the surface, sample by sample, bit by bit; what stands in
/// Comments/Review is not compared. Calls back for each deviation.
void CompareSurface(DataContainer& container, const SurfaceText& surface,
                    const std::function<void(const std::string& deviation)>& tell);

} // namespace Qor::Tivor::Tool
