#pragma once

#include <Tivor/DataContainer.h>

#include <string>

namespace Qor::Tivor::Tool {

/// Where the second container is not the first one again: the keys that lead to the first entry that is missing, stands
/// elsewhere, or is stored as other bytes. Empty when they are the same.
std::string FindDifference(const DataContainer& expected, const DataContainer& found);

/// Whether two objects are stored as the same bytes, to the bit, as comparing values is not.
bool AreStoredAlike(DataObject& expected, DataObject& found);

} // namespace Qor::Tivor::Tool
