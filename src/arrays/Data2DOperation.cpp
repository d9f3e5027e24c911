#include "MeasuredPositions.h"
#include "SampleKernels.h"

#include <QorCore/Message.h>
#include <Tivor/Data2DOperation.h>

#include <algorithm>
#include <complex>
#include <type_traits>

namespace Qor::Tivor {

namespace {

template <std::size_t bytes>
using Bits = std::conditional_t<
    bytes == 1, std::uint8_t,
    std::conditional_t<bytes == 2, std::uint16_t, std::conditional_t<bytes == 4, std::uint32_t, std::uint64_t>>>;

template <class T>
const auto* BitsOf(const T* elements) {
    return reinterpret_cast<const Bits<sizeof(T)>*>(elements);
}
template <class T>
auto* BitsOf(T* elements) {
    return reinterpret_cast<Bits<sizeof(T)>*>(elements);
}

template <class Matrix>
inline constexpr bool isByRows = std::is_same_v<typename Matrix::order_type, Nalix::basic_row_major>;

// Of storage by columns dimension 2 counts the lines.
template <class Op, class Matrix>
Matrix Turn(const Matrix& input) {
    Matrix result =
        Op::exchangesDimensions ? Matrix(input.size2(), input.size1()) : Matrix(input.size1(), input.size2());
    const std::size_t lines = isByRows<Matrix> ? input.size1() : input.size2();
    const std::size_t length = isByRows<Matrix> ? input.size2() : input.size1();
    constexpr bool reverseLines = isByRows<Matrix> ? Op::reversesDimension1 : Op::reversesDimension2;
    constexpr bool reverseElements = isByRows<Matrix> ? Op::reversesDimension2 : Op::reversesDimension1;
    const auto* const source = BitsOf(input.data());
    auto* const target = BitsOf(result.data());
    if constexpr (Op::exchangesDimensions)
        SampleKernels::Transpose(source, target, lines, length, reverseLines, reverseElements);
    else if constexpr (!reverseElements)
        SampleKernels::ReverseLines(source, target, lines, length);
    else if constexpr (!reverseLines)
        SampleKernels::ReverseElements(source, target, lines, length);
    else
        SampleKernels::ReverseElements(source, target, 1, lines * length);
    return result;
}

struct Block {
    std::uint64_t begin1;
    std::uint64_t end1;
    std::uint64_t begin2;
    std::uint64_t end2;
};

template <class Matrix>
Matrix Cut(const Matrix& input, const Block& block) {
    if (block.begin1 > block.end1 || block.end1 > input.size1() || block.begin2 > block.end2 ||
        block.end2 > input.size2())
        Core::Error::RaiseError(
            Core::OutOfRangeError(
                Core::FormatText("Expected ranges within %1% x %2% points, found [%3%, %4%) along "
                                 "dimension 1 and [%5%, %6%) along dimension 2",
                                 {input.size1(), input.size2(), block.begin1, block.end1, block.begin2, block.end2})),
            QOR_CODE_CONTEXT("Data2DOperation"), "Qor.Tivor.Data2DOperation.CreateSubregion");
    Matrix result(block.end1 - block.begin1, block.end2 - block.begin2);
    if (result.size() == 0)
        return result;
    const std::size_t stride = isByRows<Matrix> ? input.size2() : input.size1();
    const std::size_t lines = isByRows<Matrix> ? result.size1() : result.size2();
    SampleKernels::CopyLines(BitsOf(&input(block.begin1, block.begin2)), stride, BitsOf(result.data()), lines,
                             result.size() / lines);
    return result;
}

/// Calls `make` with the matrix of a surface; what that gives is put into a new surface, with the kind and the scale of
/// the data. Empty for matrices that are not of numbers.
template <class Make>
std::shared_ptr<Data2D> MakeOfMatrix(const Data2D& input, Core::CodeContext context, Make make) {
    std::shared_ptr<DataObject> result;
    const auto use = [&]<class Matrix>(std::type_identity<Matrix>) {
        const auto spInputMatrix = input.GetContent()->GetPtr<const Matrix>("Matrix");
        if (!spInputMatrix)
            Core::AssertFailed("spInputMatrix", context);
        result = MakeData(make(*spInputMatrix));
    };
    switch (static_cast<std::uint32_t>(input.GetMatrixType())) {
#define TIVOR_VALUE(T, id, name)                                                                                       \
    case id:                                                                                                           \
        if constexpr (!std::is_same_v<T::value_type, std::complex<double>>)                                            \
            use(std::type_identity<T>());                                                                              \
        break;
        TIVOR_MATRIX_VALUES
#undef TIVOR_VALUE
    default:
        break;
    }
    return result ? Data2D::CreateLike(input, std::move(result)) : nullptr;
}

using List = MeasuredPositions::List;

/// The positions along both dimensions of a block that begins at these indices.
std::pair<List, List> SampleBoth(const Position2D& positions, const Block& block) {
    Nalix::Vector<UnitizedDouble> position;
    return {MeasuredPositions::Sample(block.end1 - block.begin1,
                                      [&](std::uint64_t k) {
                                          positions.GetPosition(block.begin1 + k, block.begin2, position);
                                          return position[0];
                                      }),
            MeasuredPositions::Sample(block.end2 - block.begin2, [&](std::uint64_t k) {
                positions.GetPosition(block.begin1, block.begin2 + k, position);
                return position[1];
            })};
}

std::shared_ptr<Position2D> FromLists(const List& dim1, const List& dim2) {
    const auto unitsOf = [](const List& list) {
        return list.units ? std::shared_ptr<Core::UnitDescriptor>(list.units->Clone()) : nullptr;
    };
    return std::make_shared<ArrayPosition2D>(dim1.values, dim2.values, dim1.count, dim2.count, unitsOf(dim1),
                                             unitsOf(dim2));
}

std::shared_ptr<Position2D> ExchangeDimensions(const Core::QorConstPtr<Position2D>& positions,
                                               std::uint64_t& dim1Points, std::uint64_t& dim2Points) {
    const Block all{0, dim1Points, 0, dim2Points};
    std::swap(dim1Points, dim2Points);
    if (!positions)
        return nullptr;
    if (const auto fixed = std::dynamic_pointer_cast<const FixedSpacing2D>(positions))
        return std::make_shared<FixedSpacing2D>(fixed->GetDim2Spacing(), fixed->GetDim1Spacing());
    if (const auto arrays = std::dynamic_pointer_cast<const ArrayPosition2D>(positions))
        return FromLists(MeasuredPositions::Share(arrays->GetDim2PositionArray(), arrays->GetDim2Units()),
                         MeasuredPositions::Share(arrays->GetDim1PositionArray(), arrays->GetDim1Units()));
    const auto [dim1, dim2] = SampleBoth(*positions, all);
    return FromLists(dim2, dim1);
}

std::shared_ptr<Position2D> CutPositions(const Position2D& positions, const Block& block) {
    if (block.begin1 == block.end1 || block.begin2 == block.end2)
        return nullptr;
    if (const auto* const fixed = dynamic_cast<const FixedSpacing2D*>(&positions))
        return std::make_shared<FixedSpacing2D>(*fixed);
    const auto* const arrays = dynamic_cast<const ArrayPosition2D*>(&positions);
    if (arrays == nullptr) {
        const auto [dim1, dim2] = SampleBoth(positions, block);
        return FromLists(dim1, dim2);
    }
    const auto cut = [](const Core::QorConstArray<double>& array, Core::QorConstPtr<Core::UnitDescriptor> units,
                        std::uint64_t begin, std::uint64_t end) {
        List list{AllocateArray<double>(end - begin), end - begin, std::move(units)};
        std::copy(array.begin() + begin, array.begin() + end, list.values.get());
        return list;
    };
    // What does not fit the samples is asked for its positions, and says so itself.
    if (arrays->GetDim1Size() < block.end1 || arrays->GetDim2Size() < block.end2) {
        Nalix::Vector<UnitizedDouble> position;
        arrays->GetPosition(block.end1 - 1, block.end2 - 1, position);
    }
    return FromLists(cut(arrays->GetDim1PositionArray(), arrays->GetDim1Units(), block.begin1, block.end1),
                     cut(arrays->GetDim2PositionArray(), arrays->GetDim2Units(), block.begin2, block.end2));
}

} // namespace

#define TIVOR_ROW(Op, exchanges, reverses1, reverses2)                                                                 \
    std::shared_ptr<Position2D> Data2DOp::Op::TransformPositions(Core::QorConstPtr<Position2D> positions,              \
                                                                 [[maybe_unused]] std::uint64_t& dim1Points,           \
                                                                 [[maybe_unused]] std::uint64_t& dim2Points) {         \
        if constexpr (exchanges)                                                                                       \
            return ExchangeDimensions(positions, dim1Points, dim2Points);                                              \
        else                                                                                                           \
            return std::const_pointer_cast<Position2D>(positions);                                                     \
    }
TIVOR_DATA_2D_OPERATIONS(TIVOR_ROW)
#undef TIVOR_ROW

template <class Op>
std::shared_ptr<Data2D> Data2DOperation<Op>::Execute(const Data2D& input) {
    const auto result =
        MakeOfMatrix(input, QOR_CODE_CONTEXT("Data2DOperation"), [](const auto& matrix) { return Turn<Op>(matrix); });
    const auto positions = result ? input.GetPositionFunction() : nullptr;
    if (!positions)
        return result;
    std::uint64_t dim1Points = input.GetNumDimension1Points();
    std::uint64_t dim2Points = input.GetNumDimension2Points();
    if (const auto transformed = Op::TransformPositions(positions, dim1Points, dim2Points))
        result->SetCustomPositionFunction(transformed, input);
    return result;
}

std::shared_ptr<Data2D> CreateSubregion(const Data2D& data, std::uint64_t begin1, std::uint64_t end1,
                                        std::uint64_t begin2, std::uint64_t end2) {
    const Block block{begin1, end1, begin2, end2};
    const auto result =
        MakeOfMatrix(data, QOR_CODE_CONTEXT("Data2DOperation"), [&](const auto& matrix) { return Cut(matrix, block); });
    const auto positions = result ? data.GetPositionFunction() : nullptr;
    if (const auto cut = positions ? CutPositions(*positions, block) : nullptr)
        result->SetCustomPositionFunction(cut, data);
    return result;
}

#define TIVOR_ROW(Op, exchanges, reverses1, reverses2) template class Data2DOperation<Data2DOp::Op>;
TIVOR_DATA_2D_OPERATIONS(TIVOR_ROW)
#undef TIVOR_ROW

} // namespace Qor::Tivor
