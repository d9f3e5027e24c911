#include "DataBlock.h"
#include "FramedWrite.h"
#include "ObjectCreation.h"
#include "ReadOperation.h"
#include "XMLElement.h"

#include <QorCore/Context.h>
#include <QorCore/Message.h>
#include <QorCore/XMLWriter.h>
#include <Tivor/SerializationManager.h>

#include <optional>

namespace Qor::Tivor {

namespace {

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

// Holds the object's locks while `write` works with its serializer; false when it has none.
template <class Write>
bool WriteFramed(DataObject& object, const std::string& dataName, Write write) {
    const LockedWrite locked(object);
    std::shared_ptr<Serializer> serializer;
    try {
        serializer = object.GetSerializer();
        if (!serializer)
            return false;
        write(*serializer);
        return true;
    } catch (Core::Error& error) {
        error.AddVariable("Key", dataName);
        throw;
    } catch (const std::exception& error) {
        RaiseUnknownError(error.what(), object, serializer.get());
    } catch (...) {
        RaiseUnknownError("an exception of unknown type", object, serializer.get());
    }
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
    std::uint64_t size = 0;
    const bool isWritten = WriteFramed(object, dataName, [&](Serializer& serializer) {
        const DataObjectHeader header(object, &serializer);
        Core::DataOutputStream(stream).Write(dataName);
        const std::uint64_t headerSize = header.Output(stream);
        OutputPadded(stream, serializer, header, "Qor.Tivor.SerializationManager");
        size = Core::GetSerializedStringSize(dataName) + headerSize + header.dataSize;
    });
    return isWritten ? std::optional(size) : std::nullopt;
}

void SerializationManager::OutputXML(std::ostream& stream, Core::XMLWriter& writer, const std::string& dataName,
                                     DataObject& object) {
    if (!OutputXMLIfSerializable(stream, writer, dataName, object))
        RaiseNullSerializer(object.GetTypeName(), "Qor.Tivor.SerializationManager");
}

bool OutputXMLIfSerializable(std::ostream& stream, Core::XMLWriter& writer, const std::string& dataName,
                             DataObject& object) {
    return WriteFramed(object, dataName, [&](Serializer& serializer) {
        OutputXMLHeader(stream, writer, object, serializer, dataName);
        serializer.ToXML(stream, writer);
        writer.EndTag(stream);
    });
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
            WarnOfCreationFailure(header, dataName, reason, category);
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
