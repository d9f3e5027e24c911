#include "CollectionSerializer.h"

#include <Tivor/CollectionSerialization.h>

namespace Qor::Tivor {

#define TIVOR_VALUE TIVOR_DEFINE_VALUE
TIVOR_NUMBER_COLLECTION_VALUES

} // namespace Qor::Tivor
