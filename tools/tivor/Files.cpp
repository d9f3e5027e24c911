#include "Files.h"

#include <QorCore/BinaryFileStream.h>
#include <QorCore/Message.h>
#include <QorCore/PathName.h>
#include <Tivor/DataFileTypeManager.h>
#include <Tivor/DataObjectFactory.h>

#include <algorithm>

namespace Qor::Tivor::Tool {

namespace {

constexpr std::size_t longestList = 10;

void RequireFile(const std::string& fileName) {
    if (!Core::PathName(fileName).Exists())
        Fail(Core::FormatText("%1%: expected a data file, found no file of that name", {Show(fileName)}));
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

std::shared_ptr<DataFile> OpenFile(const std::string& fileName, DataFile::EAccess access) {
    RequireFile(fileName);
    auto file = DataFile::Open(fileName, access, DataFile::eOPEN_EXISTING, "", nullptr);
    if (!file)
        Fail(Core::FormatText("%1%: expected a file that can be opened for %2%, found one that cannot",
                              {Show(fileName), access == DataFile::eREAD_ONLY ? "reading" : "writing"}));
    return file;
}

std::string ChooseFileType(const std::string& fileName) {
    DataFileTypeManager& manager = DataFileTypeManager::Instance();
    const auto factory = manager.FindFactoryByExtension(fileName);
    return (factory ? factory : manager.GetDefaultFactory())->GetFileType();
}

std::uint64_t GetFileSize(const std::string& fileName) {
    Core::BinaryFileStream stream;
    return stream.Open(fileName, true, DataFile::eOPEN_EXISTING) ? stream.GetSize() : 0;
}

void RaiseNoSuchKey(const Path& path, const std::vector<std::string>& present) {
    Fail(Core::FormatText("%1%: no such key; the keys there: %2%", {ShowPath(path), ListKeys(present)}));
}

std::shared_ptr<DataObject> FindObject(DataFile& file, const Path& keys) {
    std::shared_ptr<DataObject> object;
    DataContainer* container = &file;
    std::shared_ptr<DataContainer> owner;
    for (std::size_t level = 0; level < keys.size(); ++level) {
        const Path path(keys.begin(), keys.begin() + static_cast<std::ptrdiff_t>(level) + 1);
        if (container == nullptr)
            Fail(Core::FormatText("%1%: expected a container, found a %2%",
                                  {ShowPath({path.begin(), path.end() - 1}), object->GetTypeName()}));
        object = container->Get(keys[level]);
        if (!object) {
            std::vector<std::string> present;
            container->EnumData(present);
            RaiseNoSuchKey(path, present);
        }
        owner = container->GetPtr<DataContainer>(keys[level]);
        container = owner.get();
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
