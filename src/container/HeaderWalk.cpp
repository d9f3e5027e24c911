#include <QorCore/BoundedStreams.h>
#include <QorCore/Message.h>
#include <Tivor/DataContainer.h>
#include <Tivor/Serializer.h>

#include <map>

namespace Qor::Tivor {

namespace {

using Path = std::vector<std::string>;

void SkipData(Core::BinaryInputStream& stream, std::uint64_t size) {
    if (const std::uint64_t skipped = stream.Skip(size); skipped < size)
        Core::Error::RaiseError(
            EndOfStreamOnInput(
                Core::FormatText("Expected %1% bytes of data, found the end of the stream after %2%", {size, skipped})),
            QOR_CODE_CONTEXT("DataContainer"), "Qor.Tivor.DataContainer.ForEachHeader");
}

void VisitStored(Core::BinaryInputStream& stream, Path& path, const DataContainer::HeaderVisitor& visit);

void VisitBlock(Core::BinaryInputStream& stream, Path& path, const DataObjectHeader& header,
                const DataContainer::HeaderVisitor& visit) {
    const std::string key = path.back();
    try {
        Core::BoundedInputStream block(stream, header.dataSize);
        if (WithoutFlag(header.typeCode) == eDATA_CONTAINER)
            VisitStored(block, path, visit);
        SkipData(block, block.Remaining());
    } catch (Core::Error& error) {
        error.AddVariable("Key", key);
        throw;
    }
}

void VisitStored(Core::BinaryInputStream& stream, Path& path, const DataContainer::HeaderVisitor& visit) {
    const NestingLevel level;
    DataObjectHeader header;
    for (;;) {
        std::string& key = path.emplace_back();
        SerializationManager::InputDataHeader(stream, key, header);
        if (header.IsEnd())
            break;
        if (visit(path, header))
            VisitBlock(stream, path, header, visit);
        else
            SkipData(stream, header.dataSize);
        path.pop_back();
    }
    path.pop_back();
}

using UnreadIn = std::multimap<Path, const UnreadEntry*>;

DataObjectHeader HeaderOf(const UnreadEntry& entry) {
    DataObjectHeader header;
    header.typeCode = entry.typeCode;
    header.typeName = entry.typeName;
    header.version = entry.version;
    header.module = entry.module;
    header.dataSize = entry.dataSize;
    return header;
}

void VisitObjects(const DataContainer& container, Path& path, const UnreadIn& unread,
                  const DataContainer::HeaderVisitor& visit) {
    for (const auto& [key, object] : container) {
        if (const auto serializer = object->GetSerializer()) {
            path.push_back(key);
            DataObjectHeader header(*object, serializer.get());
            if (WithoutFlag(header.typeCode) != eNO_TYPE) { // stored headers do not tell these
                header.version.clear();
                header.module = "*";
            }
            const auto below = container.GetPtr<DataContainer>(key);
            if (visit(path, header) && below)
                VisitObjects(*below, path, unread, visit);
            path.pop_back();
        }
    }
    for (auto [entry, end] = unread.equal_range(path); entry != end; ++entry)
        visit(entry->second->path, HeaderOf(*entry->second));
}

} // namespace

void DataContainer::ForEachHeader(Core::BinaryInputStream& stream, const HeaderVisitor& visit) {
    Path path;
    VisitStored(stream, path, visit);
}

void DataContainer::ForEachHeader(const DataContainer& container, const HeaderVisitor& visit,
                                  const std::vector<UnreadEntry>& unread) {
    UnreadIn unreadIn;
    for (const UnreadEntry& entry : unread)
        if (!entry.path.empty())
            unreadIn.emplace(Path(entry.path.begin(), entry.path.end() - 1), &entry);
    Path path;
    VisitObjects(container, path, unreadIn, visit);
}

} // namespace Qor::Tivor
