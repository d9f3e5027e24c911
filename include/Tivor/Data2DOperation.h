#pragma once

#include <Tivor/Data2D.h>

#include <cstdint>
#include <memory>

namespace Qor::Tivor {

/// The operations on surfaces, as arguments of `Data2DOperation`. Of a surface of R x C points, `in`, they make `out`:
///
/// | operation | size | element |
/// |---|---|---|
/// | `FlipDim1` | R x C | out(r, c) = in(R - 1 - r, c) |
/// | `FlipDim2` | R x C | out(r, c) = in(r, C - 1 - c) |
/// | `Rotate180` | R x C | out(r, c) = in(R - 1 - r, C - 1 - c) |
/// | `Rotate90` | C x R | out(r, c) = in(R - 1 - c, r) |
/// | `Rotate270` | C x R | out(r, c) = in(c, C - 1 - r) |
/// | `Transpose` | C x R | out(r, c) = in(c, r) |
///
/// `TransformPositions` gives the position function of the result, and makes of the counts of points those of the
/// result. The first three keep the positions as they are, in their order: they give the same object. The others
/// exchange the dimensions: fixed spacings and arrays change places, any other position function is sampled over the
/// grid into arrays. Of none it makes none.
namespace Data2DOp {

#define TIVOR_DATA_2D_OPERATIONS(X)                                                                                    \
    X(FlipDim1, false, true, false)                                                                                    \
    X(FlipDim2, false, false, true)                                                                                    \
    X(Rotate180, false, true, true)                                                                                    \
    X(Rotate90, true, true, false)                                                                                     \
    X(Rotate270, true, false, true)                                                                                    \
    X(Transpose, true, false, false)

#define TIVOR_ROW(Op, exchanges, reverses1, reverses2)                                                                 \
    class TIVOR_API Op {                                                                                               \
    public:                                                                                                            \
        /** Whether the dimensions change places, and which of the source is taken in opposite order. */               \
        static constexpr bool exchangesDimensions = exchanges;                                                         \
        static constexpr bool reversesDimension1 = reverses1;                                                          \
        static constexpr bool reversesDimension2 = reverses2;                                                          \
                                                                                                                       \
        static std::shared_ptr<Position2D> TransformPositions(Core::QorConstPtr<Position2D> positions,                 \
                                                              std::uint64_t& dim1Points, std::uint64_t& dim2Points);   \
    };
TIVOR_DATA_2D_OPERATIONS(TIVOR_ROW)
#undef TIVOR_ROW

} // namespace Data2DOp

/// Turns and flips surfaces of numbers in both storage orders; `Op` is one of `Data2DOp`.
template <class Op>
class Data2DOperation {
public:
    Data2DOperation() = default;
    virtual ~Data2DOperation() = default;

    /// A new surface with samples of the same type and order, and the kind and the scale of the data; the positions are
    /// what `Op` makes of those of the input, and all other properties those of a new surface. Empty for matrices of
    /// other elements, as complex numbers, and of classes that nobody here knows. Fails an assertion where the matrix
    /// is not of the type that the surface tells.
    static std::shared_ptr<Data2D> Execute(const Data2D& input);
};

/// Cuts the points out whose indices are in [begin1, end1) along dimension 1 and in [begin2, end2) along dimension 2. A
/// new surface, as of `Data2DOperation`, or empty as there.
///
/// A fixed spacing stays; it has no origin, so nothing tells any more where the block was. Arrays of positions are cut
/// too; any other position function is sampled into arrays. A block without points has no positions.
///
/// Raises `OutOfRangeError` where a range ends before it begins or leads out of the surface.
TIVOR_API std::shared_ptr<Data2D> CreateSubregion(const Data2D& data, std::uint64_t begin1, std::uint64_t end1,
                                                  std::uint64_t begin2, std::uint64_t end2);

/// A surface of a data set cannot be cut, and is left out.
QOR_DECLARE_ALERT(TIVOR_API, OmittingSurface, Core::Warning);

/// Cuts the same block out of every surface of a data set. A new set with the channels, the metadata and the profiles
/// of the set; its primary surface is "Primary2D", all others keep their keys, but for another "Primary2D", which
/// becomes "Primary2D_2". Surfaces that give an empty pointer above are left out, with the warning `OmittingSurface`.
/// Raises what the above does, with the variable "Key".
TIVOR_API std::shared_ptr<DataSet> CreateSubregion(const IDataSet& dataSet, std::uint64_t begin1, std::uint64_t end1,
                                                   std::uint64_t begin2, std::uint64_t end2);

#define TIVOR_ROW(Op, exchanges, reverses1, reverses2) extern template class TIVOR_API Data2DOperation<Data2DOp::Op>;
TIVOR_DATA_2D_OPERATIONS(TIVOR_ROW)
#undef TIVOR_ROW

} // namespace Qor::Tivor
