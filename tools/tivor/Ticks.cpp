#include "Ticks.h"

#include "Display.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace Qor::Tivor::Tool {

double RoundDown(double number) {
    const double exponent = std::floor(std::log10(number));
    // Negative powers of ten are not exact, what they divide is.
    const double power = std::pow(10.0, std::abs(exponent));
    const double mantissa = (exponent < 0 ? number * power : number / power) * (1 + 1e-12);
    const double round = mantissa >= 5 ? 5 : mantissa >= 2 ? 2 : 1;
    return exponent < 0 ? round / power : round * power;
}

std::string DigitsText(double number, int digits) {
    char text[64];
    return {text, std::to_chars(text, text + sizeof text, number, std::chars_format::general, digits).ptr};
}

std::vector<Tick> MakeTicks(double from, double to, int most) {
    std::vector<Tick> ticks;
    if (!(to > from) || !std::isfinite(to - from) || most < 1)
        return ticks;
    double step = RoundDown((to - from) / most);
    const auto count = [&] { return std::floor(to / step) - std::ceil(from / step) + 1; };
    for (int i = 0; count() > most && i < 4; ++i)
        step = RoundDown(step * 2.5);
    if (!std::isnormal(step))
        return ticks;
    const double largest = std::max(std::abs(from), std::abs(to));
    const int digits = std::clamp(static_cast<int>(std::floor(std::log10(largest / step))) + 2, 1, 15);
    const double first = std::ceil(from / step - 1e-9);
    for (double i = 0; (first + i) * step <= to + step * 1e-9 && i < most; ++i) {
        const double value = (first + i) * step;
        ticks.push_back({value, DigitsText(value == 0 ? 0 : value, digits)});
    }
    return ticks;
}

std::string ShownUnit::Show(double number) const { return DigitsText(number) + (symbol.empty() ? "" : " " + symbol); }

std::string ShownUnit::InBrackets() const { return symbol.empty() ? "" : " [" + symbol + "]"; }

ShownUnit ChooseUnit(const Core::UnitDescriptor& unit, double largest) {
    static constexpr struct {
        const char* symbol;
        double inMetre;
    } lengths[] = {{"m", 1}, {"mm", 1e3}, {"\xC2\xB5m", 1e6}, {"nm", 1e9}};
    const bool isLength = unit.GetExponents() == Core::UnitDescriptor::Exponents{1} && unit.GetOffset() == 0;
    if (isLength && unit.GetScale() > 0 && std::isfinite(unit.GetScale()))
        for (const auto& [symbol, inMetre] : lengths)
            if (largest * unit.GetScale() * inMetre >= 1 || inMetre == 1e9)
                return {symbol, unit.GetScale() * inMetre};
    const std::string& symbol = unit.GetSymbol().empty() ? unit.GetName() : unit.GetSymbol();
    return {symbol.empty() ? "" : Tool::Show(symbol), 1};
}

} // namespace Qor::Tivor::Tool
