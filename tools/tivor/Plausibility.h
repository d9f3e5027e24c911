#pragma once

#include "Measurement.h"

namespace Qor::Tivor::Tool {

/// Something that a file should not say.
struct Finding {
    enum EKind { eDEVIATION, eIMPLAUSIBLE };

    std::string place;
    std::string expected; ///< may be empty
    std::string text;
    EKind kind = eDEVIATION;
};

/// Of numbers that stand for something: spacings, scales, positions, units, and lengths beyond `LengthBounds`.
std::vector<Finding> CheckMeasurement(const Measurement& measurement);

} // namespace Qor::Tivor::Tool
