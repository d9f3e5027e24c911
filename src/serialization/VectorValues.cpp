#include "CollectionSerializer.h"

namespace Qor::Tivor {

#define TIVOR_VALUE TIVOR_DEFINE_VALUE
TIVOR_VECTOR_VALUES

} // namespace Qor::Tivor
