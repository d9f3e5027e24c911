#pragma once

#include "Display.h"

#include <Tivor/DataFileTypeManager.h>

namespace Qor::Tivor::Tool {

/// The file types by their names, with extensions and descriptions.
using FileTypes = std::vector<std::shared_ptr<DataFile::Factory>>;

Json ToJson(const FileTypes& types);
void PrintText(std::ostream& out, const FileTypes& types);

/// The libraries that were to be plug-ins, with what became of each.
Json ToJson(const std::vector<DataFilePlugIn>& plugIns);
void PrintText(std::ostream& out, const std::vector<DataFilePlugIn>& plugIns);

bool AreAllLoaded(const std::vector<DataFilePlugIn>& plugIns);

} // namespace Qor::Tivor::Tool
