#include <QorCore/Utf8.h>

#include <cstddef>
#include <type_traits>

namespace Qor::Core {

namespace {

constexpr char32_t replacement = 0xFFFD;

constexpr bool IsSurrogate(char32_t unit) { return unit >= 0xD800 && unit <= 0xDFFF; }
constexpr bool IsHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
constexpr bool IsLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

template <class Char>
char32_t UnitAt(std::basic_string_view<Char> text, std::size_t position) {
    return static_cast<char32_t>(static_cast<std::make_unsigned_t<Char>>(text[position]));
}

// Both decoders take one character or one maximal ill-formed part and move `position` behind it.
char32_t DecodeWide(std::wstring_view wide, std::size_t& position) {
    const char32_t first = UnitAt(wide, position++);
    if (sizeof(wchar_t) == 2 && IsHighSurrogate(first) && position < wide.size() &&
        IsLowSurrogate(UnitAt(wide, position)))
        return 0x10000 + ((first - 0xD800) << 10) + (UnitAt(wide, position++) - 0xDC00);
    return IsSurrogate(first) || first > 0x10FFFF ? replacement : first;
}

struct Continuation {
    int count;
    char32_t lowestSecond;
    char32_t highestSecond;
};

// What may follow a first byte. The second byte is narrower behind E0, F0 (overlong forms), ED (surrogates) and F4
// (beyond U+10FFFF); `count` is 0 where nothing makes the byte a beginning.
Continuation ContinuationOf(char32_t first) {
    if (first >= 0xC2 && first <= 0xDF)
        return {1, 0x80, 0xBF};
    if (first >= 0xE0 && first <= 0xEF)
        return {2, first == 0xE0 ? 0xA0u : 0x80u, first == 0xED ? 0x9Fu : 0xBFu};
    if (first >= 0xF0 && first <= 0xF4)
        return {3, first == 0xF0 ? 0x90u : 0x80u, first == 0xF4 ? 0x8Fu : 0xBFu};
    return {0, 0x80, 0xBF};
}

char32_t DecodeUtf8(std::string_view utf8, std::size_t& position) {
    const char32_t first = UnitAt(utf8, position++);
    if (first < 0x80)
        return first;
    Continuation expected = ContinuationOf(first);
    if (expected.count == 0)
        return replacement;
    char32_t character = first & (0x3Fu >> expected.count);
    for (; expected.count != 0; --expected.count) {
        if (position == utf8.size())
            return replacement;
        const char32_t next = UnitAt(utf8, position);
        if (next < expected.lowestSecond || next > expected.highestSecond)
            return replacement;
        character = character << 6 | (next & 0x3F);
        expected.lowestSecond = 0x80;
        expected.highestSecond = 0xBF;
        ++position;
    }
    return character;
}

constexpr std::size_t Utf8Length(char32_t character) {
    return character < 0x80 ? 1 : character < 0x800 ? 2 : character < 0x10000 ? 3 : 4;
}

void AppendUtf8(std::string& utf8, char32_t character) {
    static constexpr char32_t leads[] = {0, 0, 0xC0, 0xE0, 0xF0};
    const std::size_t length = Utf8Length(character);
    auto shift = static_cast<unsigned>(6 * (length - 1));
    utf8.push_back(static_cast<char>(static_cast<unsigned char>(leads[length] | character >> shift)));
    while (shift != 0) {
        shift -= 6;
        utf8.push_back(static_cast<char>(static_cast<unsigned char>(0x80 | (character >> shift & 0x3F))));
    }
}

void AppendWide(std::wstring& wide, char32_t character) {
    if (sizeof(wchar_t) == 2 && character >= 0x10000) {
        wide.push_back(static_cast<wchar_t>(0xD800 + ((character - 0x10000) >> 10)));
        wide.push_back(static_cast<wchar_t>(0xDC00 + ((character - 0x10000) & 0x3FF)));
    } else {
        wide.push_back(static_cast<wchar_t>(character));
    }
}

} // namespace

std::string Utf8FromWide(std::wstring_view wide) {
    std::string utf8;
    utf8.reserve(GetUtf8Size(wide));
    for (std::size_t position = 0; position < wide.size();)
        AppendUtf8(utf8, DecodeWide(wide, position));
    return utf8;
}

std::wstring WideFromUtf8(std::string_view utf8) {
    std::wstring wide;
    wide.reserve(utf8.size());
    for (std::size_t position = 0; position < utf8.size();)
        AppendWide(wide, DecodeUtf8(utf8, position));
    return wide;
}

std::size_t GetUtf8Size(std::wstring_view wide) {
    std::size_t size = 0;
    for (std::size_t position = 0; position < wide.size();)
        size += Utf8Length(DecodeWide(wide, position));
    return size;
}

bool IsUtf8(std::string_view bytes) {
    static constexpr std::string_view ownReplacement = "\xEF\xBF\xBD";
    for (std::size_t position = 0; position < bytes.size();) {
        const std::size_t begin = position;
        if (DecodeUtf8(bytes, position) == replacement && bytes.substr(begin, position - begin) != ownReplacement)
            return false;
    }
    return true;
}

} // namespace Qor::Core
