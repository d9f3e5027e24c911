#include "PositionOperations.h"

#include <Tivor/Position2D.h>

namespace Qor::Tivor {

using Spacing = Core::QorConstPtr<UnitizedDouble>;

Spacing Position2D::GetFixedDim1Spacing() { return nullptr; }

Spacing Position2D::GetFixedDim2Spacing() { return nullptr; }

Spacing Position2D::GetFixedDim1Spacing() const { return const_cast<Position2D&>(*this).GetFixedDim1Spacing(); }

Spacing Position2D::GetFixedDim2Spacing() const { return const_cast<Position2D&>(*this).GetFixedDim2Spacing(); }

template class GenericWrapper<Position2D>;

boost::logic::tribool ValueTraits<Position2D>::Equal(const Position2D& left, const Position2D& right) {
    return PositionOperations::Equal<FixedSpacing2D, ArrayPosition2D>(left, right);
}

std::string ValueTraits<Position2D>::ToString(const Position2D& value) {
    return PositionOperations::ToString<FixedSpacing2D, ArrayPosition2D>(value, "Position2D");
}

} // namespace Qor::Tivor
