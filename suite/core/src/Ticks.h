#pragma once

#include <QorCore/Time.h>

#include <limits>
#include <optional>

namespace Qor::Core {

/// The sum, or nothing where it does not fit.
constexpr std::optional<std::int64_t> AddTicks(std::int64_t left, std::int64_t right) {
    using Limits = std::numeric_limits<std::int64_t>;
    if (right > 0 ? left > Limits::max() - right : left < Limits::min() - right)
        return std::nullopt;
    return left + right;
}

/// The ticks of seconds and ticks of the same sign, at most a second of these; nothing where they do not fit.
constexpr std::optional<std::int64_t> TicksFrom(std::int64_t seconds, std::int64_t ticks) {
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max() / Elapse::ticksPerSecond;
    if (seconds > most || seconds < -most)
        return std::nullopt;
    return AddTicks(seconds * Elapse::ticksPerSecond, ticks);
}

} // namespace Qor::Core
