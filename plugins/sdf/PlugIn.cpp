#include "../common/MeasurementFile.h"
#include "Sdf.h"

#include <Tivor/PlugIn.h>

TIVOR_REGISTER_DATA_FILE_TYPES(manager) {
    using namespace Qor::Tivor::Measurements;
    manager.SetFactory(std::make_shared<MeasurementFileFactory<Sdf>>());
}
