#pragma once

#include <QorCore/UnitDescriptor.h>

#include <string>

namespace Qor::Tivor::Tool {

/// By how much samples of one dimension may differ.
struct Tolerance {
    Core::UnitDescriptor::Exponents exponents{};
    double most = 0; ///< in SI units
};

/// Of a text as "0.1nm", "5 um" or "1e-9 Meter"; without a unit it is for plain numbers. Raises a `ToolError`.
Tolerance ParseTolerance(const std::string& text);

} // namespace Qor::Tivor::Tool
