#include <QorCore/Utf8.h>

#include <gtest/gtest.h>

namespace {

using Qor::Core::GetUtf8Size;
using Qor::Core::Utf8FromWide;
using Qor::Core::WideFromUtf8;

TEST(Utf8, IllFormedPartsBecomeOneReplacementEach) {
    struct Row {
        const char* title;
        std::string utf8;
        std::wstring wide;
    };
    // `?` stands for the replacement character.
    const Row rows[] = {
        {"empty", "", L""},
        {"one to four bytes", "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80z", L"a\u00E4\u20AC\U0001F600z"},
        {"a zero inside", std::string("a\0b", 3), std::wstring(L"a\0b", 3)},
        {"first and last of each length",
         "\x01\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF",
         L"\x01\x7F\x80\u07FF\u0800\uFFFF\U00010000\U0010FFFF"},
        {"around the surrogates", "\xED\x9F\xBF\xEE\x80\x80", L"\uD7FF\uE000"},
        {"overlong forms",
         "\xC0\xAF\xE0\x80\xBF\xF0\x81\x82"
         "A",
         L"????????A"},
        {"surrogates",
         "\xED\xA0\x80\xED\xBF\xBF\xED\xAF"
         "A",
         L"????????A"},
        {"beyond the last character",
         "\xF4\x91\x92\x93\xFF"
         "A\x80\xBF"
         "B",
         L"?????A??B"},
        {"truncated in the middle",
         "\xE1\x80\xE2\xF0\x91\x92\xF1\xBF"
         "A",
         L"????A"},
        {"truncated at the end", "A\xF0\x9F\x98", L"A?"},
        {"only a first byte", "\xC3", L"?"},
        {"bytes that never occur", "\xC1\xF5\xF8\xFE\xFF", L"?????"},
        {"a good one behind a bad one", "\xE2\x82\xC3\xA4\xF0\x9F\xE2\x82\xAC", L"?\u00E4?\u20AC"},
    };
    for (const Row& row : rows) {
        std::wstring expected = row.wide;
        for (wchar_t& unit : expected)
            unit = unit == L'?' ? L'\uFFFD' : unit;
        EXPECT_EQ(WideFromUtf8(row.utf8), expected) << row.title;
    }
}

TEST(Utf8, WideTextThatIsNoTextBecomesReplacements) {
    const wchar_t high = static_cast<wchar_t>(0xD83D);
    const wchar_t low = static_cast<wchar_t>(0xDE00);
    const std::string bad = "\xEF\xBF\xBD";
    const std::pair<std::wstring, std::string> rows[] = {
        {{high}, bad},
        {{low}, bad},
        {{high, L'a'}, bad + "a"},
        {{low, high}, bad + bad},
        {{high, high, L'a', low}, bad + bad + "a" + bad},
        {{high, low}, sizeof(wchar_t) == 2 ? "\xF0\x9F\x98\x80" : bad + bad},
    };
    for (const auto& [wide, utf8] : rows) {
        EXPECT_EQ(Utf8FromWide(wide), utf8);
        EXPECT_EQ(GetUtf8Size(wide), utf8.size());
    }
    if constexpr (sizeof(wchar_t) == 4) {
        const std::wstring beyond{static_cast<wchar_t>(0x110000), static_cast<wchar_t>(-1)};
        EXPECT_EQ(Utf8FromWide(beyond), bad + bad);
    }
}

TEST(Utf8, EveryCharacterTravels) {
    for (char32_t character = 0; character <= 0x10FFFF; ++character) {
        if (character >= 0xD800 && character <= 0xDFFF)
            continue;
        std::wstring wide;
        if (sizeof(wchar_t) == 2 && character >= 0x10000)
            wide = {static_cast<wchar_t>(0xD7C0 + (character >> 10)),
                    static_cast<wchar_t>(0xDC00 + (character & 0x3FF))};
        else
            wide = {static_cast<wchar_t>(character)};
        const std::string utf8 = Utf8FromWide(wide);
        ASSERT_EQ(utf8.size(), GetUtf8Size(wide));
        ASSERT_EQ(WideFromUtf8(utf8), wide) << static_cast<std::uint32_t>(character);
    }
}

} // namespace
