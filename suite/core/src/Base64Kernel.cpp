#include "Base64Kernel.h"

#include <algorithm>

namespace Qor::Core {

namespace {

constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr std::array<std::uint8_t, 256> MakeValues() {
    std::array<std::uint8_t, 256> values{};
    values.fill(eBASE64_FOREIGN);
    for (std::uint8_t value = 0; value < 64; ++value)
        values[static_cast<unsigned char>(alphabet[value])] = value;
    for (const char blank : {' ', '\t', '\r', '\n'})
        values[static_cast<unsigned char>(blank)] = eBASE64_BLANK;
    return values;
}

char* EncodeGroup(const std::byte* bytes, char* text) {
    const unsigned bits = std::to_integer<unsigned>(bytes[0]) << 16 | std::to_integer<unsigned>(bytes[1]) << 8 |
                          std::to_integer<unsigned>(bytes[2]);
    for (const unsigned shift : {18u, 12u, 6u, 0u})
        *text++ = alphabet[bits >> shift & 63];
    return text;
}

void Encode(const std::byte* bytes, std::size_t count, std::size_t bytesPerLine, std::string_view separator,
            char* text) {
    for (; count != 0; --count) {
        text = std::copy(separator.begin(), separator.end(), text);
        for (const std::byte* const end = bytes + bytesPerLine; bytes != end; bytes += 3)
            text = EncodeGroup(bytes, text);
    }
}

/// Whether the four characters are a group.
bool DecodeGroup(const char* text, std::byte* bytes) {
    unsigned bits = 0;
    unsigned signs = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        const unsigned value = GetBase64Value(text[i]);
        bits = bits << 6 | (value & 63);
        signs |= value;
    }
    if (signs >= 64)
        return false;
    bytes[0] = static_cast<std::byte>(bits >> 16);
    bytes[1] = static_cast<std::byte>(bits >> 8);
    bytes[2] = static_cast<std::byte>(bits);
    return true;
}

Base64Progress Decode(std::string_view text, std::byte* bytes, std::size_t room) {
    Base64Progress done;
    for (;;) {
        if (text.size() - done.read >= 4 && room - done.made >= 3 &&
            DecodeGroup(text.data() + done.read, bytes + done.made)) {
            done.read += 4;
            done.made += 3;
        } else if (done.read < text.size() && GetBase64Value(text[done.read]) == eBASE64_BLANK) {
            ++done.read;
        } else {
            return done;
        }
    }
}

Base64Kernel ChooseKernel() {
    const std::vector<Base64Kernel> vectors = GetVectorBase64Kernels();
    return vectors.empty() ? portableBase64 : vectors.back();
}

} // namespace

const std::array<std::uint8_t, 256> base64Values = MakeValues();

const Base64Kernel portableBase64{&Encode, &Decode};

const Base64Kernel& GetBase64Kernel() {
    static const Base64Kernel kernel = ChooseKernel();
    return kernel;
}

} // namespace Qor::Core
