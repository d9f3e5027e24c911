#pragma once

#include <QorCore/Export.h>

#include <concepts>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

namespace Qor::Core {

/// The integers of 1 to 8 bytes, those of one byte as numbers and not as characters, and the floating-point numbers.
template <class T>
concept TextNumber =
    (std::integral<T> && !std::same_as<T, bool> && sizeof(T) <= 8) || std::same_as<T, float> || std::same_as<T, double>;

namespace Details {

/// The widest number of T's kind.
template <class T>
using WideNumber = std::conditional_t<std::is_floating_point_v<T>, T,
                                      std::conditional_t<std::is_signed_v<T>, std::int64_t, std::uint64_t>>;

QOR_CORE_API std::string WideNumberText(std::int64_t number);
QOR_CORE_API std::string WideNumberText(std::uint64_t number);
QOR_CORE_API std::string WideNumberText(float number);
QOR_CORE_API std::string WideNumberText(double number);

QOR_CORE_API bool ParseWideNumber(std::string_view text, std::int64_t& number);
QOR_CORE_API bool ParseWideNumber(std::string_view text, std::uint64_t& number);
QOR_CORE_API bool ParseWideNumber(std::string_view text, float& number);
QOR_CORE_API bool ParseWideNumber(std::string_view text, double& number);

} // namespace Details

/// The text without the blanks, tabs and line ends around it.
QOR_CORE_API std::string_view TrimBlanks(std::string_view text);

/// The shortest decimal text that `ParseNumber` turns into the same bits again, whatever the locale. What is no finite
/// number is "inf" or "-inf", the NaN of the processor "nan" or "-nan", and any other NaN "nan(7FF0000000000001)", with
/// all its bits.
template <TextNumber T>
std::string GetNumberText(T number) {
    return Details::WideNumberText(static_cast<Details::WideNumber<T>>(number));
}

/// The number that a text stands for, blanks around it aside: empty when it is none, when anything follows it, and when
/// it does not fit. Decimal, without a '+' in front; words in upper or lower case.
template <TextNumber T>
std::optional<T> ParseNumber(std::string_view text) {
    using Limits = std::numeric_limits<T>;
    Details::WideNumber<T> number;
    if (!Details::ParseWideNumber(TrimBlanks(text), number))
        return std::nullopt;
    if constexpr (std::is_integral_v<T>)
        if (number < Limits::min() || number > Limits::max())
            return std::nullopt;
    return static_cast<T>(number);
}

} // namespace Qor::Core
