#include <Tivor/Position2D.h>

namespace Qor::Tivor {

using Spacing = Core::QorConstPtr<UnitizedDouble>;

Spacing Position2D::GetFixedDim1Spacing() { return nullptr; }

Spacing Position2D::GetFixedDim2Spacing() { return nullptr; }

Spacing Position2D::GetFixedDim1Spacing() const { return const_cast<Position2D&>(*this).GetFixedDim1Spacing(); }

Spacing Position2D::GetFixedDim2Spacing() const { return const_cast<Position2D&>(*this).GetFixedDim2Spacing(); }

} // namespace Qor::Tivor
