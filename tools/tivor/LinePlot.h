#pragma once

#include "Picture.h"

#include <Tivor/Data1D.h>
#include <Tivor/Data2D.h>

namespace Qor::Tivor::Tool {

/// The heights of a profile over its positions, with a gap wherever points are missing. The picture is so many pixels
/// wide. Raises a `ToolError` for what cannot be drawn.
Picture DrawProfile(const Data1D& profile, const std::string& title, int width);
/// The same of the row in the middle of a surface.
Picture DrawMiddleRow(const Data2D& surface, const std::string& title, int width);

} // namespace Qor::Tivor::Tool
