#pragma once

#include "Display.h"

#include <Tivor/DataFile.h>

#include <functional>

namespace Qor::Tivor::Tool {

/// Opens a file that exists.
std::shared_ptr<DataFile> OpenFile(const std::string& fileName, DataFile::EAccess access);
/// The type of a new file: the one that has its extension, else the default.
std::string ChooseFileType(const std::string& fileName);
/// The bytes on disk.
std::uint64_t GetFileSize(const std::string& fileName);

/// The object that the keys lead to; null for no keys, which lead to the file itself. Where they lead nowhere, the
/// error tells which keys are there.
std::shared_ptr<DataObject> FindObject(DataFile& file, const Path& keys);
[[noreturn]] void RaiseNoSuchKey(const Path& path, const std::vector<std::string>& present);

/// Visits the headers; returns the file's type. The error of a damaged file tells after which entry it is damaged.
std::string ForEachHeader(const std::string& fileName, const DataContainer::HeaderVisitor& visit);
/// Whether the entries of such a header can be read, or are kept as they are.
bool IsReadable(const DataObjectHeader& header);
/// Whether the entry's class is none of the library's.
bool IsForeign(const DataObjectHeader& header);

bool StartsWith(const Path& path, const Path& beginning);
/// One line for each, up to ten.
std::string ListUnread(const std::vector<UnreadEntry>& entries);

} // namespace Qor::Tivor::Tool
