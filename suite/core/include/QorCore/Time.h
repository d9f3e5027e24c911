#pragma once

#include <QorCore/DataStreams.h>

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>

namespace Qor::Core {

/// A signed span of time, counted in ticks of 100 ns; about 29,000 years either way.
///
/// Arithmetic raises `OutOfRangeError` where the result has no ticks.
class QOR_CORE_API Elapse {
public:
    static constexpr std::int64_t ticksPerSecond = 10'000'000;

    constexpr Elapse() = default;
    explicit constexpr Elapse(std::int64_t ticks) : m_ticks(ticks) {}
    /// The nearest tick, halves away from zero. Raises `OutOfRangeError` for what no number of ticks can be.
    static Elapse FromSeconds(double seconds);

    constexpr std::int64_t GetTicks() const { return m_ticks; }
    /// Rounded to a double: exact to the tick up to 14 years.
    double GetSeconds() const;

    /// Seconds with seven decimals and a sign only when negative, as "-1.5000000".
    std::string ToString() const;
    /// Reads what `ToString` writes, also with fewer decimals or none; raises `Error` with the text for anything else,
    /// and for what lies outside the range.
    static Elapse FromString(std::string_view text);

    Elapse operator-() const;
    Elapse& operator+=(Elapse other);
    Elapse& operator-=(Elapse other);
    friend Elapse operator+(Elapse left, Elapse right) { return left += right; }
    friend Elapse operator-(Elapse left, Elapse right) { return left -= right; }
    constexpr auto operator<=>(const Elapse&) const = default;

    static constexpr std::uint64_t GetSerializedSize() { return 9; }
    /// Stored form: `Time::GetPlatformTimeInfo()`, then the ticks as a 64-bit integer.
    void Write(DataOutputStream& stream) const;
    /// False when the stream ends too early, and then nothing changes. Raises `IOError` for another platform byte.
    [[nodiscard]] bool Read(DataInputStream& stream);

private:
    std::int64_t m_ticks = 0;
};

/// A point in time: ticks of 100 ns since 1601-01-01T00:00:00 UTC in the proleptic Gregorian calendar, without leap
/// seconds; the years -27627 to 30828. Independent of the machine's time zone and locale.
class QOR_CORE_API Time {
public:
    constexpr Time() = default;
    explicit constexpr Time(std::int64_t ticks) : m_ticks(ticks) {}
    static Time Now();

    /// What the byte in front of stored times says: a signed 64-bit count of 100 ns.
    static constexpr std::uint8_t GetPlatformTimeInfo() { return 0x01; }

    constexpr std::int64_t GetTicks() const { return m_ticks; }

    /// ISO 8601 in UTC, always with seven decimals, as "2024-01-31T12:34:56.1234567Z". Years outside 0 to 9999 have a
    /// sign and at least four digits.
    std::string ToString() const;
    /// Reads what `ToString` writes, also with fewer decimals or none, and with an offset "+hh:mm" or "-hh:mm" in place
    /// of "Z"; raises `Error` with the text for anything else, and for what lies outside the range.
    static Time FromString(std::string_view text);

    /// Raise `OutOfRangeError` where the result has no ticks.
    Time& operator+=(Elapse elapse);
    Time& operator-=(Elapse elapse);
    friend Time operator+(Time time, Elapse elapse) { return time += elapse; }
    friend Time operator+(Elapse elapse, Time time) { return time += elapse; }
    friend Time operator-(Time time, Elapse elapse) { return time -= elapse; }
    friend QOR_CORE_API Elapse operator-(Time left, Time right);
    constexpr auto operator<=>(const Time&) const = default;

    static constexpr std::uint64_t GetSerializedSize() { return 9; }
    /// Stored form: `GetPlatformTimeInfo()`, then the ticks as a 64-bit integer.
    void Write(DataOutputStream& stream) const;
    /// False when the stream ends too early, and then nothing changes. Raises `IOError` for another platform byte.
    [[nodiscard]] bool Read(DataInputStream& stream);

private:
    std::int64_t m_ticks = 0;
};

} // namespace Qor::Core
