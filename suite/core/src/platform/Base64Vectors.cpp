// Base64 by byte shuffles, 12 bytes or 16 characters to each 128 bits (W. Mula, D. Lemire, "Faster Base64 Encoding and
// Decoding Using AVX2 Instructions", 2018).
#include "../Base64Kernel.h"

#if defined(__x86_64__) && defined(__GNUC__)

#include <algorithm>
#include <cstring>
#include <immintrin.h>

// Wherever the compiler aligns what it spills to the stack. It does not on Windows.
#ifndef _WIN32
#define QOR_BASE64_AVX2
#endif

#define QOR_INLINE_FOR(instructions) __attribute__((target(instructions), always_inline)) inline

namespace Qor::Core {

namespace {

using Load = const __m128i*;

bool SkipBlanks(std::string_view text, std::size_t& position) {
    const std::size_t begin = position;
    while (position < text.size() && GetBase64Value(text[position]) == eBASE64_BLANK)
        ++position;
    return position != begin;
}

/// Behind `valid` characters that were decoded stands a foreign one: whether it can be gone on behind that.
bool PassForeign(std::string_view text, std::size_t valid, Base64Progress& done) {
    done.read += valid / 4 * 4;
    done.made += valid / 4 * 3;
    return valid % 4 == 0 && SkipBlanks(text, done.read);
}

void FinishDecoding(std::string_view text, std::byte* bytes, std::size_t room, Base64Progress& done) {
    const Base64Progress rest = portableBase64.decode(text.substr(done.read), bytes + done.made, room - done.made);
    done.read += rest.read;
    done.made += rest.made;
}

namespace Ssse3 {

#define QOR_INLINE QOR_INLINE_FOR("ssse3")

/// 12 bytes, each 3 of them in a place of 4 as 1 0 2 1, to characters.
QOR_INLINE __m128i EncodeSpread(__m128i bytes) {
    const __m128i first = _mm_mulhi_epu16(_mm_and_si128(bytes, _mm_set1_epi32(0x0fc0fc00)), _mm_set1_epi32(0x04000040));
    const __m128i second =
        _mm_mullo_epi16(_mm_and_si128(bytes, _mm_set1_epi32(0x003f03f0)), _mm_set1_epi32(0x01000010));
    const __m128i values = _mm_or_si128(first, second);
    // By ranges: 13 for A-Z, 0 for a-z, 1 to 10 for the digits, 11 for '+', 12 for '/'.
    const __m128i range = _mm_or_si128(_mm_subs_epu8(values, _mm_set1_epi8(51)),
                                       _mm_and_si128(_mm_cmpgt_epi8(_mm_set1_epi8(26), values), _mm_set1_epi8(13)));
    const __m128i offsets = _mm_setr_epi8('a' - 26, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52,
                                          '0' - 52, '0' - 52, '0' - 52, '0' - 52, '+' - 62, '/' - 63, 'A', 0, 0);
    return _mm_add_epi8(values, _mm_shuffle_epi8(offsets, range));
}

QOR_INLINE void EncodeVector(const std::byte* load, __m128i spread, char* text) {
    const __m128i loaded = _mm_loadu_si128(reinterpret_cast<Load>(load));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(text), EncodeSpread(_mm_shuffle_epi8(loaded, spread)));
}

/// The first 12 bytes stand at the front of a load of 16, all others at its back: no byte beyond is touched. The last
/// 12 may come twice.
QOR_INLINE void EncodeLine(const std::byte* bytes, std::size_t size, char* text) {
    const __m128i front = _mm_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10);
    const __m128i back = _mm_add_epi8(front, _mm_set1_epi8(4));
    EncodeVector(bytes, front, text);
    std::size_t i = 12;
    for (; size - i > 12; i += 12)
        EncodeVector(bytes + i - 4, back, text + i / 3 * 4);
    EncodeVector(bytes + size - 16, back, text + (size - 12) / 3 * 4);
}

__attribute__((target("ssse3"))) void Encode(const std::byte* bytes, std::size_t count, std::size_t bytesPerLine,
                                             std::string_view separator, char* text) {
    if (bytesPerLine < 16)
        return portableBase64.encode(bytes, count, bytesPerLine, separator, text);
    for (; count != 0; --count, bytes += bytesPerLine, text += bytesPerLine / 3 * 4) {
        text = std::copy(separator.begin(), separator.end(), text);
        EncodeLine(bytes, bytesPerLine, text);
    }
}

/// A bit for each character that is none of the alphabet; `bytes` are 12 bytes and 4 of no meaning.
QOR_INLINE unsigned DecodeVector(__m128i text, __m128i& bytes) {
    const __m128i slash = _mm_set1_epi8(0x2f);
    const __m128i high = _mm_and_si128(_mm_srli_epi32(text, 4), slash);
    const __m128i low = _mm_and_si128(text, slash);
    const __m128i classesOfLow =
        _mm_setr_epi8(0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x13, 0x1a, 0x1b, 0x1b, 0x1b, 0x1a);
    const __m128i classesOfHigh =
        _mm_setr_epi8(0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10);
    const __m128i common = _mm_and_si128(_mm_shuffle_epi8(classesOfLow, low), _mm_shuffle_epi8(classesOfHigh, high));
    const __m128i offsets = _mm_setr_epi8(0, 16, 19, 4, -65, -65, -71, -71, 0, 0, 0, 0, 0, 0, 0, 0);
    const __m128i offset = _mm_shuffle_epi8(offsets, _mm_add_epi8(_mm_cmpeq_epi8(text, slash), high));
    const __m128i pairs = _mm_maddubs_epi16(_mm_add_epi8(text, offset), _mm_set1_epi32(0x01400140));
    const __m128i groups = _mm_madd_epi16(pairs, _mm_set1_epi32(0x00011000));
    bytes = _mm_shuffle_epi8(groups, _mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1));
    return static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpgt_epi8(common, _mm_setzero_si128())));
}

__attribute__((target("ssse3"))) Base64Progress Decode(std::string_view text, std::byte* bytes, std::size_t room) {
    Base64Progress done;
    while (text.size() - done.read >= 16 && room - done.made >= 16) {
        __m128i decoded;
        const unsigned foreign =
            DecodeVector(_mm_loadu_si128(reinterpret_cast<Load>(text.data() + done.read)), decoded);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes + done.made), decoded);
        if (foreign == 0) {
            done.read += 16;
            done.made += 12;
        } else if (!PassForeign(text, static_cast<std::size_t>(__builtin_ctz(foreign)), done)) {
            break;
        }
    }
    FinishDecoding(text, bytes, room, done);
    return done;
}

#undef QOR_INLINE

} // namespace Ssse3

#ifdef QOR_BASE64_AVX2
namespace Avx2 {

#define QOR_INLINE QOR_INLINE_FOR("avx2")

QOR_INLINE __m256i Twice(__m128i half) { return _mm256_broadcastsi128_si256(half); }

/// 24 bytes, the first 12 at the front of one load of 16, the others at the back of another: no byte beyond is touched.
QOR_INLINE __m256i LoadSpread(const std::byte* bytes) {
    const __m256i loaded =
        _mm256_inserti128_si256(_mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<Load>(bytes))),
                                _mm_loadu_si128(reinterpret_cast<Load>(bytes + 8)), 1);
    return _mm256_shuffle_epi8(loaded, _mm256_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10, 5, 4, 6, 5,
                                                        8, 7, 9, 8, 11, 10, 12, 11, 14, 13, 15, 14));
}

QOR_INLINE void EncodeVector(const std::byte* bytes, char* text) {
    const __m256i spread = LoadSpread(bytes);
    const __m256i first =
        _mm256_mulhi_epu16(_mm256_and_si256(spread, _mm256_set1_epi32(0x0fc0fc00)), _mm256_set1_epi32(0x04000040));
    const __m256i second =
        _mm256_mullo_epi16(_mm256_and_si256(spread, _mm256_set1_epi32(0x003f03f0)), _mm256_set1_epi32(0x01000010));
    const __m256i values = _mm256_or_si256(first, second);
    const __m256i range =
        _mm256_or_si256(_mm256_subs_epu8(values, _mm256_set1_epi8(51)),
                        _mm256_and_si256(_mm256_cmpgt_epi8(_mm256_set1_epi8(26), values), _mm256_set1_epi8(13)));
    const __m256i offsets = Twice(_mm_setr_epi8('a' - 26, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52,
                                                '0' - 52, '0' - 52, '0' - 52, '0' - 52, '+' - 62, '/' - 63, 'A', 0, 0));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(text), _mm256_add_epi8(values, _mm256_shuffle_epi8(offsets, range)));
}

/// The last 24 bytes may come twice: three steps for the 57 bytes of a common line.
QOR_INLINE void EncodeLine(const std::byte* bytes, std::size_t size, char* text) {
    std::size_t i = 0;
    for (; size - i > 24; i += 24)
        EncodeVector(bytes + i, text + i / 3 * 4);
    EncodeVector(bytes + size - 24, text + (size - 24) / 3 * 4);
}

__attribute__((target("avx2"))) void Encode(const std::byte* bytes, std::size_t count, std::size_t bytesPerLine,
                                            std::string_view separator, char* text) {
    std::array<char, 8> word{};
    if (bytesPerLine < 24 || separator.size() > word.size())
        return Ssse3::Encode(bytes, count, bytesPerLine, separator, text);
    std::copy(separator.begin(), separator.end(), word.begin());
    for (; count != 0; --count, bytes += bytesPerLine, text += bytesPerLine / 3 * 4) {
        std::memcpy(text, word.data(), word.size()); // too much; the line overwrites that
        text += separator.size();
        EncodeLine(bytes, bytesPerLine, text);
    }
}

QOR_INLINE unsigned DecodeVector(__m256i text, __m256i& bytes) {
    const __m256i slash = _mm256_set1_epi8(0x2f);
    const __m256i high = _mm256_and_si256(_mm256_srli_epi32(text, 4), slash);
    const __m256i low = _mm256_and_si256(text, slash);
    const __m256i classesOfLow = Twice(
        _mm_setr_epi8(0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x13, 0x1a, 0x1b, 0x1b, 0x1b, 0x1a));
    const __m256i classesOfHigh = Twice(
        _mm_setr_epi8(0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10));
    const __m256i common =
        _mm256_and_si256(_mm256_shuffle_epi8(classesOfLow, low), _mm256_shuffle_epi8(classesOfHigh, high));
    const __m256i offsets = Twice(_mm_setr_epi8(0, 16, 19, 4, -65, -65, -71, -71, 0, 0, 0, 0, 0, 0, 0, 0));
    const __m256i offset = _mm256_shuffle_epi8(offsets, _mm256_add_epi8(_mm256_cmpeq_epi8(text, slash), high));
    const __m256i pairs = _mm256_maddubs_epi16(_mm256_add_epi8(text, offset), _mm256_set1_epi32(0x01400140));
    const __m256i groups = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));
    const __m256i packed =
        _mm256_shuffle_epi8(groups, Twice(_mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1)));
    bytes = _mm256_permutevar8x32_epi32(packed, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7));
    return static_cast<unsigned>(_mm256_movemask_epi8(_mm256_cmpgt_epi8(common, _mm256_setzero_si256())));
}

QOR_INLINE unsigned DecodeAt(const char* text, std::byte* bytes) {
    __m256i decoded;
    const unsigned foreign = DecodeVector(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(text)), decoded);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(bytes), decoded);
    return foreign;
}

/// The last 32 characters may come twice.
QOR_INLINE bool DecodeLine(const char* text, std::size_t size, std::byte* bytes) {
    unsigned foreign = 0;
    std::size_t i = 0;
    for (; size - i > 32; i += 32)
        foreign |= DecodeAt(text + i, bytes + i / 4 * 3);
    foreign |= DecodeAt(text + size - 32, bytes + (size - 32) / 4 * 3);
    return foreign == 0;
}

bool AreBlanks(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return GetBase64Value(c) == eBASE64_BLANK; });
}

/// As long as lines are like the one before. The processor need not know where a line ended to begin the next.
QOR_INLINE void DecodeLines(std::string_view text, std::byte* bytes, std::size_t room, std::size_t length,
                            std::size_t blanks, Base64Progress& done) {
    const std::size_t made = length / 4 * 3;
    while (text.size() - done.read >= length + blanks && room - done.made >= made + 8 &&
           DecodeLine(text.data() + done.read, length, bytes + done.made) &&
           AreBlanks(text.substr(done.read + length, blanks))) {
        done.read += length + blanks;
        done.made += made;
    }
}

__attribute__((target("avx2"))) Base64Progress Decode(std::string_view text, std::byte* bytes, std::size_t room) {
    Base64Progress done;
    std::size_t lineBegin = 0;
    while (text.size() - done.read >= 32 && room - done.made >= 32) {
        const unsigned foreign = DecodeAt(text.data() + done.read, bytes + done.made);
        if (foreign == 0) {
            done.read += 32;
            done.made += 24;
            continue;
        }
        const auto valid = static_cast<std::size_t>(__builtin_ctz(foreign));
        const std::size_t length = done.read + valid - lineBegin;
        if (!PassForeign(text, valid, done))
            break;
        if (length >= 32)
            DecodeLines(text, bytes, room, length, done.read - lineBegin - length, done);
        lineBegin = done.read;
    }
    FinishDecoding(text, bytes, room, done);
    return done;
}

#undef QOR_INLINE

} // namespace Avx2
#endif

} // namespace

std::vector<Base64Kernel> GetVectorBase64Kernels() {
    std::vector<Base64Kernel> kernels;
    if (__builtin_cpu_supports("ssse3"))
        kernels.push_back({&Ssse3::Encode, &Ssse3::Decode});
#ifdef QOR_BASE64_AVX2
    if (__builtin_cpu_supports("avx2"))
        kernels.push_back({&Avx2::Encode, &Avx2::Decode});
#endif
    return kernels;
}

} // namespace Qor::Core

#else

namespace Qor::Core {

std::vector<Base64Kernel> GetVectorBase64Kernels() { return {}; }

} // namespace Qor::Core

#endif
