#include "Ticks.h"

#include <QorCore/Alert.h>
#include <QorCore/Message.h>
#include <QorCore/Time.h>

#include <chrono>
#include <cmath>
#include <ratio>

namespace Qor::Core {

namespace {

constexpr std::int64_t unixEpoch = 116'444'736'000'000'000;

std::int64_t TicksOf(std::optional<std::int64_t> ticks, const char* what) {
    if (!ticks)
        Error::RaiseError(OutOfRangeError(FormatText("%1% has more ticks of 100 ns than 64 bits count", {what})),
                          QOR_CODE_CONTEXT("Time"), "Qor.Core.Time");
    return *ticks;
}

std::int64_t Sum(std::int64_t left, std::int64_t right) {
    return TicksOf(AddTicks(left, right), "A sum of times or spans of time");
}

std::int64_t Difference(std::int64_t left, std::int64_t right) {
    using Limits = std::numeric_limits<std::int64_t>;
    const bool fits = right < 0 ? left <= Limits::max() + right : left >= Limits::min() + right;
    return TicksOf(fits ? std::optional(left - right) : std::nullopt, "A difference of times or spans of time");
}

void WriteTicks(DataOutputStream& stream, std::int64_t ticks) {
    stream.Write(Time::GetPlatformTimeInfo());
    stream.Write(ticks);
}

bool ReadTicks(DataInputStream& stream, std::int64_t& ticks) {
    std::uint8_t platform = 0;
    if (!stream.Read(platform))
        return false;
    if (platform != Time::GetPlatformTimeInfo())
        Error::RaiseError(IOError(FormatText("A stored time should begin with the byte %1%, but begins with %2%",
                                             {Time::GetPlatformTimeInfo(), platform})),
                          QOR_CODE_CONTEXT("Time"), "Qor.Core.Time");
    std::int64_t read = 0;
    if (!stream.Read(read))
        return false;
    ticks = read;
    return true;
}

} // namespace

Elapse Elapse::FromSeconds(double seconds) {
    constexpr double most = 1e12; // more than there are ticks for, and within 64 bits
    if (!(std::abs(seconds) < most))
        return Elapse(TicksOf(std::nullopt, "A span of time that is no number of seconds, or too large,"));
    const double whole = std::trunc(seconds);
    const double part = (seconds - whole) * ticksPerSecond;
    double ticks = std::round(part);
    // A product that was itself rounded to a half is not halfway.
    const double lost = std::fma(seconds - whole, static_cast<double>(ticksPerSecond), -part);
    if (std::abs(ticks - part) == 0.5 && lost * part < 0)
        ticks = std::trunc(part);
    return Elapse(TicksOf(TicksFrom(static_cast<std::int64_t>(whole), static_cast<std::int64_t>(ticks)),
                          "A span of time that is too large"));
}

double Elapse::GetSeconds() const { return static_cast<double>(m_ticks) / ticksPerSecond; }

Elapse Elapse::operator-() const { return Elapse(Difference(0, m_ticks)); }

Elapse& Elapse::operator+=(Elapse other) {
    m_ticks = Sum(m_ticks, other.m_ticks);
    return *this;
}

Elapse& Elapse::operator-=(Elapse other) {
    m_ticks = Difference(m_ticks, other.m_ticks);
    return *this;
}

void Elapse::Write(DataOutputStream& stream) const { WriteTicks(stream, m_ticks); }

bool Elapse::Read(DataInputStream& stream) { return ReadTicks(stream, m_ticks); }

Time Time::Now() {
    using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, Elapse::ticksPerSecond>>;
    const auto now = std::chrono::floor<Ticks>(std::chrono::system_clock::now().time_since_epoch());
    return Time(unixEpoch + now.count());
}

Time& Time::operator+=(Elapse elapse) {
    m_ticks = Sum(m_ticks, elapse.GetTicks());
    return *this;
}

Time& Time::operator-=(Elapse elapse) {
    m_ticks = Difference(m_ticks, elapse.GetTicks());
    return *this;
}

Elapse operator-(Time left, Time right) { return Elapse(Difference(left.m_ticks, right.m_ticks)); }

void Time::Write(DataOutputStream& stream) const { WriteTicks(stream, m_ticks); }

bool Time::Read(DataInputStream& stream) { return ReadTicks(stream, m_ticks); }

} // namespace Qor::Core
