#include "SampleKernels.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

#if defined(__x86_64__) && defined(__GNUC__)
#define TIVOR_X86
#include <immintrin.h>
#endif

namespace Qor::Tivor::SampleKernels {

namespace {

constexpr std::size_t cacheLine = 64;
constexpr std::size_t vectorBytes = 16;

template <class T>
inline constexpr std::size_t width = vectorBytes / sizeof(T);
/// Elements along the lines of a block, which are lines of the cache.
template <class T>
inline constexpr std::size_t blockLength = cacheLine / sizeof(T);
/// Of wide elements, more lines: they become longer pieces of the target.
template <class T>
inline constexpr std::size_t blockLines = std::max<std::size_t>(16, blockLength<T>);

template <class T>
struct VectorOf {
    typedef T Type __attribute__((vector_size(vectorBytes)));
};
template <class T>
using Vector = typename VectorOf<T>::Type;

// What is larger than the caches is written past them, where it would only displace what is still to be read. And
// sources are read upwards: what is read ahead in any other order ends with each page.
bool IsLarge(std::size_t bytes) { return bytes >= std::size_t{4} << 20; }
/// How far an address lies behind one that is aligned.
std::size_t Misalignment(const void* address, std::size_t alignment) {
    return reinterpret_cast<std::uintptr_t>(address) % alignment;
}
/// Lines that are shorter are not: their ends, which are written otherwise, would count.
constexpr std::size_t shortestLinePast = 4 * cacheLine;

// --- Transposition

/// The first or the second halves of two vectors, their elements in turn.
template <class T, bool second, std::size_t... i>
Vector<T> Interleaved(Vector<T> one, Vector<T> other, std::index_sequence<i...>) {
    return __builtin_shufflevector(one, other, (i / 2 + (second ? width<T> / 2 : 0) + i % 2 * width<T>)...);
}

/// Transposes a tile of as many vectors as each has elements: each round doubles how many neighbours came together.
template <class T>
void TransposeTile(Vector<T>* tile) {
    constexpr auto indices = std::make_index_sequence<width<T>>();
    for (std::size_t round = 1; round < width<T>; round *= 2) {
        Vector<T> next[width<T>];
        for (std::size_t i = 0; i < width<T> / 2; ++i) {
            next[2 * i] = Interleaved<T, false>(tile[i], tile[i + width<T> / 2], indices);
            next[2 * i + 1] = Interleaved<T, true>(tile[i], tile[i + width<T> / 2], indices);
        }
        std::copy(next, next + width<T>, tile);
    }
}

template <class T>
struct Transposition {
    const T* Line(std::size_t line) const { return source + (reverseLines ? lines - 1 - line : line) * length; }
    T* TargetLine(std::size_t line) const { return target + (reverseElements ? length - 1 - line : line) * lines; }

    const T* source;
    T* target;
    std::size_t lines;
    std::size_t length;
    bool reverseLines;
    bool reverseElements;
};

template <class T>
void TransposePlainly(const Transposition<T>& work, std::size_t firstLine, std::size_t endLine, std::size_t first,
                      std::size_t end) {
    for (std::size_t line = firstLine; line < endLine; ++line)
        for (std::size_t i = first; i < end; ++i)
            work.TargetLine(i)[line] = work.Line(line)[i];
}

/// Puts a block of the source transposed to where lines are `stride` elements apart.
template <class T>
void TransposeBlock(const Transposition<T>& work, std::size_t line, std::size_t element, T* target,
                    std::size_t stride) {
    for (std::size_t r = 0; r < blockLines<T>; r += width<T>)
        for (std::size_t c = 0; c < blockLength<T>; c += width<T>) {
            Vector<T> tile[width<T>];
            for (std::size_t i = 0; i < width<T>; ++i)
                std::memcpy(&tile[i], work.Line(line + r + i) + element + c, vectorBytes);
            TransposeTile<T>(tile);
            for (std::size_t i = 0; i < width<T>; ++i)
                std::memcpy(target + (c + i) * stride + r, &tile[i], vectorBytes);
        }
}

// The lines of a block are more than what is read ahead by itself.
template <class T>
void FetchBlock(const Transposition<T>& work, std::size_t line, std::size_t element) {
    for (std::size_t i = 0; i < blockLines<T>; ++i)
        __builtin_prefetch(work.Line(line + i) + element);
}

template <bool past>
void WriteCacheLine(void* target, const void* line) {
#ifdef TIVOR_X86
    if constexpr (past) {
        for (std::size_t i = 0; i < cacheLine / vectorBytes; ++i)
            _mm_stream_si128(static_cast<__m128i*>(target) + i, _mm_load_si128(static_cast<const __m128i*>(line) + i));
        return;
    }
#endif
    std::memcpy(target, line, cacheLine);
}

template <class T, bool past>
void TransposeBlocks(const Transposition<T>& work, std::size_t lines, std::size_t length) {
    alignas(cacheLine) T block[blockLength<T>][blockLines<T>];
    for (std::size_t line = 0; line < lines; line += blockLines<T>)
        for (std::size_t i = 0; i < length; i += blockLength<T>) {
            if constexpr (past)
                FetchBlock(work, line, std::min(i + 2 * blockLength<T>, length - blockLength<T>));
            TransposeBlock(work, line, i, block[0], blockLines<T>);
            for (std::size_t c = 0; c < blockLength<T>; ++c)
                for (std::size_t r = 0; r < blockLines<T>; r += blockLength<T>)
                    WriteCacheLine<past>(work.TargetLine(i + c) + line + r, &block[c][r]);
        }
}

// --- Lines

#ifdef TIVOR_X86

/// The bytes of sixteen, elements of so many bytes in opposite order.
template <class T>
constexpr std::array<std::int8_t, vectorBytes> MakeOrder() {
    std::array<std::int8_t, vectorBytes> order{};
    for (std::size_t i = 0; i < vectorBytes; ++i)
        order[i] = static_cast<std::int8_t>((width<T> - 1 - i / sizeof(T)) * sizeof(T) + i % sizeof(T));
    return order;
}
template <class T>
__m128i GetOrder() {
    static constexpr auto order = MakeOrder<T>();
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(order.data()));
}

/// Takes the elements from `i` to `end` as far as they fill vectors, and returns where they no longer do.
template <class T>
__attribute__((target("ssse3"))) std::size_t ReverseBySsse3(const T* source, T* target, std::size_t count,
                                                            std::size_t i, std::size_t end, bool past) {
    const __m128i order = GetOrder<T>();
    for (; i + width<T> <= end; i += width<T>) {
        const __m128i vector = _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(source + i)), order);
        auto* const place = reinterpret_cast<__m128i*>(target + count - i - width<T>);
        past ? _mm_stream_si128(place, vector) : _mm_storeu_si128(place, vector);
    }
    return i;
}

// Wider vectors would only be faster within the first cache, and some systems misalign them on the stack.
template <class T>
std::size_t ReverseVectors(const T* source, T* target, std::size_t count, std::size_t i, std::size_t end, bool past) {
    static const bool hasSsse3 = __builtin_cpu_supports("ssse3");
    return hasSsse3 ? ReverseBySsse3(source, target, count, i, end, past) : i;
}

/// Fetches the same places of the line that comes next.
void CopyPast(const void* source, const void* next, void* target, std::size_t bytes) {
    const auto* const from = static_cast<const char*>(source);
    auto* const to = static_cast<char*>(target);
    std::size_t i = (cacheLine - Misalignment(target, cacheLine)) % cacheLine;
    std::memcpy(to, from, i);
    for (; i + cacheLine <= bytes; i += cacheLine) {
        __builtin_prefetch(static_cast<const char*>(next) + i);
        for (std::size_t j = i; j < i + cacheLine; j += vectorBytes)
            _mm_stream_si128(reinterpret_cast<__m128i*>(to + j),
                             _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + j)));
    }
    std::memcpy(to + i, from + i, bytes - i);
}

void EndWritingPast() { _mm_sfence(); }

#else

template <class T>
std::size_t ReverseVectors(const T*, T*, std::size_t, std::size_t i, std::size_t, bool) {
    return i;
}
void CopyPast(const void* source, const void*, void* target, std::size_t bytes) { std::memcpy(target, source, bytes); }
void EndWritingPast() {}

#endif

/// For targets whose lines begin anywhere in lines of the cache: pieces of them are gathered, and then copied.
template <class T>
void TransposeStrips(const Transposition<T>& work, std::size_t lines, std::size_t length) {
    constexpr std::size_t stripLines = 8 * blockLines<T>;
    constexpr std::size_t stripLength = 2 * blockLength<T>;
    std::vector<T> strip(stripLines * stripLength);
    for (std::size_t firstLine = 0; firstLine < lines; firstLine += stripLines)
        for (std::size_t first = 0; first < length; first += stripLength) {
            const std::size_t endLine = std::min(firstLine + stripLines, lines);
            const std::size_t end = std::min(first + stripLength, length);
            for (std::size_t line = firstLine; line < endLine; line += blockLines<T>)
                for (std::size_t i = first; i < end; i += blockLength<T>) {
                    FetchBlock(work, line, std::min(i + stripLength, length - blockLength<T>));
                    TransposeBlock(work, line, i, &strip[(i - first) * stripLines + line - firstLine], stripLines);
                }
            for (std::size_t i = first; i < end; ++i) {
                const T* const piece = &strip[(i - first) * stripLines];
                CopyPast(piece, piece, work.TargetLine(i) + firstLine, (endLine - firstLine) * sizeof(T));
            }
        }
}

template <class T>
void ReverseLine(const T* source, T* target, std::size_t count, bool past) {
    const auto reverse = [&](std::size_t i, std::size_t end, bool isPast) {
        for (i = ReverseVectors(source, target, count, i, end, isPast); i < end; ++i)
            target[count - 1 - i] = source[i];
    };
    // Whole lines of the cache are written past it.
    const std::size_t first = past ? Misalignment(target + count, cacheLine) / sizeof(T) : count;
    const std::size_t last =
        past ? count - (cacheLine - Misalignment(target, cacheLine)) % cacheLine / sizeof(T) : count;
    reverse(0, first, false);
    reverse(first, last, true);
    reverse(last, count, false);
}

template <class T>
void CopyEachLine(const T* source, std::size_t stride, T* target, std::size_t lines, std::size_t length, bool reverse) {
    const std::size_t bytes = length * sizeof(T);
    const bool past = IsLarge(lines * bytes) && bytes >= shortestLinePast;
    for (std::size_t i = 0; i < lines; ++i) {
        const T* const from = source + i * stride;
        T* const to = target + (reverse ? lines - 1 - i : i) * length;
        past ? CopyPast(from, i + 1 < lines ? from + stride : from, to, bytes)
             : static_cast<void>(std::memcpy(to, from, bytes));
    }
    if (past)
        EndWritingPast();
}

} // namespace

template <class T>
void ReverseLines(const T* source, T* target, std::size_t lines, std::size_t length) {
    if (length != 0)
        CopyEachLine(source, length, target, lines, length, true);
}

template <class T>
void CopyLines(const T* source, std::size_t stride, T* target, std::size_t lines, std::size_t length) {
    if (length != 0)
        CopyEachLine(source, stride, target, lines, length, false);
}

template <class T>
void ReverseElements(const T* source, T* target, std::size_t lines, std::size_t length) {
    const std::size_t bytes = length * sizeof(T);
    const bool past = IsLarge(lines * bytes) && bytes >= shortestLinePast;
    for (std::size_t i = 0; i < lines; ++i)
        ReverseLine(source + i * length, target + i * length, length, past);
    if (past)
        EndWritingPast();
}

template <class T>
void Transpose(const T* source, T* target, std::size_t lines, std::size_t length, bool reverseLines,
               bool reverseElements) {
    const Transposition<T> work{source, target, lines, length, reverseLines, reverseElements};
    const std::size_t wholeLines = lines / blockLines<T> * blockLines<T>;
    const std::size_t wholeLength = length / blockLength<T> * blockLength<T>;
    if (!IsLarge(lines * length * sizeof(T)))
        TransposeBlocks<T, false>(work, wholeLines, wholeLength);
    else if (Misalignment(target, vectorBytes) == 0 && lines * sizeof(T) % vectorBytes == 0)
        TransposeBlocks<T, true>(work, wholeLines, wholeLength);
    else
        TransposeStrips(work, wholeLines, wholeLength);
    EndWritingPast();
    TransposePlainly(work, 0, wholeLines, wholeLength, length);
    TransposePlainly(work, wholeLines, lines, 0, length);
}

#define TIVOR_INSTANTIATE(T)                                                                                           \
    template void ReverseLines(const T*, T*, std::size_t, std::size_t);                                                \
    template void ReverseElements(const T*, T*, std::size_t, std::size_t);                                             \
    template void Transpose(const T*, T*, std::size_t, std::size_t, bool, bool);                                       \
    template void CopyLines(const T*, std::size_t, T*, std::size_t, std::size_t);
TIVOR_INSTANTIATE(std::uint8_t)
TIVOR_INSTANTIATE(std::uint16_t)
TIVOR_INSTANTIATE(std::uint32_t)
TIVOR_INSTANTIATE(std::uint64_t)

} // namespace Qor::Tivor::SampleKernels
