#include "Alerts.h"

#include <QorCore/MemoryStreams.h>
#include <QorCore/Time.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <limits>
#include <random>
#include <sstream>

namespace {

using namespace Qor::Core;
using Qor::Core::Testing::ErrorOf;
using Qor::Core::Testing::RaisedBy;

constexpr std::int64_t lowest = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t highest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t second = Elapse::ticksPerSecond;
constexpr std::int64_t day = 86'400 * second;
constexpr std::int64_t unixEpoch = 116'444'736'000'000'000;

std::vector<std::int64_t> SampleTicks() {
    std::vector<std::int64_t> samples = {lowest, highest};
    for (const std::int64_t near : {std::int64_t{0}, unixEpoch, -unixEpoch, lowest + day, highest - day})
        for (const std::int64_t step : {-day, -second, std::int64_t{-1}, std::int64_t{0}, std::int64_t{1}, second, day})
            samples.push_back(near + step);
    std::mt19937_64 random(1601);
    for (int i = 0; i < 20'000; ++i)
        samples.push_back(static_cast<std::int64_t>(random()) >> (i % 48));
    return samples;
}

// The calendar of the standard library.
std::string CalendarText(std::int64_t ticks) {
    using namespace std::chrono;
    const auto decimals = static_cast<int>((ticks % second + second) % second);
    const sys_seconds time(seconds(ticks / second - (ticks % second < 0 ? 1 : 0) - unixEpoch / second));
    const year_month_day date(floor<days>(time));
    const hh_mm_ss clock(time - floor<days>(time));
    const int year = static_cast<int>(date.year());
    char text[80];
    std::snprintf(text, sizeof text, "%0*d-%02u-%02uT%02d:%02d:%02d.%07dZ", year < 0 ? 5 : 4, year,
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                  static_cast<int>(clock.seconds().count()), decimals);
    return std::string(year > 9999 ? "+" : "") + text;
}

TEST(Time, TextsAreThoseOfTheCalendarAndReadBack) {
    for (const std::int64_t ticks : SampleTicks()) {
        const std::string text = Time(ticks).ToString();
        ASSERT_EQ(text, CalendarText(ticks)) << ticks;
        ASSERT_EQ(Time::FromString(text).GetTicks(), ticks) << text;
        ASSERT_EQ(Elapse::FromString(Elapse(ticks).ToString()).GetTicks(), ticks);
    }
    const std::int64_t now = Time::Now().GetTicks();
    EXPECT_NEAR(static_cast<double>(now / second - unixEpoch / second), static_cast<double>(std::time(nullptr)), 2);
}

TEST(Time, TextsHaveTheirTicks) {
    const std::pair<const char*, std::int64_t> times[] = {
        {"1969-12-31T23:59:59.9999999Z", unixEpoch - 1},
        {"2038-01-19T03:14:08Z", unixEpoch + 2'147'483'648 * second},
        {"2024-02-29T12:00:00.000012+00:00", unixEpoch + 1'709'208'000 * second + 120},
        {"2024-02-29T01:29:59.5-10:30", unixEpoch + 1'709'207'999 * second + second / 2},
        {"-0001-12-31T00:00:00Z", -584'755 * day},
        {"+10000-01-01T00:00:00Z", 3'067'671 * day},
        {"-27627-04-19T20:11:54.5224192-01:00", lowest},
        {"+30828-09-14T03:48:05.4775807+01:00", highest}};
    for (const auto& [text, ticks] : times)
        EXPECT_EQ(Time::FromString(text).GetTicks(), ticks) << text;
    const std::pair<const char*, std::int64_t> spans[] = {
        {"-1.5000000", -15'000'000}, {"0.0000001", 1}, {"-0.0100000", -100'000}, {"-922337203685.4775808", lowest}};
    for (const auto& [text, ticks] : spans)
        EXPECT_EQ(Elapse(ticks).ToString(), text);
    EXPECT_EQ(Elapse::FromString("-12"), Elapse(-12 * second));
    EXPECT_EQ(Elapse::FromString("0.25"), Elapse(second / 4));
}

TEST(Time, OtherTextsAreRefused) {
    std::istringstream times(
        "2024-02-29 2023-02-29T00:00:00Z 1900-02-29T00:00:00Z 2024-04-31T00:00:00Z 2024-00-01T00:00:00Z "
        "2024-13-01T00:00:00Z 2024-01-00T00:00:00Z 2024-01-32T00:00:00Z 2024-01-01T24:00:00Z 2024-01-01T00:60:00Z "
        "2024-01-01T00:00:60Z 2024-01-01T00:00:00.Z 2024-01-01T00:00:00.12345678Z 2024-01-01T00:00:00 "
        "2024-01-01t00:00:00Z 2024-01-01T00:00:00z 2024-01-01T00:00Z 2024-1-01T00:00:00Z 2024-01-001T00:00:00Z "
        "24-01-01T00:00:00Z +2024-01-01T00:00:00Z 10000-01-01T00:00:00Z -0000-01-01T00:00:00Z -00001-01-01T00:00:00Z "
        "2024-01-01T00:00:00+24:00 2024-01-01T00:00:00+00:60 2024-01-01T00:00:00+0100 2024-01-01T00:00:00+01 "
        "2024-01-01T00:00:00Z+01:00 2024-01-01T-1:00:00Z -27627-04-19T21:11:54.5224191Z +32768-01-01T00:00:00Z "
        "-27627-04-19T21:11:54.5224192+00:01 +30828-09-14T02:48:05.4775808Z +30828-09-14T02:48:05.4775807-00:01 "
        "-32768-01-01T00:00:00Z +65536-01-01T00:00:00Z +99999999999-01-01T00:00:00Z");
    std::istringstream spans("- .5 1. +1 1.00000001 1.00000000 1s 1e3 --1 01 0x1 1,5 nan 922337203685.4775808 "
                             "-922337203685.4775809 -922337203686 99999999999999999999");
    const std::string good = "2024-02-29T12:34:56.1234567Z";
    std::vector<std::string> texts = {"", good + '\0', good + ' '};
    for (std::size_t i = 0; i < good.size(); ++i)
        texts.push_back(std::string(good).replace(i, 1, " "));
    for (std::string text; times >> text;)
        texts.push_back(text);
    for (const std::string& text : texts) {
        const std::string error = ErrorOf([&] { static_cast<void>(Time::FromString(text)); });
        EXPECT_TRUE(error.starts_with("Error [Qor.Core.Time] \"" + text + '"')) << text << ": " << error;
    }
    std::string span;
    do
        EXPECT_THROW(static_cast<void>(Elapse::FromString(span)), Error) << span;
    while (spans >> span);
}

TEST(Time, ArithmeticIsExactOrRefused) {
    const std::vector<std::int64_t> samples = SampleTicks();
    const auto check = [](bool overflows, std::int64_t expected, auto operation) {
        if (overflows)
            EXPECT_THROW(static_cast<void>(operation()), OutOfRangeError);
        else
            EXPECT_EQ(operation().GetTicks(), expected);
    };
    for (std::size_t i = 0; i < 60 * 60; ++i) {
        const std::int64_t a = samples[i / 60];
        const std::int64_t b = samples[i % 60];
        std::int64_t result = 0;
        const bool isTooMuch = __builtin_add_overflow(a, b, &result);
        check(isTooMuch, result, [&] { return Elapse(a) + Time(b); });
        check(isTooMuch, result, [&] { return Elapse(a) + Elapse(b); });
        const bool isTooLittle = __builtin_sub_overflow(a, b, &result);
        check(isTooLittle, result, [&] { return Time(a) - Elapse(b); });
        check(isTooLittle, result, [&] { return Time(a) - Time(b); });
        check(isTooLittle, result, [&] { return Elapse(a) - Elapse(b); });
    }
    EXPECT_THROW(static_cast<void>(-Elapse(lowest)), OutOfRangeError);

    // The last four are next to halves; times 1e7, rounded, they are halves.
    const std::pair<double, std::int64_t> rows[] = {
        {0x1p-8, 39'063}, {-0x1p-8, -39'063}, {-9e11, -900'000'000'000 * second}, {1.5e-7, 1}, {2.5e-7, 2},
        {4.5e-7, 4},      {5.5e-7, 6}};
    for (const auto& [seconds, ticks] : rows)
        EXPECT_EQ(Elapse::FromSeconds(seconds).GetTicks(), ticks) << seconds;
    for (const std::int64_t ticks : samples) // 2^52: beyond that, a double has less than the ticks
        EXPECT_EQ(Elapse::FromSeconds(Elapse(ticks >> 11).GetSeconds()).GetTicks(), ticks >> 11);
    for (const double seconds : {922337203685.5, -922337203686.0, 1e300, -HUGE_VAL, std::nan("")})
        EXPECT_THROW(static_cast<void>(Elapse::FromSeconds(seconds)), OutOfRangeError) << seconds;
}

template <class T>
void CheckStoredForm() {
    MemoryOutputStream memory;
    DataOutputStream(memory).Write(T(unixEpoch));
    std::string bytes(reinterpret_cast<const char*>(memory.GetBytes().data()), memory.GetSize());
    EXPECT_EQ(bytes, std::string("\x01\x00\x80\x3E\xD5\xDE\xB1\x9D\x01", T::GetSerializedSize()));
    T read(-7);
    const auto readFrom = [&](std::size_t size) {
        MemoryInputStream stream(bytes.data(), size);
        return DataInputStream(stream).Read(read);
    };
    EXPECT_FALSE(readFrom(8));
    bytes[0] = 2;
    EXPECT_EQ(RaisedBy<IOError>([&] { static_cast<void>(readFrom(9)); }).GetCategory(), "Qor.Core.Time");
    EXPECT_EQ(read, T(-7));
    bytes[0] = 1;
    EXPECT_TRUE(readFrom(9) && read == T(unixEpoch));
}

TEST(Time, StoredFormIsAPlatformByteAndTheTicks) {
    CheckStoredForm<Time>();
    CheckStoredForm<Elapse>();
}

} // namespace
