#pragma once

#include "MainDocument.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace Qor::Tivor::Measurements {

/// The types of stored numbers, by their letters in DataType.
enum class EStored : char { int16 = 'I', int32 = 'L', float32 = 'F', float64 = 'D' };

std::size_t SizeOf(EStored type);

/// One axis, as Record1 describes it.
struct StoredAxis {
    bool isAbsolute = false;
    EStored type = EStored::float64; ///< of absolute axes
    double increment = 1;
    double offset = 0;
};

/// What Records 1 and 3 tell of the points.
struct Description {
    enum EFeature { eSURFACE, ePROFILE, ePOINTS };

    /// Warns of what deviates from the standard, and raises `MalformedMeasurement` where points could not be told.
    Description(const Element& root, const Report& report);

    std::uint64_t GetNumPoints() const { return size[0] * size[1] * size[2]; }

    EFeature feature = eSURFACE;
    std::array<StoredAxis, 3> axes;      ///< x, y, z
    std::array<std::uint64_t, 3> size{}; ///< points along x and y, layers; of a list the points, 1 and 1
    const Element* link = nullptr;       ///< DataLink, or null where the points stand in the document
};

} // namespace Qor::Tivor::Measurements
