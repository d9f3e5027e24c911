#include "EvenSpacing.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace Qor::Tivor::Tool {

namespace {

struct Range {
    double least = -std::numeric_limits<double>::infinity();
    double greatest = std::numeric_limits<double>::infinity();
};

/// The spacings that put each position no farther off than that share of its last digit.
Range RangeOfSpacings(std::span<const double> positions, std::span<const double> lastDigits, double share) {
    constexpr double rounding = 2 * std::numeric_limits<double>::epsilon();
    Range range;
    for (std::size_t i = 1; i < positions.size(); ++i) {
        const double tolerance = share * lastDigits[i] + rounding * std::abs(positions[i]);
        const auto steps = static_cast<double>(i);
        range.least = std::max(range.least, (positions[i] - tolerance) / steps);
        range.greatest = std::min(range.greatest, (positions[i] + tolerance) / steps);
    }
    return range;
}

double FewestDigits(const Range& range) {
    const double middle = range.least + (range.greatest - range.least) / 2;
    for (int digits = 1; digits < std::numeric_limits<double>::max_digits10; ++digits) {
        char text[32];
        const auto end = std::to_chars(text, text + sizeof text, middle, std::chars_format::general, digits).ptr;
        double rounded = 0;
        std::from_chars(text, end, rounded);
        if (range.least <= rounded && rounded <= range.greatest)
            return rounded;
    }
    return middle;
}

} // namespace

std::optional<double> FindEvenSpacing(std::span<const double> positions, std::span<const double> lastDigits) {
    const bool areFinite = std::all_of(positions.begin(), positions.end(), [](double x) { return std::isfinite(x); });
    if (positions.size() < 2 || positions.front() != 0 || !areFinite)
        return std::nullopt;
    const double coarsest = *std::max_element(lastDigits.begin() + 1, lastDigits.end());
    for (const double share : {0.5, 0.0}) {
        const Range range = RangeOfSpacings(positions, lastDigits, share);
        if (range.least > range.greatest)
            return std::nullopt;
        const double spacing = FewestDigits(range);
        if (spacing != 0 && (share == 0 || std::abs(spacing) >= 10 * coarsest))
            return spacing;
    }
    return std::nullopt;
}

} // namespace Qor::Tivor::Tool
