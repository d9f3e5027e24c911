#pragma once

#include <QorCore/Message.h>
#include <QorCore/NumberText.h>

#include <cmath>
#include <string>

namespace Qor::Tivor {

/// How far apart two places of a measured surface can be, in metres. What lies beyond was hardly measured: more likely
/// its unit is another one than the file says, or than its format takes for granted.
struct LengthBound {
    /// A length of 0 and one that is not finite tell nothing.
    bool Accepts(double length) const {
        return !std::isfinite(length) || length == 0 || (length >= least && length <= most);
    }
    /// As "samples along x 1e-12 m to 0.001 m apart".
    std::string Expectation() const {
        return Core::FormatText("%1% %2% m to %3% m apart",
                                {places, Core::GetNumberText(least), Core::GetNumberText(most)});
    }
    static std::string Finding(double length) {
        return Core::GetNumberText(length) + " m, which is implausible; the unit may be another one";
    }

    const char* places;
    double least;
    double most;
};

/// Of optical surface metrology: samples 1 pm to 1 mm apart, fields up to 1 m, heights that differ by up to 0.1 m.
struct LengthBounds {
    LengthBound samples;
    LengthBound ends;
};

inline constexpr LengthBounds lengthBoundsAlongX{{"samples along x", 1e-12, 1e-3}, {"ends along x", 1e-12, 1}};
inline constexpr LengthBounds lengthBoundsAlongY{{"samples along y", 1e-12, 1e-3}, {"ends along y", 1e-12, 1}};
inline constexpr LengthBound heightBound{"lowest and highest point", 0, 0.1};

} // namespace Qor::Tivor
