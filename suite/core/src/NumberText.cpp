#include <QorCore/NumberText.h>

#include <bit>
#include <charconv>
#include <cmath>

namespace Qor::Core {

namespace {

template <class T>
using BitsOf = std::conditional_t<sizeof(T) == 4, std::uint32_t, std::uint64_t>;

template <class T>
constexpr BitsOf<T> signBit = BitsOf<T>{1} << (8 * sizeof(T) - 1);
// An infinity with the highest bit of the fraction set: what processors make.
template <class T>
constexpr BitsOf<T> quietNaN =
    std::bit_cast<BitsOf<T>>(std::numeric_limits<T>::infinity()) | BitsOf<T>{1} << (std::numeric_limits<T>::digits - 2);

template <class T>
std::string Text(T number) {
    char digits[64];
    return {digits, std::to_chars(digits, digits + sizeof digits, number).ptr};
}

template <class T>
std::string NaNText(T number) {
    const auto bits = std::bit_cast<BitsOf<T>>(number);
    if ((bits & ~signBit<T>) == quietNaN<T>)
        return bits == quietNaN<T> ? "nan" : "-nan";
    std::string text = "nan(";
    for (int shift = 8 * static_cast<int>(sizeof(T)) - 4; shift >= 0; shift -= 4)
        text += "0123456789ABCDEF"[bits >> shift & 0xF];
    return text + ')';
}

template <class T>
std::string RealText(T number) {
    return std::isnan(number) ? NaNText(number) : Text(number);
}

template <class T, class... Format>
bool Parse(std::string_view text, T& number, Format... format) {
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number, format...);
    return result.ec == std::errc() && result.ptr == end;
}

/// The bits of a text that is known to be some NaN; its sign is one of them.
template <class T>
bool ParseNaN(std::string_view text, T& number) {
    const std::size_t open = text.find('(');
    BitsOf<T> bits = quietNaN<T> | (text.starts_with('-') ? signBit<T> : 0);
    if (open != text.npos) {
        const std::string_view digits = text.substr(open + 1, text.size() - open - 2);
        if (text.starts_with('-') || digits.size() != 2 * sizeof(T) || !Parse(digits, bits, 16))
            return false;
    }
    number = std::bit_cast<T>(bits);
    return std::isnan(number);
}

template <class T>
bool ParseReal(std::string_view text, T& number) {
    return Parse(text, number) && (!std::isnan(number) || ParseNaN(text, number));
}

} // namespace

std::string_view TrimBlanks(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    const std::size_t begin = text.find_first_not_of(blanks);
    return begin == text.npos ? std::string_view() : text.substr(begin, text.find_last_not_of(blanks) + 1 - begin);
}

namespace Details {

std::string WideNumberText(std::int64_t number) { return Text(number); }
std::string WideNumberText(std::uint64_t number) { return Text(number); }
std::string WideNumberText(float number) { return RealText(number); }
std::string WideNumberText(double number) { return RealText(number); }

bool ParseWideNumber(std::string_view text, std::int64_t& number) { return Parse(text, number); }
bool ParseWideNumber(std::string_view text, std::uint64_t& number) { return Parse(text, number); }
bool ParseWideNumber(std::string_view text, float& number) { return ParseReal(text, number); }
bool ParseWideNumber(std::string_view text, double& number) { return ParseReal(text, number); }

} // namespace Details

} // namespace Qor::Core
