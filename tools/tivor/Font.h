#pragma once

#include <array>
#include <cstdint>

namespace Qor::Tivor::Tool {

inline constexpr int glyphWidth = 7;
inline constexpr int glyphHeight = 13;

/// The rows of a character from the top on; the highest bit is the pixel on the left.
using Glyph = std::array<std::uint8_t, glyphHeight>;

/// Of a character of Latin-1; that of '?' where there is none to see.
const Glyph& GetGlyph(unsigned char code);

} // namespace Qor::Tivor::Tool
