#pragma once

#include <optional>
#include <span>

namespace Qor::Tivor::Tool {

/// The spacing whose multiples, from 0 on, are these positions one by one when they are rounded to the digits that the
/// text has: such a spacing stands for the text without loss. Of several the one with the fewest digits. Nothing when
/// there is none, as for a first position that is not 0.
///
/// `lastDigits` tells what a one stands for in the place of the last digit of each position. A spacing of less than ten
/// of these must fit the positions exactly: digits that coarse would make nearly anything even.
std::optional<double> FindEvenSpacing(std::span<const double> positions, std::span<const double> lastDigits);

} // namespace Qor::Tivor::Tool
