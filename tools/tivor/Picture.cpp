#include "Picture.h"

#include "Display.h"

#include <algorithm>
#include <cmath>

namespace Qor::Tivor::Tool {

ShownHeights ShowHeights(std::uint64_t numPoints, std::uint64_t numMissing, double minimum, double maximum,
                         const UnitizedDouble& scale) {
    ShownHeights heights{.numPoints = numPoints, .numMissing = numMissing, .unit = {}};
    if (!heights.HasAny())
        return heights;
    const double ends[] = {minimum * scale.GetValue(), maximum * scale.GetValue()};
    heights.unit = ChooseUnit(*scale.GetUnits(), std::max(std::abs(ends[0]), std::abs(ends[1])));
    heights.factor = scale.GetValue() * heights.unit.factor;
    std::tie(heights.minimum, heights.maximum) = std::minmax(minimum * heights.factor, maximum * heights.factor);
    if (!std::isfinite(heights.maximum - heights.minimum))
        Fail("Expected heights whose differences are finite numbers, found them from " + DigitsText(heights.minimum) +
             " to " + DigitsText(heights.maximum));
    heights.from = heights.minimum;
    heights.to = heights.maximum;
    return heights;
}

std::string DescribeMissing(const ShownHeights& heights) {
    return heights.numMissing == 0 ? "no points missing" : Count(heights.numMissing, "point missing", "points missing");
}

std::string DescribeExtremes(const ShownHeights& heights) {
    if (!heights.HasAny())
        return "no point was measured";
    return "min " + heights.unit.Show(heights.minimum) + ", max " + heights.unit.Show(heights.maximum);
}

std::vector<std::string> WrapTexts(const std::vector<std::string>& texts, int width) {
    std::vector<std::string> lines;
    for (const std::string& text : texts)
        if (!lines.empty() && TextWidth(lines.back() + "; " + text) <= width)
            lines.back() += "; " + text;
        else
            lines.push_back(text);
    return lines;
}

} // namespace Qor::Tivor::Tool
