#include "Tolerance.h"

#include "Measurement.h"
#include "Units.h"

#include <QorCore/NumberText.h>

#include <charconv>
#include <cmath>

namespace Qor::Tivor::Tool {

Tolerance ParseTolerance(const std::string& text) {
    const std::string_view trimmed = Core::TrimBlanks(text);
    double number = 0;
    const auto [end, error] = std::from_chars(trimmed.data(), trimmed.data() + trimmed.size(), number);
    const auto length = static_cast<std::size_t>(end - trimmed.data());
    const auto unit = FindUnit(std::string(Core::TrimBlanks(trimmed.substr(length))));
    if (error != std::errc() || !std::isfinite(number) || number < 0 || !unit)
        Fail("Expected a tolerance as 0.1nm or \"5 um\" behind --tol, found " + Show(text));
    return {unit->GetExponents(), InSI(number, *unit)};
}

} // namespace Qor::Tivor::Tool
