#include <Tivor/DataFile.h>

namespace Qor::Tivor {

DataFileError::~DataFileError() = default;
ClosedDataFileError::~ClosedDataFileError() = default;
ReadOnlyDataFileError::~ReadOnlyDataFileError() = default;
DroppingUnreadEntries::~DroppingUnreadEntries() = default;

DataFile::DataFile() : DataContainer(StandAlone()) {}

DataFile::~DataFile() = default;

std::shared_ptr<DataContainer> DataFile::GetMetaData(const std::string& name) {
    return GetSubData({sMETA_DATA, name}, false);
}

void DataFile::SetMetaData(const std::string& name, std::shared_ptr<DataContainer> metaData) {
    if (metaData) {
        if (const auto all = GetSubData({sMETA_DATA}, true))
            all->Put(name, std::move(metaData));
    } else if (const auto all = GetSubData({sMETA_DATA}, false)) {
        all->Remove(name);
    }
}

} // namespace Qor::Tivor
