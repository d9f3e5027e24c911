#include <QorCore/NumberText.h>

#include <gtest/gtest.h>

#include <bit>
#include <locale>
#include <random>

namespace Qor::Core::Testing {

namespace {

template <class T>
using BitsOf = std::conditional_t<sizeof(T) == 4, std::uint32_t, std::uint64_t>;

template <class T>
void ExpectBitsBack(BitsOf<T> bits) {
    const std::string text = GetNumberText(std::bit_cast<T>(bits));
    const auto number = ParseNumber<T>(text);
    ASSERT_TRUE(number) << text;
    EXPECT_EQ(std::bit_cast<BitsOf<T>>(*number), bits) << text;
}

template <class T>
void ExpectText(T number, const std::string& text) {
    EXPECT_EQ(GetNumberText(number), text);
    EXPECT_EQ(ParseNumber<T>(" \t" + text + "\r\n"), number) << text;
}

template <class T>
void ExpectBits(BitsOf<T> bits, const std::string& text) {
    EXPECT_EQ(GetNumberText(std::bit_cast<T>(bits)), text);
    ExpectBitsBack<T>(bits);
}

template <class T>
void ExpectNone(std::initializer_list<std::string_view> texts) {
    for (const std::string_view text : texts)
        EXPECT_FALSE(ParseNumber<T>(text)) << '"' << text << '"';
}

class OtherCustom final : public std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

} // namespace

TEST(NumberText, IsTheShortestThatReadsBackWhateverTheLocale) {
    const std::locale before = std::locale::global(std::locale(std::locale(), new OtherCustom));
    ExpectText(char{-128}, "-128");
    ExpectText(std::uint8_t{255}, "255");
    ExpectText(std::numeric_limits<std::int64_t>::min(), "-9223372036854775808");
    ExpectText(std::numeric_limits<std::uint64_t>::max(), "18446744073709551615");
    ExpectText(0.1f, "0.1");
    ExpectText(static_cast<double>(0.1f), "0.10000000149011612");
    ExpectText(5e-324, "5e-324");
    ExpectText(std::numeric_limits<double>::max(), "1.7976931348623157e+308");
    ExpectText(-std::numeric_limits<float>::infinity(), "-inf");
    std::locale::global(before);
}

TEST(NumberText, KeepsEachBitOfANaN) {
    ExpectBits<double>(0x8000000000000000, "-0");
    ExpectBits<double>(0x7FF8000000000000, "nan");
    ExpectBits<double>(0xFFF8000000000000, "-nan");
    ExpectBits<double>(0x7FF0000000000001, "nan(7FF0000000000001)");
    ExpectBits<double>(0xFFFFFFFFFFFFFFFF, "nan(FFFFFFFFFFFFFFFF)");
    ExpectBits<float>(0x7FC00000, "nan");
    ExpectBits<float>(0xFFC00000, "-nan");
    ExpectBits<float>(0x7F80000A, "nan(7F80000A)");
    std::mt19937_64 random(11);
    for (int round = 0; round < 20'000; ++round) {
        const std::uint64_t bits = random();
        const bool isSpecial = round % 4 == 0;
        ExpectBitsBack<double>(isSpecial ? bits | 0x7FF0000000000000 : bits);
        ExpectBitsBack<float>(static_cast<std::uint32_t>(isSpecial ? bits | 0x7F800000 : bits));
    }
}

TEST(NumberText, RefusesWhatIsNoNumberOfTheType) {
    ExpectNone<int>({"", " ", "-", "+1", "1 2", "1x", "0x10", "1.0", "1e2", "nan", "2147483648", "-2147483649"});
    ExpectNone<std::int8_t>({"128", "-129", "A"});
    ExpectNone<std::uint8_t>({"256", "-1"});
    ExpectNone<std::uint64_t>({"18446744073709551616", "-1"});
    ExpectNone<std::int64_t>({"9223372036854775808"});
    ExpectNone<double>({"", "+1", "1,5", "1.5.", "1e", "0x1p3", "1e400", "-1e400", "1e-400", "infinite", "nano",
                        "nan()", "nan(7FF8)", "nan(000000007FC00000)", "nan(3FF0000000000000)", "nan(7FF0000000000000)",
                        "-nan(FFF0000000000001)", "nan(7FF000000000000G)", "nan(+FF0000000000001)"});
    ExpectNone<float>({"1e39", "1e-60", "nan(7FF0000000000001)", "nan(7F800000)"});
}

} // namespace Qor::Core::Testing
