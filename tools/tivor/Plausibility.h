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

/// Of numbers that stand for something: spacings, scales, positions, lengths, units. Lengths are implausible beyond the
/// bounds that formats of measurements have: points closer than 1 pm or farther apart than 1 mm, fields wider than 1 m,
/// heights that differ by more than 0.1 m.
std::vector<Finding> CheckMeasurement(const Measurement& measurement);

} // namespace Qor::Tivor::Tool
