#include "../serialization/DataBlock.h"
#include "../serialization/FramedWrite.h"
#include "../serialization/ReadOperation.h"
#include "ContainerState.h"

#include <QorCore/LockSet.h>
#include <QorCore/Message.h>

namespace Qor::Tivor {

namespace {

const char* const inputCategory = "Qor.Tivor.DataContainer.InputData";

std::uint64_t OutputEndMarker(Core::BinaryOutputStream& binaryStream) {
    Core::DataOutputStream stream(binaryStream);
    stream.Write(std::string_view());
    stream.Write(static_cast<std::uint8_t>(eESCAPE));
    stream.Write(DataObjectHeader::endCode);
    return Core::GetSerializedStringSize({}) + 3;
}

} // namespace

std::uint64_t DataContainer::OutputData(Core::BinaryOutputStream& stream, bool lock) const {
    const NestingLevel level;
    const LockedWrite locked(*this, lock);
    std::uint64_t size = 0;
    for (const Entry& entry : *this)
        size += OutputBlockIfSerializable(stream, entry.key, *entry.object).value_or(0);
    return size + OutputEndMarker(stream);
}

std::uint64_t DataContainer::InputData(Core::BinaryInputStream& stream) {
    std::uint64_t bytesRead = 0;
    Atomically([&] {
        if (IsEmpty()) {
            try {
                ReadEntries(stream, bytesRead);
            } catch (...) {
                DataContainer::Clear();
                throw;
            }
        } else {
            DataContainer read(DefaultsToLockableData());
            read.ReadEntries(stream, bytesRead);
            PutAll(read.begin());
        }
    });
    return bytesRead;
}

void DataContainer::ReadEntries(Core::BinaryInputStream& stream, std::uint64_t& bytesRead) {
    const NestingLevel level;
    const ReadOperation reading;
    const bool lockable = DefaultsToLockableData();
    std::string key;
    DataObjectHeader header;
    for (;;) {
        bytesRead += SerializationManager::InputDataHeader(stream, key, header);
        if (header.IsEnd())
            return;
        std::shared_ptr<DataObject> object = SerializationManager::InputDataBlock(stream, key, header, inputCategory);
        bytesRead += header.dataSize;
        if (!object)
            continue;
        if (lockable)
            object->EnableDataLocking();
        PutDataObject(key, std::move(object));
    }
}

} // namespace Qor::Tivor
