#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Qor::Tivor::Tool {

/// 0xRRGGBB
using Colour = std::uint32_t;

inline constexpr Colour white = 0xFFFFFF;
inline constexpr Colour black = 0x000000;

/// Where something stands: the corner on the top left, and how much it takes.
struct Box {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

/// A picture of pixels, white at first. What lies beyond its edges is not drawn.
class Canvas {
public:
    Canvas(int width, int height);

    int GetWidth() const { return m_width; }
    int GetHeight() const { return m_height; }
    /// Three bytes a pixel, row by row from the top.
    const std::vector<unsigned char>& GetBytes() const { return m_bytes; }
    Colour Get(int x, int y) const;

    void Set(int x, int y, Colour colour);
    void Fill(const Box& box, Colour colour);
    /// The line around the box, outside of it.
    void Frame(const Box& box, Colour colour);
    void Line(int x1, int y1, int x2, int y2, Colour colour);
    /// UTF-8; characters that are not in Latin-1 become question marks.
    void Text(int x, int y, const std::string& text, Colour colour = black);

private:
    std::size_t PlaceOf(int x, int y) const;

    int m_width;
    int m_height;
    std::vector<unsigned char> m_bytes;
};

int TextWidth(const std::string& text);
/// The text, or as much of it as there is room for, with three dots behind.
std::string FitText(const std::string& text, int width);

} // namespace Qor::Tivor::Tool
