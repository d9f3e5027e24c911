#include "DataBlock.h"
#include "FramedWrite.h"
#include "ObjectCreation.h"
#include "ReadOperation.h"

#include <QorCore/Context.h>
#include <QorCore/Message.h>
#include <Tivor/SerializationManager.h>

#include <optional>

namespace Qor::Tivor {

DataObjectCreationFailed::~DataObjectCreationFailed() = default;
NullSerializer::~NullSerializer() = default;

namespace {

[[noreturn]] void RaiseNullSerializer(const std::string& typeName, const char* category) {
    Core::Error::RaiseError(
        NullSerializer(Core::FormatText("No serializer for data with class name = %1%", {typeName})),
        QOR_CODE_CONTEXT("SerializationManager"), category);
}

[[noreturn]] void RaiseUnknownError(const char* what, DataObject& object, Serializer* serializer) {
    Core::UnknownError error(Core::FormatText("Writing a data object failed: %1%", {what}));
    error.AddVariable("Data Type Name", object.GetTypeName());
    error.AddVariable("Module", serializer != nullptr ? serializer->GetModule() : "");
    Core::Error::RaiseError(std::move(error), QOR_CODE_CONTEXT("SerializationManager"),
                            "Qor.Tivor.SerializationManager");
}

void SkipBlock(Core::BinaryInputStream& stream, const DataObjectHeader& header, const char* category) {
    if (const std::uint64_t skipped = stream.Skip(header.dataSize); skipped < header.dataSize)
        Core::Error::RaiseError(
            EndOfStreamOnInput(Core::FormatText("The stream ended after %1% of the %2% bytes of data of a %3%",
                                                {skipped, header.dataSize, header.typeName})),
            QOR_CODE_CONTEXT("SerializationManager"), category);
}

} // namespace

std::uint64_t SerializationManager::OutputDataBlock(Core::BinaryOutputStream& stream, const std::string& dataName,
                                                    DataObject& object) {
    if (const std::optional<std::uint64_t> size = OutputBlockIfSerializable(stream, dataName, object))
        return *size;
    RaiseNullSerializer(object.GetTypeName(), "Qor.Tivor.SerializationManager");
}

std::optional<std::uint64_t> OutputBlockIfSerializable(Core::BinaryOutputStream& stream, const std::string& dataName,
                                                       DataObject& object) {
    std::optional<FramedWrite> outermost;
    if (FramedWrite::Current() == nullptr) {
        std::vector<std::shared_ptr<Core::Lock>> locks;
        object.AcquireLocks(locks);
        outermost.emplace(std::move(locks));
    }
    std::shared_ptr<Serializer> serializer;
    try {
        serializer = object.GetSerializer();
        if (!serializer)
            return std::nullopt;
        const DataObjectHeader header(object, serializer.get());
        Core::DataOutputStream(stream).Write(dataName);
        const std::uint64_t headerSize = header.Output(stream);
        OutputPadded(stream, *serializer, header, "Qor.Tivor.SerializationManager");
        return Core::GetSerializedStringSize(dataName) + headerSize + header.dataSize;
    } catch (Core::Error& error) {
        error.AddVariable("Key", dataName);
        throw;
    } catch (const std::exception& error) {
        RaiseUnknownError(error.what(), object, serializer.get());
    } catch (...) {
        RaiseUnknownError("an exception of unknown type", object, serializer.get());
    }
}

std::uint64_t SerializationManager::GetDataBlockSize_bytes(const std::string& dataName, DataObject& object) {
    const std::shared_ptr<Serializer> serializer = object.GetSerializer();
    if (!serializer)
        return 0;
    const DataObjectHeader header(object, serializer.get());
    return Core::GetSerializedStringSize(dataName) + header.GetSize_bytes() + header.dataSize;
}

std::shared_ptr<DataObject> SerializationManager::InputDataBlock(Core::BinaryInputStream& stream,
                                                                 const std::string& dataName,
                                                                 const DataObjectHeader& header, const char* category) {
    const ReadOperation reading;
    const ReadOperation::Entry entry(dataName);
    try {
        std::string reason;
        std::shared_ptr<DataObject> object = CreateObject(header, dataName, reason);
        if (!object) {
            ReadOperation::Current().KeepUnread(header, reason);
            Core::Warning::RaiseWarning(
                DataObjectCreationFailed(Core::FormatText(
                    "Attempt to deserialize data %1% failed to create the needed DataObject ( %2%, version %3%, from "
                    "module %4%) for the following reason: \r\n%5%",
                    {"named " + dataName, header.typeName, header.version, header.module, reason})),
                QOR_CODE_CONTEXT("SerializationManager"), category);
            SkipBlock(stream, header, category);
            return nullptr;
        }
        const std::shared_ptr<Serializer> serializer = object->GetSerializer();
        if (!serializer)
            RaiseNullSerializer(header.typeName, "Tivor.DataObject.FromBinary");
        InputBounded(stream, *serializer, header, "Qor.Tivor.DataObject");
        return object;
    } catch (Core::Error& error) {
        error.AddVariable("Key", dataName);
        throw;
    }
}

std::shared_ptr<DataObject> SerializationManager::InputDataObject(Core::BinaryInputStream& stream,
                                                                  std::string& dataName) {
    DataObjectHeader header;
    InputDataHeader(stream, dataName, header);
    return header.IsEnd() ? nullptr : InputDataBlock(stream, dataName, header, "Qor.Tivor.SerializationManager");
}

std::shared_ptr<DataObject> DataObject::FromBinary(Core::BinaryInputStream& stream) {
    DataObjectHeader header;
    header.Input(stream);
    return header.IsEnd() ? nullptr
                          : SerializationManager::InputDataBlock(stream, {}, header, "Tivor.DataObject.FromBinary");
}

NestingLevel::NestingLevel() {
    Core::Context& context = Core::Context::Current();
    if (context.nestingDepth >= context.limits.nesting)
        Core::Error::RaiseError(
            LimitExceeded(Core::FormatText("Containers are nested deeper than the %1% levels that are allowed",
                                           {context.limits.nesting})),
            QOR_CODE_CONTEXT("SerializationManager"), "Qor.Tivor.NestingLevel");
    ++context.nestingDepth;
}

NestingLevel::~NestingLevel() { --Core::Context::Current().nestingDepth; }

} // namespace Qor::Tivor
