#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace Qor::Core {

struct Base64Progress {
    std::size_t read = 0; ///< characters
    std::size_t made = 0; ///< bytes
};

/// Base64 in whole groups: three bytes, four characters.
struct Base64Kernel {
    /// Makes `count` lines of `bytesPerLine` bytes each, a multiple of 3, and puts a separator in front of each.
    void (*encode)(const std::byte* bytes, std::size_t count, std::size_t bytesPerLine, std::string_view separator,
                   char* text);
    /// Passes over blanks and decodes groups, up to the first group that holds a foreign character (a blank, '='), is
    /// not complete, or has no room. What stands behind the bytes made, as far as `room` goes, has no meaning then.
    Base64Progress (*decode)(std::string_view text, std::byte* bytes, std::size_t room);
};

extern const Base64Kernel portableBase64;

/// The kernels that this processor can run by its vector instructions, the fastest last; maybe none.
std::vector<Base64Kernel> GetVectorBase64Kernels();

/// The fastest of all.
const Base64Kernel& GetBase64Kernel();

/// What a character means: a value below 64, or one of these.
enum EBase64Sign : std::uint8_t { eBASE64_BLANK = 64, eBASE64_FOREIGN = 128 };

extern const std::array<std::uint8_t, 256> base64Values;

inline std::uint8_t GetBase64Value(char character) { return base64Values[static_cast<unsigned char>(character)]; }

} // namespace Qor::Core
