#include "Canvas.h"

#include "Font.h"

#include <algorithm>
#include <cstdlib>

namespace Qor::Tivor::Tool {

namespace {

std::string Latin1Of(const std::string& utf8) {
    std::string latin;
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        const auto byte = static_cast<unsigned char>(utf8[i]);
        const bool isLatin = byte == 0xC2 || byte == 0xC3;
        if (byte < 0x80)
            latin += utf8[i];
        else if (isLatin && i + 1 < utf8.size())
            latin += static_cast<char>(((byte & 3) << 6) | (utf8[++i] & 0x3F));
        else if (byte >= 0xC0)
            latin += '?';
    }
    return latin;
}

} // namespace

Canvas::Canvas(int width, int height)
    : m_width(width), m_height(height),
      m_bytes(3 * static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 0xFF) {}

std::size_t Canvas::PlaceOf(int x, int y) const {
    return 3 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width) + static_cast<std::size_t>(x));
}

Colour Canvas::Get(int x, int y) const {
    const unsigned char* const pixel = &m_bytes.at(PlaceOf(x, y));
    return static_cast<Colour>(pixel[0] << 16 | pixel[1] << 8 | pixel[2]);
}

void Canvas::Set(int x, int y, Colour colour) {
    if (x < 0 || y < 0 || x >= m_width || y >= m_height)
        return;
    unsigned char* const pixel = &m_bytes[PlaceOf(x, y)];
    for (int i = 0; i < 3; ++i)
        pixel[i] = static_cast<unsigned char>(colour >> (16 - 8 * i));
}

void Canvas::Fill(const Box& box, Colour colour) {
    for (int y = box.y; y < box.y + box.height; ++y)
        for (int x = box.x; x < box.x + box.width; ++x)
            Set(x, y, colour);
}

void Canvas::Frame(const Box& box, Colour colour) {
    const int right = box.x + box.width;
    const int bottom = box.y + box.height;
    Fill({box.x - 1, box.y - 1, box.width + 2, 1}, colour);
    Fill({box.x - 1, bottom, box.width + 2, 1}, colour);
    Fill({box.x - 1, box.y, 1, box.height}, colour);
    Fill({right, box.y, 1, box.height}, colour);
}

void Canvas::Line(int x1, int y1, int x2, int y2, Colour colour) {
    const int right = std::abs(x2 - x1);
    const int down = std::abs(y2 - y1);
    const int stepX = x1 < x2 ? 1 : -1;
    const int stepY = y1 < y2 ? 1 : -1;
    for (int error = right - down;;) {
        Set(x1, y1, colour);
        if (x1 == x2 && y1 == y2)
            return;
        const int twice = 2 * error;
        if (twice > -down) {
            error -= down;
            x1 += stepX;
        }
        if (twice < right) {
            error += right;
            y1 += stepY;
        }
    }
}

void Canvas::Text(int x, int y, const std::string& text, Colour colour) {
    for (const char character : Latin1Of(text)) {
        const Glyph& glyph = GetGlyph(static_cast<unsigned char>(character));
        for (int row = 0; row < glyphHeight; ++row)
            for (int column = 0; column < glyphWidth; ++column)
                if ((glyph[static_cast<std::size_t>(row)] >> (7 - column) & 1) != 0)
                    Set(x + column, y + row, colour);
        x += glyphWidth;
    }
}

int TextWidth(const std::string& text) {
    return static_cast<int>(std::min<std::size_t>(Latin1Of(text).size(), 100000)) * glyphWidth;
}

std::string FitText(const std::string& text, int width) {
    if (TextWidth(text) <= width)
        return text;
    std::string fitting;
    for (std::size_t i = 0; i < text.size();) {
        std::size_t end = i + 1;
        while (end < text.size() && (text[end] & 0xC0) == 0x80)
            ++end;
        if (TextWidth(fitting) + 4 * glyphWidth > width)
            break;
        fitting.append(text, i, end - i);
        i = end;
    }
    return fitting + "...";
}

} // namespace Qor::Tivor::Tool
