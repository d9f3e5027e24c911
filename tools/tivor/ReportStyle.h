#pragma once

namespace Qor::Tivor::Tool {

/// How a report looks, on light and on dark screens.
extern const char* const reportStyle;

} // namespace Qor::Tivor::Tool
