#include "Alerts.h"

#include <Tivor/Data2DOperation.h>

#include <gtest/gtest.h>

#include <complex>
#include <cstring>
#include <functional>
#include <random>

namespace Qor::Tivor::Testing {

namespace {

using Core::Testing::RaisedBy;
using Size = std::pair<std::size_t, std::size_t>;

/// What an operation does, element by element: the size of its result, and which element of R x C each one is.
struct Rule {
    std::string name;
    std::shared_ptr<Data2D> (*execute)(const Data2D&);
    bool exchanges;
    std::function<Size(std::size_t r, std::size_t c, std::size_t numRows, std::size_t numColumns)> source;
};

const Rule rules[] = {
    {"FlipDim1", &Data2DOperation<Data2DOp::FlipDim1>::Execute, false,
     [](auto r, auto c, auto R, auto) { return Size(R - 1 - r, c); }},
    {"FlipDim2", &Data2DOperation<Data2DOp::FlipDim2>::Execute, false,
     [](auto r, auto c, auto, auto C) { return Size(r, C - 1 - c); }},
    {"Rotate180", &Data2DOperation<Data2DOp::Rotate180>::Execute, false,
     [](auto r, auto c, auto R, auto C) { return Size(R - 1 - r, C - 1 - c); }},
    {"Rotate90", &Data2DOperation<Data2DOp::Rotate90>::Execute, true,
     [](auto r, auto c, auto R, auto) { return Size(R - 1 - c, r); }},
    {"Rotate270", &Data2DOperation<Data2DOp::Rotate270>::Execute, true,
     [](auto r, auto c, auto, auto C) { return Size(c, C - 1 - r); }},
    {"Transpose", &Data2DOperation<Data2DOp::Transpose>::Execute, true,
     [](auto r, auto c, auto, auto) { return Size(c, r); }},
};

template <class M>
std::shared_ptr<M> MatrixOf(const Data2D& surface) {
    return surface.GetContent()->GetPtr<M>("Matrix");
}

/// A surface of any bits, NaN of all kinds among them.
template <class M>
std::shared_ptr<Data2D> Noise(std::size_t size1, std::size_t size2) {
    M matrix(size1, size2);
    std::mt19937_64 bits(size1 * 65537 + size2);
    auto* const bytes = reinterpret_cast<unsigned char*>(matrix.data());
    const std::size_t count = matrix.size() * sizeof(typename M::value_type);
    for (std::size_t i = 0; i < count; i += sizeof(std::uint64_t)) {
        const std::uint64_t word = bits();
        std::memcpy(bytes + i, &word, std::min(sizeof word, count - i));
    }
    return Data2D::Create(MakeData(std::move(matrix)));
}

template <class M>
bool IsMade(const M& result, const M& expected) {
    return result.size1() == expected.size1() && result.size2() == expected.size2() &&
           (expected.size() == 0 ||
            std::memcmp(result.data(), expected.data(), expected.size() * sizeof(typename M::value_type)) == 0);
}

template <class M>
void CheckAll(const Size& size) {
    const auto surface = Noise<M>(size.first, size.second);
    const auto input = MatrixOf<const M>(*surface);
    for (const Rule& rule : rules) {
        SCOPED_TRACE(rule.name + ' ' + surface->ToString() + surface->GetMatrixTypeName());
        M expected = rule.exchanges ? M(size.second, size.first) : M(size.first, size.second);
        for (std::size_t r = 0; r < expected.size1(); ++r)
            for (std::size_t c = 0; c < expected.size2(); ++c) {
                const auto [i, j] = rule.source(r, c, size.first, size.second);
                expected(r, c) = (*input)(i, j);
            }
        const auto result = rule.execute(*surface);
        ASSERT_TRUE(result && IsMade(*MatrixOf<const M>(*result), expected));
    }
    for (const auto& [begin1, end1, begin2, end2] :
         {std::array<std::size_t, 4>{0, size.first, 0, size.second},
          std::array<std::size_t, 4>{size.first / 3, size.first - size.first / 4, size.second / 5, size.second},
          std::array<std::size_t, 4>{size.first, size.first, 0, size.second}}) {
        M expected(end1 - begin1, end2 - begin2);
        for (std::size_t r = 0; r < expected.size1(); ++r)
            for (std::size_t c = 0; c < expected.size2(); ++c)
                expected(r, c) = (*input)(begin1 + r, begin2 + c);
        ASSERT_TRUE(IsMade(*MatrixOf<const M>(*CreateSubregion(*surface, begin1, end1, begin2, end2)), expected));
    }
}

UnitizedDouble Mm(double value) { return {value, "Millimeter"}; }

std::shared_ptr<ArrayPosition2D> Grid(std::vector<double> dim1, std::vector<double> dim2) {
    const auto array = [](const std::vector<double>& numbers) {
        boost::shared_array<double> copy(new double[numbers.size()]);
        std::copy(numbers.begin(), numbers.end(), copy.get());
        return copy;
    };
    return std::make_shared<ArrayPosition2D>(array(dim1), array(dim2), dim1.size(), dim2.size(),
                                             Core::UnitDictionary::Instance().Get("Meter")->Clone(),
                                             Core::UnitDictionary::Instance().Get("Second")->Clone());
}

struct Skewed final : Position2D {
    void GetPosition(std::uint64_t i, std::uint64_t j, Nalix::Vector<UnitizedDouble>& position) const override {
        position.resize(2);
        position[0] = UnitizedDouble(static_cast<double>(i * i + 10 * j), "Meter");
        position[1] = UnitizedDouble(static_cast<double>(100 * j + i), "Second");
    }
    bool Dim1SpacingIsFixed() const override { return false; }
    bool Dim2SpacingIsFixed() const override { return false; }
};

std::string PositionsOf(const Data2D& surface) {
    if (!surface.GetPositionFunction())
        return "none";
    std::string text;
    for (const auto& array : {surface.GetDim1PositionArray(), surface.GetDim2PositionArray()}) {
        for (const double position : array)
            text += UnitizedDouble(position).ToString() + ' ';
        text += "| ";
    }
    return text + surface.GetDim1PositionUnits()->GetSymbol() + ' ' + surface.GetDim2PositionUnits()->GetSymbol();
}

} // namespace

TEST(Data2DOperations, MoveEveryTypeByTheRule) {
    for (const Size& size : {Size(0, 0), Size(1, 1), Size(1, 40), Size(40, 1), Size(0, 5), Size(5, 3), Size(16, 16),
                             Size(33, 31), Size(64, 128), Size(65, 130)}) {
#define TIVOR_VALUE(T, id, name)                                                                                       \
    if constexpr (!std::is_same_v<T::value_type, std::complex<double>>)                                                \
        CheckAll<T>(size);
        TIVOR_MATRIX_VALUES
#undef TIVOR_VALUE
    }
    // Beyond the caches, aligned and not, and with extreme strides.
    CheckAll<RowMajorMatrix<unsigned char>>({4097, 4095});
    CheckAll<RowMajorMatrix<unsigned char>>({4096, 2048});
    CheckAll<ColumnMajorMatrix<short>>({65536, 256});
    CheckAll<RowMajorMatrix<float>>({256, 65536});
    CheckAll<RowMajorMatrix<double>>({1024, 1032});
    CheckAll<ColumnMajorMatrix<double>>({1023, 1025});
}

TEST(Data2DOperations, GiveNothingForOtherElements) {
    const auto surface = Data2D::Create(MakeData(RowMajorMatrix<std::complex<double>>(2, 3)));
    const Data2D empty;
    for (const Rule& rule : rules)
        EXPECT_TRUE(!rule.execute(*surface) && !rule.execute(empty)) << rule.name;
    EXPECT_EQ(CreateSubregion(*surface, 5, 4, 0, 9), nullptr);
    // The type that is told is not the type that is there.
    const auto other = Data2D::Create(MakeData(RowMajorMatrix<float>(2, 3)));
    other->GetContent()->PutValue("MatrixType", 89);
    for (const Rule& rule : rules)
        EXPECT_EQ(RaisedBy<Core::AssertionError>([&] { rule.execute(*other); }).GetText(), "spInputMatrix");
}

TEST(Data2DOperations, CarryKindScaleAndPositions) {
    const auto surface = Noise<RowMajorMatrix<double>>(2, 3);
    surface->SetDataKind("Height");
    surface->SetDataScale(Mm(2));
    surface->SetOrigin(Data2D::eLOWER_RIGHT);
    surface->SetProperty("Operator", MakeData(std::string("Emmy")));
    const auto exchanged = [](bool is, const char* text, const char* otherwise) {
        return std::string(is ? text : otherwise);
    };
    for (const Rule& rule : rules) {
        SCOPED_TRACE(rule.name);
        surface->SetFixedSpacing(Mm(1), Mm(2));
        const auto positions = surface->GetPositionFunction();
        const auto result = rule.execute(*surface);
        EXPECT_EQ(result->GetDataKind() + result->GetDataScale().ToString(), "Height2 mm");
        EXPECT_EQ(result->GetOrigin(), Data2D::eUPPER_LEFT);
        EXPECT_EQ(result->GetAspect(), 1.0F);
        EXPECT_FALSE(result->PropertyExists("Operator") || result->PropertyExists("Dimension1Extent"));
        UnitizedDouble dim1;
        UnitizedDouble dim2;
        EXPECT_TRUE(result->GetFixedSpacing(dim1, dim2));
        EXPECT_EQ(dim1.ToString() + ' ' + dim2.ToString(), exchanged(rule.exchanges, "2 mm 1 mm", "1 mm 2 mm"));
        EXPECT_EQ(result->GetPositionFunction() == positions, !rule.exchanges);

        surface->SetPositionFunction(Grid({1, 5}, {2, 3, 9}));
        EXPECT_EQ(PositionsOf(*rule.execute(*surface)),
                  exchanged(rule.exchanges, "2 3 9 | 1 5 | s m", "1 5 | 2 3 9 | m s"));
        surface->SetPositionFunction(std::make_shared<Skewed>());
        EXPECT_EQ(PositionsOf(*rule.execute(*surface)),
                  exchanged(rule.exchanges, "0 100 200 | 0 1 | s m", "0 1 | 0 100 200 | m s"));
        surface->RemovePositionInfo();
        EXPECT_EQ(PositionsOf(*rule.execute(*surface)), "none");
        // Extents alone are positions too.
        surface->SetProperty("Dimension1Extent", MakeData(Mm(4)));
        surface->SetProperty("Dimension2Extent", MakeData(Mm(4)));
        EXPECT_EQ(PositionsOf(*rule.execute(*surface)),
                  exchanged(rule.exchanges, "0 2 4 | 0 4 | mm mm", "0 4 | 0 2 4 | mm mm"));
        EXPECT_FALSE(surface->PropertyExists("PositionFunction"));
    }
}

TEST(Data2DOperations, CutPositionsWithTheSamples) {
    const auto surface = Noise<ColumnMajorMatrix<int>>(4, 6);
    surface->SetDataKind("Height");
    const std::pair<std::shared_ptr<Position2D>, const char*> rows[] = {
        {std::make_shared<FixedSpacing2D>(Mm(1), Mm(2)), "0 1 | 0 2 4 | mm mm"},
        {Grid({0, 1, 4, 9}, {0, 1, 2, 3, 5, 8}), "1 4 | 3 5 8 | m s"},
        {std::make_shared<Skewed>(), "31 34 | 301 401 501 | m s"}};
    for (const auto& [positions, expected] : rows) {
        surface->SetPositionFunction(positions);
        const auto block = CreateSubregion(*surface, 1, 3, 3, 6);
        EXPECT_EQ(PositionsOf(*block) + block->GetDataKind(), std::string(expected) + "Height");
        EXPECT_EQ(PositionsOf(*CreateSubregion(*surface, 1, 1, 3, 6)), "none");
    }
    for (const auto& [begin1, end1, begin2, end2] :
         {std::array<std::uint64_t, 4>{0, 5, 0, 6}, {3, 2, 0, 6}, {0, 4, 0, 7}, {0, 4, 7, 6}, {0, ~0ull, 0, 1}}) {
        const auto error = RaisedBy<Core::OutOfRangeError>(
            [&, b1 = begin1, e1 = end1, b2 = begin2, e2 = end2] { CreateSubregion(*surface, b1, e1, b2, e2); });
        EXPECT_EQ(error.GetCategory(), "Qor.Tivor.Data2DOperation.CreateSubregion");
        EXPECT_NE(error.GetText().find("4 x 6"), std::string::npos);
    }
}

} // namespace Qor::Tivor::Testing
