#include "Files.h"

#include "Commands.h"
#include "SameEntries.h"
#include "SameMeasurements.h"
#include "Values.h"

#include <QorCore/BinaryFileStream.h>
#include <QorCore/FileSystem.h>
#include <QorCore/Message.h>
#include <QorCore/PathName.h>
#include <QorCore/System.h>
#include <Tivor/BinaryDataFile.h>
#include <Tivor/DataFileTypeManager.h>
#include <Tivor/DataObjectFactory.h>
#include <Tivor/XMLDataFile.h>

#include <algorithm>
#include <utility>

namespace Qor::Tivor::Tool {

namespace {

constexpr std::size_t longestList = 10;

bool GetInfo(const Core::PathName& path, Core::FileInfo& info) {
    return Core::FileSystem::Current().GetInfo(path, info).IsOk();
}

std::string ListKeys(const std::vector<std::string>& keys) {
    if (keys.empty())
        return "none";
    std::string list;
    for (std::size_t i = 0; i < std::min(keys.size(), longestList); ++i)
        list += (i > 0 ? ", " : "") + Show(keys[i]);
    return keys.size() > longestList ? list + " and " + std::to_string(keys.size() - longestList) + " more" : list;
}

} // namespace

void RequireFile(const std::string& fileName) {
    if (!Core::PathName(fileName).Exists())
        Fail(Core::FormatText("%1%: expected a data file, found no file of that name", {Show(fileName)}));
}

void RequireNewFile(const std::string& fileName, bool overwrites) {
    if (!overwrites && Core::PathName(fileName).Exists())
        Fail(Core::FormatText("%1%: expected a new file, found one of that name; --force replaces it",
                              {Show(fileName)}));
}

void RequireTarget(const std::string& source, const std::string& target, bool overwrites) {
    if (AreSameFile(source, target))
        Fail(Core::FormatText("%1%: expected another file to write to, found the one that is read", {Show(target)}));
    if (IsFolder(target))
        Fail(Core::FormatText("%1%: expected the name of a file, found a folder", {Show(target)}));
    RequireNewFile(target, overwrites);
}

void RequireNothingUnread(const DataFile& file, const std::string& fileName, bool dropsUnread) {
    const auto unread = file.GetUnreadEntries();
    if (unread.empty() || dropsUnread)
        return;
    ToolError error(Core::FormatText("%1%: saving drops %2% that cannot be read; --drop-unread does so",
                                     {Show(fileName), Count(unread.size(), "entry", "entries")}));
    for (std::size_t i = 0; i < std::min(unread.size(), longestList); ++i)
        error.AddVariable(ShowPath(unread[i].path) + " of class " + Show(unread[i].typeName), unread[i].reason);
    Core::Error::RaiseError(std::move(error), QOR_CODE_CONTEXT("Tool"), category);
}

FileBeside::FileBeside(const std::string& fileName)
    : m_fileName(fileName), m_beside(fileName + '.' + std::to_string(Core::System::GetProcessNumber()) + ".new") {}

FileBeside::~FileBeside() { Core::FileSystem::Current().Remove(Core::PathName(m_beside)); }

std::shared_ptr<DataFile> FileBeside::Make(const std::string& fileType) {
    auto file = DataFile::Open(m_beside, DataFile::eREAD_WRITE, DataFile::eCREATE_ALWAYS, fileType, nullptr);
    if (!file)
        Fail(Core::FormatText("%1%: expected a place where a file can be made, found none", {Show(m_fileName)}));
    return file;
}

void FileBeside::TakePlace() { Core::System::Replace(Core::PathName(m_beside), Core::PathName(m_fileName)); }

namespace {

/// Whether files of that type hold measurements, not whatever entries there are.
bool IsOfMeasurements(const std::string& fileType) {
    return fileType != BinaryDataFile::sFILE_TYPE && fileType != XMLDataFile::sFILE_TYPE;
}

} // namespace

std::uint64_t SaveAs(const DataContainer& entries, const std::string& fileName, const std::string& fileType,
                     Console& console, const Acceptance& accept) {
    FileBeside beside(fileName);
    {
        const auto made = beside.Make(fileType);
        made->Assign(entries);
        made->Flush();
    }
    console.hidesWarnings = true; // they were seen when the entries were read
    const auto found =
        DataFile::Open(beside.GetName(), DataFile::eREAD_ONLY, DataFile::eOPEN_EXISTING, fileType, nullptr);
    const std::string difference = found ? FindDifference(entries, *found) : "all of it";
    // Formats of measurements keep these, and tell what else they lose.
    if (!difference.empty() &&
        !(found && IsOfMeasurements(fileType) && FindForeignMeasurement(entries, *found).empty()))
        Fail(Core::FormatText("%1%: expected to read what was written, found %2% to be different; nothing is saved",
                              {Show(fileName), difference}));
    if (accept)
        accept(*found, difference.empty());
    found->Close();
    const std::uint64_t size = GetFileSize(beside.GetName());
    beside.TakePlace();
    return size;
}

std::shared_ptr<DataFile> OpenFile(const std::string& fileName, DataFile::EAccess access) {
    RequireFile(fileName);
    auto file = DataFile::Open(fileName, access, DataFile::eOPEN_EXISTING, "", nullptr);
    if (!file)
        Fail(Core::FormatText("%1%: expected a file that can be opened for %2%, found one that cannot",
                              {Show(fileName), access == DataFile::eREAD_ONLY ? "reading" : "writing"}));
    return file;
}

bool IsFolder(const std::string& name) {
    Core::FileInfo info;
    return GetInfo(Core::PathName(name), info) && info.kind == Core::eFILE_DIRECTORY;
}

bool AreSameFile(const std::string& one, const std::string& other) {
    Core::FileInfo ofOne, ofOther;
    return GetInfo(Core::PathName(one), ofOne) && GetInfo(Core::PathName(other), ofOther) && ofOne.IsSameFile(ofOther);
}

bool StandsIn(const std::string& inner, const std::string& outer) {
    Core::PathName path(inner);
    while (!path.IsEmpty() && !path.Exists())
        path = path.GetDirectory();
    if (path.IsEmpty())
        path = Core::PathName(".");
    Core::PathName above = path / "..";
    while (!AreSameFile(path.ToString(), outer)) {
        if (!above.Exists() || AreSameFile(path.ToString(), above.ToString()))
            return false;
        path = std::exchange(above, above / "..");
    }
    return true;
}

std::string ChooseFileType(const std::string& fileName) {
    DataFileTypeManager& manager = DataFileTypeManager::Instance();
    const auto factory = manager.FindFactoryByExtension(fileName);
    return (factory ? factory : manager.GetDefaultFactory())->GetFileType();
}

std::string ListFileTypes() {
    std::string list;
    for (const auto& factory : DataFileTypeManager::Instance().GetFactories()) {
        list += (list.empty() ? "" : ", ") + Show(factory->GetFileType()) + " (";
        std::vector<std::string> extensions;
        factory->EnumExtensions(extensions);
        for (const std::string& extension : extensions)
            list += (list.ends_with('(') ? "." : " .") + OneLine(extension);
        list += ')';
    }
    return list;
}

std::uint64_t GetFileSize(const std::string& fileName) {
    Core::BinaryFileStream stream;
    if (!stream.Open(fileName, true, DataFile::eOPEN_EXISTING))
        Fail(Core::FormatText("%1%: expected a file that can be opened for reading, found one that cannot",
                              {Show(fileName)}));
    return stream.GetSize();
}

void RaiseNoSuchKey(const Path& path, const std::vector<std::string>& present) {
    Fail(Core::FormatText("%1%: no such key; the keys there: %2%", {ShowPath(path), ListKeys(present)}));
}

std::shared_ptr<DataObject> FindObject(DataFile& file, const Path& keys) {
    std::shared_ptr<DataObject> object;
    const DataContainer* container = &file;
    std::shared_ptr<const DataContainer> entries;
    for (std::size_t level = 0; level < keys.size(); ++level) {
        const Path path(keys.begin(), keys.begin() + static_cast<std::ptrdiff_t>(level) + 1);
        if (container == nullptr)
            Fail(Core::FormatText("%1%: expected a container, found a %2%",
                                  {ShowPath({path.begin(), path.end() - 1}), object->GetTypeName()}));
        object = std::const_pointer_cast<DataObject>(container->Get(keys[level]));
        if (!object) {
            std::vector<std::string> present;
            container->EnumData(present);
            RaiseNoSuchKey(path, present);
        }
        entries = EntriesIn(*object);
        container = entries.get();
    }
    return object;
}

std::string ForEachHeader(const std::string& fileName, const DataContainer::HeaderVisitor& visit) {
    RequireFile(fileName);
    Path last;
    try {
        return DataFile::ForEachHeader(fileName, "", [&](const Path& path, const DataObjectHeader& header) {
            last = path;
            return visit(path, header);
        });
    } catch (Core::Error& error) {
        if (!last.empty())
            error.AddVariable("Last entry", ShowPath(last));
        throw;
    }
}

bool IsForeign(const DataObjectHeader& header) { return WithoutFlag(header.typeCode) == eNO_TYPE; }

bool IsReadable(const DataObjectHeader& header) {
    return IsForeign(header) || DataObjectFactory::Instance().CreateBuiltInDataObject(
                                    static_cast<ETypeID>(header.typeCode), header.typeName) != nullptr;
}

bool StartsWith(const Path& path, const Path& beginning) {
    return path.size() >= beginning.size() && std::equal(beginning.begin(), beginning.end(), path.begin());
}

std::string ListUnread(const std::vector<UnreadEntry>& entries) {
    std::string list;
    for (std::size_t i = 0; i < std::min(entries.size(), longestList); ++i)
        list += "       " + ShowPath(entries[i].path) + " of class " + Show(entries[i].typeName) + ": " +
                OneLine(entries[i].reason) + '\n';
    if (entries.size() > longestList)
        list += "       and " + std::to_string(entries.size() - longestList) + " more\n";
    return list;
}

} // namespace Qor::Tivor::Tool
