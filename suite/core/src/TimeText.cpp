#include "Ticks.h"

#include <QorCore/Alert.h>
#include <QorCore/Message.h>
#include <QorCore/Time.h>

#include <algorithm>
#include <charconv>
#include <chrono>

namespace Qor::Core {

namespace {

using std::chrono::days;
using std::chrono::sys_days;
using std::chrono::year_month_day;

constexpr std::int64_t secondsPerDay = 86'400;
constexpr std::size_t numDecimals = 7;
constexpr sys_days firstDay = std::chrono::January / 1 / 1601;

std::string Padded(std::uint64_t number, std::size_t width) {
    const std::string digits = std::to_string(number);
    return std::string(width - std::min(width, digits.size()), '0') + digits;
}

std::string YearText(int year) {
    const char* const sign = year < 0 ? "-" : year > 9999 ? "+" : "";
    return sign + Padded(static_cast<std::uint64_t>(std::abs(year)), 4);
}

/// Takes a text apart from its front. Each operation answers whether there was what it takes.
class TextReader {
public:
    explicit TextReader(std::string_view text) : m_rest(text) {}

    bool IsAtEnd() const { return m_rest.empty(); }
    bool Take(char character) {
        const bool isThere = m_rest.starts_with(character);
        m_rest.remove_prefix(isThere ? 1 : 0);
        return isThere;
    }
    std::string_view TakeDigits() {
        const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
        const auto end = std::find_if_not(m_rest.begin(), m_rest.end(), isDigit);
        const std::string_view digits = m_rest.substr(0, static_cast<std::size_t>(end - m_rest.begin()));
        m_rest.remove_prefix(digits.size());
        return digits;
    }
    /// A separator, and two digits of a number up to `most`.
    bool TakePart(char separator, unsigned most, unsigned& number) {
        if (!Take(separator))
            return false;
        const std::string_view digits = TakeDigits();
        return digits.size() == 2 && ToNumber(digits, number) && number <= most;
    }
    /// The decimals of a second; none are 0.
    bool TakeDecimals(std::int64_t& ticks) {
        ticks = 0;
        if (!Take('.'))
            return true;
        std::string digits(TakeDigits());
        if (digits.empty() || digits.size() > numDecimals)
            return false;
        digits.resize(numDecimals, '0');
        return ToNumber(digits, ticks);
    }

    /// False for no digits, and for more than the number holds.
    template <class T>
    static bool ToNumber(std::string_view digits, T& number) {
        return std::from_chars(digits.data(), digits.data() + digits.size(), number).ec == std::errc();
    }

private:
    std::string_view m_rest;
};

/// The year exactly as it is written, so that each has one text.
bool TakeYear(TextReader& reader, int& year) {
    const bool isNegative = reader.Take('-');
    const bool hasPlus = !isNegative && reader.Take('+');
    const std::string_view digits = reader.TakeDigits();
    if (!TextReader::ToNumber(digits, year) || year > static_cast<int>(std::chrono::year::max()))
        return false;
    year = isNegative ? -year : year;
    const std::string sign = isNegative ? "-" : hasPlus ? "+" : "";
    return YearText(year) == sign + std::string(digits);
}

/// Days since the first one.
bool TakeDate(TextReader& reader, std::int64_t& day) {
    int year = 0;
    unsigned month = 0;
    unsigned dayOfMonth = 0;
    if (!TakeYear(reader, year) || !reader.TakePart('-', 12, month) || !reader.TakePart('-', 31, dayOfMonth))
        return false;
    const year_month_day date = std::chrono::year(year) / static_cast<int>(month) / static_cast<int>(dayOfMonth);
    if (!date.ok())
        return false;
    day = (sys_days(date) - firstDay).count();
    return true;
}

/// Seconds that the local time is ahead.
bool TakeZone(TextReader& reader, std::int64_t& offset) {
    offset = 0;
    if (reader.Take('Z'))
        return true;
    const bool isAhead = reader.Take('+');
    if (!isAhead && !reader.Take('-'))
        return false;
    unsigned hours = 0;
    unsigned minutes = 0;
    const std::string_view digits = reader.TakeDigits();
    if (digits.size() != 2 || !TextReader::ToNumber(digits, hours) || hours > 23 || !reader.TakePart(':', 59, minutes))
        return false;
    offset = std::int64_t{60} * (60 * hours + minutes) * (isAhead ? 1 : -1);
    return true;
}

std::optional<std::int64_t> TimeTicks(std::string_view text) {
    TextReader reader(text);
    std::int64_t day = 0;
    unsigned hour = 0;
    unsigned minute = 0;
    unsigned second = 0;
    std::int64_t ticks = 0;
    std::int64_t offset = 0;
    if (!TakeDate(reader, day) || !reader.TakePart('T', 23, hour) || !reader.TakePart(':', 59, minute) ||
        !reader.TakePart(':', 59, second) || !reader.TakeDecimals(ticks) || !TakeZone(reader, offset) ||
        !reader.IsAtEnd())
        return std::nullopt;
    const std::int64_t seconds = day * secondsPerDay + 60 * (60 * hour + minute) + second - offset;
    return seconds < 0 ? TicksFrom(seconds + 1, ticks - Elapse::ticksPerSecond) : TicksFrom(seconds, ticks);
}

std::optional<std::int64_t> ElapseTicks(std::string_view text) {
    TextReader reader(text);
    const int sign = reader.Take('-') ? -1 : 1;
    const std::string_view digits = reader.TakeDigits();
    std::int64_t seconds = 0;
    std::int64_t ticks = 0;
    const bool hasNeedlessZero = digits.size() > 1 && digits.starts_with('0');
    if (hasNeedlessZero || !TextReader::ToNumber(digits, seconds) || !reader.TakeDecimals(ticks) || !reader.IsAtEnd())
        return std::nullopt;
    return TicksFrom(sign * seconds, sign * ticks);
}

std::int64_t TicksOf(std::optional<std::int64_t> ticks, const char* complaint, std::string_view text) {
    if (!ticks)
        Error::RaiseError(Error(FormatText(complaint, {text})), QOR_CODE_CONTEXT("Time"), "Qor.Core.Time");
    return *ticks;
}

} // namespace

std::string Elapse::ToString() const {
    const auto bits = static_cast<std::uint64_t>(m_ticks);
    const std::uint64_t magnitude = m_ticks < 0 ? 0 - bits : bits;
    return (m_ticks < 0 ? "-" : "") + std::to_string(magnitude / ticksPerSecond) + '.' +
           Padded(magnitude % ticksPerSecond, numDecimals);
}

Elapse Elapse::FromString(std::string_view text) {
    return Elapse(TicksOf(ElapseTicks(text),
                          "\"%1%\" is no span of time: seconds as \"-1.5000000\" were expected, with at most seven "
                          "decimals and no more than 64 bits count in ticks of 100 ns",
                          text));
}

std::string Time::ToString() const {
    constexpr std::int64_t ticksPerDay = secondsPerDay * Elapse::ticksPerSecond;
    std::int64_t day = m_ticks / ticksPerDay;
    std::int64_t ticks = m_ticks % ticksPerDay;
    if (ticks < 0) {
        --day;
        ticks += ticksPerDay;
    }
    const year_month_day date(firstDay + days(static_cast<int>(day)));
    const auto inDay = static_cast<std::uint64_t>(ticks);
    const std::uint64_t second = inDay / Elapse::ticksPerSecond;
    return YearText(static_cast<int>(date.year())) + '-' + Padded(static_cast<unsigned>(date.month()), 2) + '-' +
           Padded(static_cast<unsigned>(date.day()), 2) + 'T' + Padded(second / 3600, 2) + ':' +
           Padded(second / 60 % 60, 2) + ':' + Padded(second % 60, 2) + '.' +
           Padded(inDay % Elapse::ticksPerSecond, numDecimals) + 'Z';
}

Time Time::FromString(std::string_view text) {
    return Time(TicksOf(TimeTicks(text),
                        "\"%1%\" is no time: one as \"2024-01-31T12:34:56.1234567Z\" was expected, with at most seven "
                        "decimals, \"Z\" or an offset as \"+01:00\", and not beyond what 64 bits count in ticks of "
                        "100 ns since 1601",
                        text));
}

} // namespace Qor::Core
