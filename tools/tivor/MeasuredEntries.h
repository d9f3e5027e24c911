#pragma once

#include "Display.h"

#include <Tivor/DataFile.h>

namespace Qor::Tivor::Tool {

/// A surface or a profile that stands in a file, and where.
struct MeasuredEntry {
    Path path;
    std::shared_ptr<DataObject> object;
    std::shared_ptr<const Data2D> surface; ///< or empty
    std::shared_ptr<const Data1D> profile; ///< or empty
};

/// Those to which the keys lead, or below; in the order of the entries. Raises as `FindObject`.
std::vector<MeasuredEntry> FindMeasured(DataFile& file, const Path& keys);
/// Where the file's primary surface stands in the layout of data sets; empty when it tells none.
Path FindPrimary(const DataFile& file);
/// The kind, if it is known, and the keys: what a picture is called.
std::string TitleOf(const MeasuredEntry& entry);

} // namespace Qor::Tivor::Tool
