#pragma once

#include "Picture.h"

#include <Tivor/Data2D.h>

namespace Qor::Tivor::Tool {

/// Where a point is missing: squares of these, by turns.
inline constexpr Colour missingColours[] = {0x8C8C8C, 0xD2D2D2};

/// The surface seen from above, its first row at the top: a colour for each height, each pixel a square piece of it.
/// The longer side of the map has at most so many pixels. Raises a `ToolError` for what cannot be drawn.
Picture DrawHeightMap(const Data2D& surface, const std::string& title, int longSide);

} // namespace Qor::Tivor::Tool
