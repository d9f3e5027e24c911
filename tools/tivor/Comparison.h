#pragma once

#include "Ledger.h"

#include <Tivor/DataContainer.h>

namespace Qor::Tivor::Tool {

/// Adds to the ledger what became of the measured arrays of a container in another one that was made of it: another
/// element type, another scale, samples that are not the same to the bit, and those that are not there and nobody told
/// of. What the writer told of rounded samples gets the largest difference.
void TellChanges(const DataContainer& source, const DataContainer& written, Ledger& ledger);

} // namespace Qor::Tivor::Tool
