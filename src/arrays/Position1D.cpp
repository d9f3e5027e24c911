#include "PositionOperations.h"

#include <Tivor/Position1D.h>

namespace Qor::Tivor {

template class GenericWrapper<Position1D>;

boost::logic::tribool ValueTraits<Position1D>::Equal(const Position1D& left, const Position1D& right) {
    return PositionOperations::Equal<FixedSpacing1D, ArrayPosition1D>(left, right);
}

std::string ValueTraits<Position1D>::ToString(const Position1D& value) {
    return PositionOperations::ToString<FixedSpacing1D, ArrayPosition1D>(value, "Position1D");
}

} // namespace Qor::Tivor
