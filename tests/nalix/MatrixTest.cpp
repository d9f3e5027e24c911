#include <Nalix/Matrix.h>
#include <Nalix/Vector.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Qor::Nalix::basic_column_major;
using Qor::Nalix::basic_row_major;
using Qor::Nalix::Matrix;
using Qor::Nalix::Vector;

constexpr std::size_t mebibyte = std::size_t{1} << 20;

std::uintptr_t AddressOf(const void* memory) {
    return reinterpret_cast<std::uintptr_t>(memory);
}

// Counts how many are alive, and refuses to be one too many.
struct Counted {
    Counted() {
        if (alive == limit)
            throw std::runtime_error("one too many");
        ++alive;
    }
    Counted(const Counted&) { ++alive; }
    Counted& operator=(const Counted&) = default;
    ~Counted() { --alive; }
    static inline int alive = 0;
    static inline int limit = std::numeric_limits<int>::max();
};

template <class Order>
class MatrixOf : public testing::Test {
protected:
    template <class T>
    static Matrix<T, Order> Filled(std::size_t size1, std::size_t size2) {
        Matrix<T, Order> matrix(size1, size2);
        for (std::size_t i = 0; i < size1; ++i)
            for (std::size_t j = 0; j < size2; ++j)
                matrix(i, j) = static_cast<T>(10 * i + j);
        return matrix;
    }
};
using Orders = testing::Types<basic_row_major, basic_column_major>;
TYPED_TEST_SUITE(MatrixOf, Orders);

TYPED_TEST(MatrixOf, IndicesMeanTheSameInBothOrdersAndStorageDiffers) {
    const auto matrix = this->template Filled<int>(2, 3);
    EXPECT_EQ(matrix.size1(), 2u);
    EXPECT_EQ(matrix.size2(), 3u);
    const std::vector<int> rows{0, 1, 2, 10, 11, 12};
    const std::vector<int> columns{0, 10, 1, 11, 2, 12};
    EXPECT_EQ(std::vector<int>(matrix.data(), matrix.data() + matrix.size()),
              (std::is_same_v<TypeParam, basic_row_major> ? rows : columns));
    EXPECT_EQ(matrix(1, 2), 12);
}

TYPED_TEST(MatrixOf, CopiesShareClonesDoNotAndResizingLeavesTheOthersAlone) {
    auto matrix = this->template Filled<double>(3, 4);
    const auto original = matrix.Clone();
    auto copy = matrix;
    copy(1, 1) = -1;
    EXPECT_EQ(matrix(1, 1), -1);
    EXPECT_FALSE(matrix == original);
    copy(1, 1) = 11;
    EXPECT_EQ(matrix, original);

    // Also to the extents that it has: who resizes is about to write.
    for (const auto& [size1, size2] : {std::pair{3u, 4u}, {4u, 3u}, {1u, 1u}, {0u, 7u}, {90u, 50u}}) {
        auto resized = matrix;
        resized.resize(size1, size2);
        ASSERT_EQ(resized.size(), std::size_t{size1} * size2);
        std::fill_n(resized.data(), resized.size(), 5.0);
        EXPECT_EQ(matrix, original);
    }
    const double* const storage = copy.data();
    matrix = {};
    copy.resize(4, 3);
    EXPECT_EQ(copy.data(), storage) << "nobody shares it any more, and it has the size";

    const auto moved = std::move(copy);
    EXPECT_EQ(copy.size(), 0u);
    EXPECT_EQ(copy, (Matrix<double, TypeParam>()));
    EXPECT_EQ(moved.data(), storage);
}

TYPED_TEST(MatrixOf, EqualityIsThatOfValues) {
    EXPECT_FALSE((Matrix<int, TypeParam>(0, 3) == Matrix<int, TypeParam>(3, 0)));
    auto matrix = this->template Filled<double>(2, 2);
    auto other = matrix.Clone();
    matrix(0, 0) = 0.0;
    other(0, 0) = -0.0;
    EXPECT_EQ(matrix, other);
    matrix(0, 0) = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(matrix == matrix);
}

TYPED_TEST(MatrixOf, ImpossibleSizesAreRefusedAndChangeNothing) {
    const std::size_t half = std::size_t{1} << 32;
    const std::size_t most = std::numeric_limits<std::size_t>::max();
    auto matrix = this->template Filled<double>(2, 2);
    const auto original = matrix.Clone();
    for (const auto& [size1, size2] :
         {std::pair{half, half}, {half, half / 16}, {most, std::size_t{1}}, {std::size_t{2}, most}, {most, most}}) {
        EXPECT_THROW((Matrix<double, TypeParam>(size1, size2)), std::length_error);
        EXPECT_THROW(matrix.resize(size1, size2), std::length_error);
        EXPECT_EQ(matrix, original);
    }
    EXPECT_EQ((Matrix<double, TypeParam>(most, 0)).size(), 0u);
}

TYPED_TEST(MatrixOf, BlocksAreAligned) {
    for (const std::size_t kibibytes : {1u, 4095u, 4096u, 5000u, 8192u}) {
        Matrix<std::complex<double>, TypeParam> matrix(kibibytes, 64);
        EXPECT_EQ(AddressOf(matrix.data()) % (kibibytes >= 4096 ? 2 * mebibyte : 64), 0u) << kibibytes;
        matrix(kibibytes - 1, 63) = {1, 2};
        EXPECT_EQ(matrix.data()[matrix.size() - 1], (std::complex<double>{1, 2}));
    }
}

TYPED_TEST(MatrixOf, ElementsAreMadeAndDestroyedOnce) {
    {
        Matrix<Counted, TypeParam> matrix(3, 5);
        EXPECT_EQ(Counted::alive, 15);
        const auto copy = matrix;
        EXPECT_EQ(Counted::alive, 15);
        const auto clone = copy.Clone();
        EXPECT_EQ(Counted::alive, 30);
        matrix.resize(2, 2);
        EXPECT_EQ(Counted::alive, 34);
        Counted::limit = 40;
        EXPECT_THROW(matrix.resize(3, 3), std::runtime_error);
        Counted::limit = std::numeric_limits<int>::max();
        EXPECT_EQ(Counted::alive, 34);
        EXPECT_EQ(matrix.size1(), 2u);
    }
    EXPECT_EQ(Counted::alive, 0);
    EXPECT_EQ((Matrix<std::string, TypeParam>(2, 2)(1, 1)), "");
}

template <class T>
T ElementOf(int number) {
    if constexpr (std::is_same_v<T, std::string>)
        return std::string(static_cast<std::size_t>(number), 'x');
    else
        return static_cast<T>(number % 2);
}

template <class T>
class VectorOf : public testing::Test {};
using Elements = testing::Types<bool, std::uint8_t, double, std::string>;
TYPED_TEST_SUITE(VectorOf, Elements);

TYPED_TEST(VectorOf, ResizingKeepsTheLeadingElementsAndTheOtherCopies) {
    Vector<TypeParam> vector;
    EXPECT_EQ(vector.begin(), vector.end());
    vector.resize(5);
    for (int index = 0; index < 5; ++index)
        vector[static_cast<std::size_t>(index)] = ElementOf<TypeParam>(index);
    const Vector<TypeParam> original = vector.Clone();
    const Vector<TypeParam> copy = vector;
    EXPECT_EQ(copy.data(), vector.data());
    for (const std::size_t count : {5u, 9u, 3u}) {
        vector.resize(count);
        ASSERT_EQ(vector.size(), count);
        for (std::size_t index = 0; index < std::min<std::size_t>(count, 5); ++index)
            EXPECT_EQ(vector[index], original[index]);
        vector[0] = ElementOf<TypeParam>(1);
        EXPECT_EQ(copy, original);
        EXPECT_FALSE(vector == original);
        vector[0] = ElementOf<TypeParam>(0);
    }
    vector.resize(0);
    EXPECT_EQ(vector, Vector<TypeParam>());
    EXPECT_THROW(vector.resize(std::numeric_limits<std::size_t>::max()), std::length_error);
}

} // namespace
