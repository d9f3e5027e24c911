#include <QorCore/Context.h>
#include <QorCore/Message.h>
#include <Tivor/SerializationManager.h>

#include <limits>

namespace Qor::Tivor {

EndOfStreamOnInput::~EndOfStreamOnInput() = default;
InputInvalidTypeID::~InputInvalidTypeID() = default;
LimitExceeded::~LimitExceeded() = default;

namespace {

const char* const category = "Qor.Tivor.DataObjectHeader.Input";

[[noreturn]] void RaiseEndOfStream(const char* where, const char* raisedBy = category) {
    Core::Error::RaiseError(EndOfStreamOnInput(Core::FormatText("The stream ended before the end of %1%", {where})),
                            QOR_CODE_CONTEXT("SerializationManager"), raisedBy);
}

// A name in the stored string form, whose length is limited beyond what the stream holds.
std::uint64_t InputName(Core::DataInputStream& stream, std::string& name, std::uint32_t limit, const char* what) {
    std::uint32_t size = 0;
    if (!stream.Read(size))
        RaiseEndOfStream(what);
    if (size > limit)
        Core::Error::RaiseError(
            LimitExceeded(
                Core::FormatText("A length of %1% bytes was found for %2% where %3% are allowed", {size, what, limit})),
            QOR_CODE_CONTEXT("SerializationManager"), category);
    if (!stream.ReadBytes(name, size))
        RaiseEndOfStream(what);
    return Core::GetSerializedStringSize(name);
}

unsigned SizeFieldWidth(std::uint64_t dataSize) {
    if (dataSize <= std::numeric_limits<std::uint8_t>::max())
        return 1;
    if (dataSize <= std::numeric_limits<std::uint16_t>::max())
        return 2;
    return dataSize <= std::numeric_limits<std::uint32_t>::max() ? 4 : 8;
}

} // namespace

DataObjectHeader::DataObjectHeader(DataObject& object) : DataObjectHeader(object, object.GetSerializer().get()) {}

DataObjectHeader::DataObjectHeader(DataObject& object, Serializer* serializer)
    : typeCode(static_cast<std::uint16_t>(object.GetTypeID())), typeName(object.GetTypeName()) {
    if (serializer == nullptr)
        return;
    version = serializer->GetVersion();
    module = serializer->GetModule();
    dataSize = serializer->GetDataSize_bytes();
    sizeIsConstant = serializer->DataSizeIsConstant();
}

bool DataObjectHeader::HasSizeField() const {
    const std::uint16_t code = WithoutFlag(typeCode);
    return code == eNO_TYPE || CarriesClassName(code) || !sizeIsConstant;
}

void DataObjectHeader::InitBuiltInHeaderInfo() {
    const TypeFacts* const facts = FindTypeFacts(typeCode);
    version.clear();
    module = "*";
    typeName = facts != nullptr ? facts->className : std::string_view();
    sizeIsConstant = facts != nullptr && facts->header == EHeaderKind::fixedSize;
    dataSize = sizeIsConstant ? facts->constantSize : 0;
}

std::uint64_t DataObjectHeader::Input(Core::BinaryInputStream& binaryStream) {
    Core::DataInputStream stream(binaryStream);
    const std::uint32_t limit = Core::Context::Current().limits.nameBytes;
    std::uint8_t storedCode = 0;
    if (!stream.Read(storedCode))
        RaiseEndOfStream("the type code");
    typeCode = storedCode;
    std::uint64_t size = sizeof storedCode;
    const std::uint16_t code = WithoutFlag(typeCode);
    if (code == eESCAPE) {
        if (!stream.Read(typeCode))
            RaiseEndOfStream("the escaped type code");
        if (typeCode != endCode)
            Core::Error::RaiseError(
                InputInvalidTypeID(Core::FormatText("Invalid escaped type identifier %1% where only %2% is allowed",
                                                    {typeCode, endCode})),
                QOR_CODE_CONTEXT("SerializationManager"), category);
        return size + sizeof typeCode;
    }
    InitBuiltInHeaderInfo();
    if (code == eNO_TYPE || CarriesClassName(code))
        size += InputName(stream, typeName, limit, "the class name");
    if (code == eNO_TYPE) {
        size += InputName(stream, version, limit, "the version");
        size += InputName(stream, module, limit, "the module name");
    }
    return HasSizeField() ? size + InputDataSize(stream) : size;
}

std::uint64_t DataObjectHeader::InputDataSize(Core::DataInputStream& stream) {
    const auto require = [](bool whole) {
        if (!whole)
            RaiseEndOfStream("the data size", "Qor.Tivor.DataObjectHeader.InputDataSize");
    };
    const auto read = [&]<class T>(T narrow) {
        require(stream.Read(narrow));
        dataSize = narrow;
        return 1 + sizeof narrow;
    };
    std::uint8_t width = 0;
    require(stream.Read(width));
    switch (width) {
    case 0:
        dataSize = 0;
        return 1;
    case 1:
        return read(std::uint8_t{});
    case 2:
        return read(std::uint16_t{});
    case 4:
        return read(std::uint32_t{});
    default:
        return read(std::uint64_t{});
    }
}

std::uint64_t DataObjectHeader::Output(Core::BinaryOutputStream& binaryStream) const {
    Core::DataOutputStream stream(binaryStream);
    const std::uint16_t code = WithoutFlag(typeCode);
    stream.Write(static_cast<std::uint8_t>(typeCode));
    if (code == eNO_TYPE || CarriesClassName(code))
        stream.Write(typeName);
    if (code == eNO_TYPE) {
        stream.Write(version);
        stream.Write(module);
    }
    if (HasSizeField()) {
        const unsigned width = SizeFieldWidth(dataSize);
        stream.Write(static_cast<std::uint8_t>(width));
        binaryStream.Write(&dataSize, width); // the low bytes come first
    }
    return GetSize_bytes();
}

std::uint64_t DataObjectHeader::GetSize_bytes() const {
    const std::uint16_t code = WithoutFlag(typeCode);
    std::uint64_t size = 1;
    if (code == eNO_TYPE || CarriesClassName(code))
        size += Core::GetSerializedStringSize(typeName);
    if (code == eNO_TYPE)
        size += Core::GetSerializedStringSize(version) + Core::GetSerializedStringSize(module);
    return HasSizeField() ? size + 1 + SizeFieldWidth(dataSize) : size;
}

std::uint64_t SerializationManager::InputDataHeader(Core::BinaryInputStream& binaryStream, std::string& dataName,
                                                    DataObjectHeader& header) {
    Core::DataInputStream stream(binaryStream);
    const std::uint64_t size = InputName(stream, dataName, Core::Context::Current().limits.keyBytes, "the data name");
    return size + header.Input(binaryStream);
}

} // namespace Qor::Tivor
