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

constexpr std::size_t most = std::numeric_limits<std::size_t>::max();

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
    MatrixOf() {
        for (std::size_t i = 0; i < 2; ++i)
            for (std::size_t j = 0; j < 3; ++j)
                m_matrix(i, j) = static_cast<double>(10 * i + j);
        m_original = m_matrix.Clone();
    }

    Matrix<double, Order> m_matrix{2, 3};
    Matrix<double, Order> m_original;
};
using Orders = testing::Types<basic_row_major, basic_column_major>;
TYPED_TEST_SUITE(MatrixOf, Orders);

TYPED_TEST(MatrixOf, CopiesShareClonesDoNotAndResizingLeavesTheOthersAlone) {
    auto& matrix = this->m_matrix;
    const auto& original = this->m_original;
    using Plain = std::vector<double>;
    EXPECT_EQ(Plain(matrix.data(), matrix.data() + matrix.size()),
              (std::is_same_v<TypeParam, basic_row_major> ? Plain{0, 1, 2, 10, 11, 12} : Plain{0, 10, 1, 11, 2, 12}));
    auto copy = matrix;
    copy(1, 1) = -1;
    EXPECT_EQ(matrix, copy);
    EXPECT_FALSE(matrix == original);
    copy(1, 1) = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(matrix == copy);
    copy(1, 1) = 11;
    copy(0, 0) = -0.0;
    EXPECT_EQ(matrix, original);
    // Also to the extents that it has: who resizes is about to write.
    for (const auto& [size1, size2] : {std::pair{2u, 3u}, {3u, 2u}, {1u, 1u}, {0u, 7u}, {90u, 50u}}) {
        auto resized = matrix;
        resized.resize(size1, size2);
        ASSERT_EQ(resized.size(), std::size_t{size1} * size2);
        std::fill_n(resized.data(), resized.size(), 5.0);
        EXPECT_EQ(matrix, original);
    }
    const double* const storage = copy.data();
    matrix = {};
    copy.resize(3, 2);
    EXPECT_EQ(copy.data(), storage) << "nobody shares it any more, and it has the size";
    const auto moved = std::move(copy);
    EXPECT_EQ(copy, matrix);
    EXPECT_EQ(moved.data(), storage);
}

TYPED_TEST(MatrixOf, ImpossibleSizesAreRefusedAndChangeNothing) {
    using Numbers = Matrix<double, TypeParam>;
    const std::size_t half = std::size_t{1} << 32;
    for (const auto& [size1, size2] :
         {std::pair{half, half}, {half, half / 16}, {most, std::size_t{1}}, {std::size_t{2}, most}, {most, most}}) {
        EXPECT_THROW(Numbers(size1, size2), std::length_error);
        EXPECT_THROW(this->m_matrix.resize(size1, size2), std::length_error);
        EXPECT_EQ(this->m_matrix, this->m_original);
    }
    EXPECT_EQ(Numbers(most, 0).size(), 0u);
    EXPECT_FALSE(Numbers(0, 3) == Numbers(3, 0));
}

TYPED_TEST(MatrixOf, BlocksAreAligned) {
    for (const std::size_t kibibytes : {1u, 4095u, 4096u, 5000u}) {
        Matrix<std::complex<double>, TypeParam> matrix(kibibytes, 64);
        const std::size_t alignment = kibibytes >= 4096 ? std::size_t{2} << 20 : 64;
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(matrix.data()) % alignment, 0u) << kibibytes;
        matrix(kibibytes - 1, 63) = {1, 2};
        EXPECT_EQ(matrix.data()[matrix.size() - 1], (std::complex<double>{1, 2}));
    }
}

TYPED_TEST(MatrixOf, ElementsAreMadeAndDestroyedOnce) {
    {
        Matrix<Counted, TypeParam> matrix(3, 5);
        const auto copy = matrix;
        EXPECT_EQ(Counted::alive, 15);
        const auto clone = copy.Clone();
        matrix.resize(2, 2);
        EXPECT_EQ(Counted::alive, 34);
        Counted::limit = 40;
        EXPECT_THROW(matrix.resize(3, 3), std::runtime_error);
        Counted::limit = std::numeric_limits<int>::max();
        EXPECT_EQ(Counted::alive, 34);
        EXPECT_EQ(matrix.size1(), 2u);
    }
    EXPECT_EQ(Counted::alive, 0);
}

template <class T>
class VectorOf : public testing::Test {};
using Elements = testing::Types<bool, std::uint8_t, std::string>;
TYPED_TEST_SUITE(VectorOf, Elements);

TYPED_TEST(VectorOf, ResizingKeepsTheLeadingElementsAndTheOtherCopies) {
    TypeParam other{};
    if constexpr (std::is_same_v<TypeParam, std::string>)
        other = "longer than what a string holds by itself";
    else
        other = true;
    Vector<TypeParam> vector(5);
    for (std::size_t index = 0; index < 5; ++index)
        vector[index] = index % 3 == 1 ? other : TypeParam();
    const Vector<TypeParam> original = vector.Clone();
    const Vector<TypeParam> copy = vector;
    EXPECT_EQ(copy.data(), vector.data());
    for (const std::size_t count : {5u, 9u, 3u}) {
        vector.resize(count);
        ASSERT_EQ(vector.size(), count);
        for (std::size_t index = 0; index < std::min<std::size_t>(count, 5); ++index)
            EXPECT_EQ(vector[index], original[index]);
        vector[0] = other;
        EXPECT_EQ(copy, original);
        vector[0] = TypeParam();
    }
    vector.resize(0);
    EXPECT_EQ(vector, Vector<TypeParam>());
    EXPECT_THROW(vector.resize(most), std::length_error);
}

} // namespace
