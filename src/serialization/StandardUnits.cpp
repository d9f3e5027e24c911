#include <Tivor/BuiltInDataObjects.h>

#include <cmath>
#include <limits>

namespace Qor::Tivor {

namespace {

// Smaller is closer. A scale that has no ratio to the other one (0, NaN) is the farthest.
double GetDistance(const Core::UnitDescriptor& unit, const Core::UnitDescriptor& standard) {
    if (unit.GetScale() == standard.GetScale())
        return unit.GetOffset() == standard.GetOffset() ? -2 : -1;
    const double distance = std::abs(std::log(unit.GetScale() / standard.GetScale()));
    return std::isnan(distance) ? std::numeric_limits<double>::infinity() : distance;
}

} // namespace

Core::QorConstPtr<Core::UnitDescriptor> GetClosestStandardUnit(const Core::QorConstPtr<Core::UnitDescriptor>& unit) {
    Core::QorConstPtr<Core::UnitDescriptor> closest;
    if (!unit)
        return closest;
    for (const auto& standard : Core::UnitDictionary::GetStandardUnits())
        if (unit->IsDimensionallyEquivalent(*standard) &&
            (!closest || GetDistance(*unit, *standard) < GetDistance(*unit, *closest)))
            closest = standard;
    return closest;
}

} // namespace Qor::Tivor
