#pragma once

#include "../common/Text.h"

#include <algorithm>
#include <tuple>

namespace Qor::Tivor::Measurements {

/// The element types, each at the place that its DataType tells.
using SdfTypes = std::tuple<unsigned char, unsigned short, unsigned int, float, char, short, int, double>;

inline constexpr const char* sdfVersionKey = "Version";
inline constexpr const char* sdfTrailerKey = "Trailer";
inline constexpr std::string_view sdfMissing = "BAD";
inline constexpr std::string_view sdfEnd = "*";

/// In no locale.
inline char ToSdfLower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
/// The same but for upper and lower case.
inline bool IsSameSdfWord(std::string_view left, std::string_view right) {
    return std::ranges::equal(left, right, [](char a, char b) { return ToSdfLower(a) == ToSdfLower(b); });
}

/// A line of the header.
struct SdfField {
    bool IsText() const { return isGood != nullptr; }

    const char* name;
    const char* expected;
    bool (*isGood)(std::string_view text); ///< of fields that are kept as text
    const char* usual;                     ///< what is written when there is no good text
};

inline bool IsSdfName(std::string_view) { return true; }
inline bool IsSdfDate(std::string_view text) {
    return text.size() == 12 && text.find_first_not_of("0123456789") == text.npos;
}
inline bool IsSdfNumber(std::string_view text) { return FindNumber<double>(text).has_value(); }
inline bool IsSdfZero(std::string_view text) { return FindNumber<int>(text) == 0; }

/// In the order in which they are written.
inline constexpr SdfField sdfFields[] = {
    {"ManufacID", "a name", IsSdfName, "Tivor"},
    {"CreateDate", "ddmmyyyyhhmm, 12 digits", IsSdfDate, "010119700000"},
    {"ModDate", "ddmmyyyyhhmm, 12 digits", IsSdfDate, "010119700000"},
    {"NumPoints", "a number of points", nullptr, nullptr},
    {"NumProfiles", "a number of profiles", nullptr, nullptr},
    {"Xscale", "a positive number", nullptr, nullptr},
    {"Yscale", "a positive number", nullptr, nullptr},
    {"Zscale", "a number other than 0", nullptr, nullptr},
    {"Zresolution", "a number", IsSdfNumber, "0"},
    {"Compression", "0", IsSdfZero, "0"},
    {"DataType", "a number from 0 to 7", nullptr, nullptr},
    {"CheckType", "0", IsSdfZero, "0"},
};

/// Whether an axis of so many points may have this spacing.
inline bool IsSdfSpacing(double spacing, std::uint64_t points) {
    return std::isfinite(spacing) && (spacing > 0 || (spacing == 0 && points == 1));
}
inline bool IsSdfScale(double scale) { return std::isfinite(scale) && scale != 0; }

} // namespace Qor::Tivor::Measurements
