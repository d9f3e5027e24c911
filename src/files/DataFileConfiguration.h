#pragma once

#include <QorCore/Stream.h>

#include <string>
#include <vector>

namespace Qor::Tivor {

/// What stands in a configuration of the data-file types.
struct DataFileConfiguration {
    std::string defaultFileType;
    std::vector<std::string> plugIns;
};

/// Both raise `DataFileConfigParseError`.
DataFileConfiguration ParseDataFileConfiguration(const std::string& fileName);
DataFileConfiguration ParseDataFileConfiguration(Core::BinaryInputStream& stream, const std::string& fileName);

} // namespace Qor::Tivor
