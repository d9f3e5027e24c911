#include <Tivor/DataKinds.h>

namespace Qor::Tivor {

#define TIVOR_ROW(name, text) const std::string name = text;
TIVOR_DATA_KINDS(TIVOR_ROW)
#undef TIVOR_ROW

} // namespace Qor::Tivor
