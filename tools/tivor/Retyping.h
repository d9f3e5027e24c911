#pragma once

#include "Display.h"

#include <Tivor/Data1D.h>
#include <Tivor/Data2D.h>

namespace Qor::Tivor::Tool {

/// The element type of that name, as "int16". Raises a `ToolError` that lists them.
ETypeID FindElementType(const std::string& name);

/// The measured array with samples of that type; all else is shared. Floats are rounded. Raises a `ToolError` for a
/// sample that the type cannot have: one that is beyond it, and for integers any but the very number; `path` tells
/// where that is.
std::shared_ptr<Data2D> Retype(const Data2D& surface, ETypeID type, const Path& path);
std::shared_ptr<Data1D> Retype(const Data1D& profile, ETypeID type, const Path& path);

} // namespace Qor::Tivor::Tool
