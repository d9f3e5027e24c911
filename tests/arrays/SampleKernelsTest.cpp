// The kernels alone: targets that begin anywhere, and lines that lie apart.
#include "../../src/arrays/SampleKernels.cpp"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace Qor::Tivor::SampleKernels {

namespace {

struct Shape {
    std::size_t lines, length;
    std::size_t offset; ///< of the target, in elements
};

/// The last are as many bytes as are written past the caches: aligned, not aligned, and in lines too short for that.
template <class T>
const Shape shapes[] = {{0, 5, 0},
                        {5, 0, 0},
                        {1, 1, 1},
                        {3, 70, 1},
                        {64, 64, 0},
                        {65, 131, 3},
                        {2112 / sizeof(T), 2048, 0},
                        {2112 / sizeof(T), 2048, 1},
                        {2101 / sizeof(T), 2100, 0},
                        {40000 / sizeof(T), 107, 1}};

/// The rule tells which line and element of the source stands at a place of the target.
template <class T, class Kernel, class Rule>
void Check(const char* what, const Shape& shape, std::size_t stride, bool exchanges, Kernel kernel, Rule rule) {
    SCOPED_TRACE(testing::Message() << what << " of " << shape.lines << " x " << shape.length << " elements of "
                                    << sizeof(T) << " bytes");
    std::vector<T> source(shape.lines * stride);
    std::minstd_rand numbers(static_cast<unsigned>(shape.length));
    for (T& element : source)
        element = static_cast<T>(std::uint64_t{numbers()} * numbers());
    constexpr std::size_t guard = 64;
    const std::size_t count = shape.lines * shape.length;
    std::vector<T> target(count + shape.offset + guard, T{7});
    kernel(source.data(), target.data() + shape.offset);
    const std::size_t length = exchanges ? shape.lines : shape.length;
    std::vector<T> expected(target.size(), T{7});
    for (std::size_t i = 0; i < count; ++i) {
        const auto [line, element] = rule(i / length, i % length);
        expected[shape.offset + i] = source[line * stride + element];
    }
    EXPECT_TRUE(target == expected);
}

template <class T>
void CheckAll(const Shape& shape) {
    const auto check = [&](const char* what, bool exchanges, auto kernel, auto rule) {
        Check<T>(what, shape, shape.length, exchanges, kernel, rule);
    };
    check(
        "ReverseLines", false, [&](const T* from, T* to) { ReverseLines(from, to, shape.lines, shape.length); },
        [&](std::size_t line, std::size_t element) { return std::pair(shape.lines - 1 - line, element); });
    check(
        "ReverseElements", false, [&](const T* from, T* to) { ReverseElements(from, to, shape.lines, shape.length); },
        [&](std::size_t line, std::size_t element) { return std::pair(line, shape.length - 1 - element); });
    for (const auto& [reverseLines, reverseElements] : {std::pair(false, false), {true, false}, {false, true}})
        check(
            "Transpose", true,
            [&, lines = reverseLines, elements = reverseElements](const T* from, T* to) {
                Transpose(from, to, shape.lines, shape.length, lines, elements);
            },
            [&, lines = reverseLines, elements = reverseElements](std::size_t line, std::size_t element) {
                return std::pair(lines ? shape.lines - 1 - element : element,
                                 elements ? shape.length - 1 - line : line);
            });
    const std::size_t stride = shape.length + 5;
    Check<T>(
        "CopyLines", shape, stride, false,
        [&](const T* from, T* to) { CopyLines(from, stride, to, shape.lines, shape.length); },
        [](std::size_t line, std::size_t element) { return std::pair(line, element); });
}

template <class T>
class SampleKernels : public testing::Test {};
using Widths = testing::Types<std::uint8_t, std::uint16_t, std::uint32_t, std::uint64_t>;
TYPED_TEST_SUITE(SampleKernels, Widths);

} // namespace

TYPED_TEST(SampleKernels, MoveEachElementToItsPlace) {
    for (const Shape& shape : shapes<TypeParam>)
        CheckAll<TypeParam>(shape);
}

} // namespace Qor::Tivor::SampleKernels
