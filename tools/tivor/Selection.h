#pragma once

#include <Tivor/DataContainer.h>

#include <memory>
#include <string>
#include <vector>

namespace Qor::Tivor::Tool {

// Both make new containers of those of the source; entries that stay as they are are shared with it.

/// Without the measured arrays whose kind and key are none of these. Of a data set the channels and the primary surface
/// are those of what is left. Raises a `ToolError` for one that no array has.
std::shared_ptr<DataContainer> KeepChannels(const DataContainer& source, const std::vector<std::string>& channels);

/// With the samples of all measured arrays as this element type. Samples that have none of its values next to them, and
/// for integers all that are not exactly one, are a `ToolError` that tells where.
std::shared_ptr<DataContainer> WithElementType(const DataContainer& source, const std::string& typeName);

} // namespace Qor::Tivor::Tool
