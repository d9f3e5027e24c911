#include <QorCore/Utf8.h>

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using Qor::Core::GetUtf8Size;
using Qor::Core::Utf8FromWide;
using Qor::Core::WideFromUtf8;

TEST(Utf8, IllFormedPartsBecomeOneReplacementEach) {
    // `?` stands for the replacement character; \x41 and \x42 are A and B.
    const std::pair<std::string, std::wstring> rows[] = {
        {"a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80z", L"a\u00E4\u20AC\U0001F600z"},
        {std::string("a\0b", 3), std::wstring(L"a\0b", 3)},
        {"\xC0\xAF\xE0\x80\xBF\xF0\x81\x82\x41", L"????????A"},      // overlong forms
        {"\xED\xA0\x80\xED\xBF\xBF\xED\xAF\x41", L"????????A"},      // surrogates
        {"\xF4\x91\x92\x93\xFF\x41\x80\xBF\x42", L"?????A??B"},      // beyond the last character
        {"\xE1\x80\xE2\xF0\x91\x92\xF1\xBF\x41", L"????A"},          // truncated in the middle
        {"A\xF0\x9F\x98", L"A?"},                                    // truncated at the end
        {"\xC3", L"?"},                                              // only a first byte
        {"\xC1\xF5\xF8\xFE\xFF", L"?????"},                          // bytes that never occur
        {"\xE2\x82\xC3\xA4\xF0\x9F\xE2\x82\xAC", L"?\u00E4?\u20AC"}, // good ones behind bad ones
    };
    for (const auto& [utf8, wide] : rows) {
        std::wstring expected = wide;
        std::replace(expected.begin(), expected.end(), L'?', L'\uFFFD');
        EXPECT_EQ(WideFromUtf8(utf8), expected);
    }
}

TEST(Utf8, WideTextThatIsNoTextBecomesReplacements) {
    const wchar_t high = static_cast<wchar_t>(0xD83D);
    const wchar_t low = static_cast<wchar_t>(0xDE00);
    const std::string bad = "\xEF\xBF\xBD";
    const bool arePairs = sizeof(wchar_t) == 2;
    const std::pair<std::wstring, std::string> rows[] = {
        {{high}, bad},
        {{low, high}, bad + bad},
        {{high, high, L'a', low}, bad + bad + "a" + bad},
        {{high, low}, arePairs ? "\xF0\x9F\x98\x80" : bad + bad},
        {{static_cast<wchar_t>(0x110000), static_cast<wchar_t>(-1)},
         arePairs ? std::string("\0\xEF\xBF\xBF", 4) : bad + bad},
    };
    for (const auto& [wide, utf8] : rows) {
        EXPECT_EQ(Utf8FromWide(wide), utf8);
        EXPECT_EQ(GetUtf8Size(wide), utf8.size());
    }
}

TEST(Utf8, EveryCharacterTravels) {
    // Those of the basic plane where a unit has 16 bits.
    for (char32_t character = 0; character <= std::min<char32_t>(0x10FFFF, WCHAR_MAX); ++character) {
        if (character >= 0xD800 && character <= 0xDFFF)
            continue;
        const std::wstring wide(1, static_cast<wchar_t>(character));
        const std::string utf8 = Utf8FromWide(wide);
        ASSERT_EQ(utf8.size(), GetUtf8Size(wide));
        ASSERT_EQ(WideFromUtf8(utf8), wide) << static_cast<std::uint32_t>(character);
    }
}

} // namespace
