#include "Tolerance.h"

#include "Measurement.h"

#include <QorCore/NumberText.h>
#include <QorCore/UnitDictionary.h>

#include <algorithm>
#include <charconv>
#include <cmath>

namespace Qor::Tivor::Tool {

namespace {

using Unit = Core::QorConstPtr<Core::UnitDescriptor>;

/// The same text with "u" for both signs of micro.
std::string WithoutMicro(std::string text) {
    for (const std::string& micro : {std::string("\xC2\xB5"), std::string("\xCE\xBC")})
        if (text.starts_with(micro))
            text.replace(0, micro.size(), "u");
    return text;
}

Unit FindUnit(const std::string& text) {
    const std::string symbol = WithoutMicro(text);
    const auto& units = Core::UnitDictionary::GetStandardUnits();
    const auto found =
        std::find_if(units.begin(), units.end(), [&](const Unit& unit) { return unit->GetSymbol() == symbol; });
    return found != units.end() ? *found : Core::UnitDictionary::Instance().Find(text);
}

} // namespace

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
