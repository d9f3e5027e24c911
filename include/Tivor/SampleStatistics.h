#pragma once

#include <Tivor/Data1D.h>
#include <Tivor/Data2D.h>

#include <limits>

namespace Qor::Tivor {

/// What the samples of a measured array amount to, as they are stored: in the unit of the samples, not multiplied by
/// the data scale.
///
/// NaN and the infinities of floating point samples stand for points that were not measured. They are counted, and
/// left out of all else. Samples of other types have none. A bool counts as 0 or 1.
struct SampleStatistics {
    std::uint64_t numPoints = 0; ///< all of them
    std::uint64_t numMissing = 0;
    /// NaN, as all that follows, when no point was measured. Integers beyond 2^53 are rounded.
    double minimum = std::numeric_limits<double>::quiet_NaN();
    double maximum = std::numeric_limits<double>::quiet_NaN();
    double mean = std::numeric_limits<double>::quiet_NaN();
    /// The root of the mean squared deviation from the mean.
    double rms = std::numeric_limits<double>::quiet_NaN();
};

/// Reads the samples once and copies none; without samples there are no points. The sums keep their digits for any
/// number of points and however far from zero these lie. Raises `LogicError` for samples that are complex, or of a
/// class that is not known here.
///
/// Thread rule: as for the samples; holds their lock while it reads.
TIVOR_API SampleStatistics GetStatistics(const Data1D& profile);
TIVOR_API SampleStatistics GetStatistics(const Data2D& surface);

/// A mask of the same shape and storage order, 1 where a point is missing and 0 elsewhere; an empty pointer without
/// samples. Raises as `GetStatistics`.
TIVOR_API std::shared_ptr<Array<unsigned char>> MissingPoints(const Data1D& profile);
/// The same: a `RowMajorMatrix<unsigned char>` or a `ColumnMajorMatrix<unsigned char>`, seen through a `MatrixView`.
TIVOR_API std::shared_ptr<DataObject> MissingPoints(const Data2D& surface);

} // namespace Qor::Tivor
