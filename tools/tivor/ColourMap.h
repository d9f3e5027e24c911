#pragma once

#include "Canvas.h"

namespace Qor::Tivor::Tool {

/// The colour of a height: 0 is the lowest, 1 the highest; beyond these as at the end.
Colour MapColour(double fraction);

} // namespace Qor::Tivor::Tool
