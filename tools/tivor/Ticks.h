#pragma once

#include <QorCore/UnitDescriptor.h>

#include <string>
#include <vector>

namespace Qor::Tivor::Tool {

/// The largest of 1, 2 and 5 times a power of ten that is not above the number, which is above zero.
double RoundDown(double number);

struct Tick {
    double value;
    std::string label;
};

/// At most so many round numbers between two, each with as many digits as tell it from the next.
std::vector<Tick> MakeTicks(double from, double to, int most);

/// The number with that many digits.
std::string DigitsText(double number, int digits = 6);

/// What numbers are shown in, and by what they are multiplied for that.
struct ShownUnit {
    std::string symbol; ///< UTF-8; empty for plain numbers
    double factor = 1;

    /// The number, already multiplied, with the symbol.
    std::string Show(double number) const;
    /// " [nm]"; nothing for plain numbers
    std::string InBrackets() const;
};

/// Lengths in nm, µm, mm or m, so that the largest number stands between 1 and 1000; all else in its own unit.
ShownUnit ChooseUnit(const Core::UnitDescriptor& unit, double largest);

} // namespace Qor::Tivor::Tool
