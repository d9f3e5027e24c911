#pragma once

#include "Canvas.h"
#include "Font.h"
#include "Ticks.h"

#include <Tivor/BuiltInDataObjects.h>

namespace Qor::Tivor::Tool {

inline constexpr int margin = 12;
inline constexpr int lineHeight = glyphHeight + 4;
inline constexpr Colour frameColour = 0x404040;

/// The heights that a picture shows, in the unit in which it shows them.
struct ShownHeights {
    std::uint64_t numPoints = 0;
    std::uint64_t numMissing = 0;
    double factor = 1; ///< of the samples
    ShownUnit unit;
    double minimum = 0;
    double maximum = 0;
    double from = 0; ///< what the first colour stands for, or the lower end of the axis
    double to = 0;
    bool isClipped = false; ///< whether some lie beyond these

    bool HasAny() const { return numMissing < numPoints; }
};

struct Picture {
    Canvas canvas;
    Box plot; ///< where the samples are drawn
    ShownHeights heights;
};

/// Where all samples lie from one to another and each is multiplied by the scale. Raises a `ToolError` for numbers that
/// cannot be drawn.
ShownHeights ShowHeights(std::uint64_t numPoints, std::uint64_t numMissing, double minimum, double maximum,
                         const UnitizedDouble& scale);
/// "no points missing"
std::string DescribeMissing(const ShownHeights& heights);
/// "min -1 nm, max 1 nm"
std::string DescribeExtremes(const ShownHeights& heights);
/// Lines that stand beside or below each other, as there is room.
std::vector<std::string> WrapTexts(const std::vector<std::string>& texts, int width);

} // namespace Qor::Tivor::Tool
