#pragma once

#include "Canvas.h"

namespace Qor::Tivor::Tool {

/// The bytes of a PNG file. Raises a `ToolError`.
std::string MakePng(const Canvas& canvas);

} // namespace Qor::Tivor::Tool
