#pragma once

#include "../common/Measured.h"
#include "Points.h"

namespace Qor::Tivor::Measurements {

/// Makes surfaces and profiles of the points, one for each layer, with their positions, and warns of lengths that are
/// implausible.
void StorePoints(const Description& description, const Points& points, Reading& reading, const Report& report);

} // namespace Qor::Tivor::Measurements
