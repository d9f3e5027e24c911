#pragma once

#include <compare>
#include <cstdint>
#include <type_traits>

namespace Qor::Tivor {

/// Stands for a `long` of four bytes where the platform's own has eight: a plain integer in all but the name, so that
/// it can have a class, a type code and containers of its own.
template <class Integer>
struct Long32Value {
    Long32Value() = default;
    constexpr Long32Value(Integer number) : value(number) {}
    constexpr operator Integer() const { return value; }

    Integer value;
};

/// The four-byte `long` and `unsigned long` that files carry. C++'s `long` itself where it has four bytes (64-bit
/// Windows); elsewhere a type of its own, because there `long` is `std::int64_t`.
using Long32 = std::conditional_t<sizeof(long) == 4, long, Long32Value<std::int32_t>>;
using ULong32 = std::conditional_t<sizeof(long) == 4, unsigned long, Long32Value<std::uint32_t>>;

} // namespace Qor::Tivor
