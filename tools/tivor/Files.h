#pragma once

#include "Display.h"

#include <Tivor/DataFile.h>

#include <functional>

namespace Qor::Tivor::Tool {

struct Console;

/// Opens a file that exists.
std::shared_ptr<DataFile> OpenFile(const std::string& fileName, DataFile::EAccess access);
void RequireFile(const std::string& fileName);
/// That there is no file of that name yet, or that it may be replaced.
void RequireNewFile(const std::string& fileName, bool overwrites);
/// That another file than the source may be made there.
void RequireTarget(const std::string& source, const std::string& target, bool overwrites);
/// That saving the file's entries loses none, or may do so.
void RequireNothingUnread(const DataFile& file, const std::string& fileName, bool dropsUnread);

bool IsFolder(const std::string& name);
bool AreSameFile(const std::string& one, const std::string& other);
/// Whether a folder, which need not exist, is the other one or will stand in it, by whatever names.
bool StandsIn(const std::string& inner, const std::string& outer);

/// The type of a new file: the one that has its extension, else the default.
std::string ChooseFileType(const std::string& fileName);
/// The file types with their extensions, on one line.
std::string ListFileTypes();

/// A data file that is made beside the place where it belongs, and takes that place when it is complete: what stands
/// there stays as it is until then, and when that does not happen nothing is left of the new one.
class FileBeside {
public:
    explicit FileBeside(const std::string& fileName);
    FileBeside(const FileBeside&) = delete;
    FileBeside& operator=(const FileBeside&) = delete;
    ~FileBeside();

    /// An empty file, once.
    std::shared_ptr<DataFile> Make(const std::string& fileType);
    const std::string& GetName() const { return m_beside; }
    void TakePlace();

private:
    std::string m_fileName;
    std::string m_beside;
};

/// What is read of a file that was written, and whether that is the same to the bit as what was to be written.
using Acceptance = std::function<void(const DataContainer& written, bool isSame)>;

/// Makes a file of these entries, and takes nothing for saved before it was read and is the same. Returns its bytes.
/// Nothing is saved when `accept` raises something.
std::uint64_t SaveAs(const DataContainer& entries, const std::string& fileName, const std::string& fileType,
                     Console& console, const Acceptance& accept = {});

/// The bytes on disk.
std::uint64_t GetFileSize(const std::string& fileName);

/// The object that the keys lead to, also the property of a measured array; null for no keys, which lead to the file
/// itself. Where they lead nowhere, the error tells which keys are there.
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
