#include "DataBlock.h"

#include <QorCore/Message.h>
#include <Tivor/Serializer.h>

namespace Qor::Tivor {

namespace {

constexpr std::uint64_t largestHexData = 8;

[[noreturn]] void RaiseNoXML(const std::string& typeName) {
    Core::Error::RaiseError(Core::LogicError(Core::FormatText(
                                "Data of type %1% cannot take its XML form: XML is not built yet", {typeName})),
                            QOR_CODE_CONTEXT("Serializer"), "Qor.Tivor.Serializer");
}

} // namespace

const std::string Serializer::sDEFAULT_UINT64_ENCODING = "def/uint64";
const std::string Serializer::sDEFAULT_BASE64_ENCODING = "def/base64";
const std::string Serializer::sDEFAULT_HEX64_ENCODING = "def/hex64";

Serializer::~Serializer() = default;

std::string Serializer::GetXMLEncoding() {
    return GetDataSize_bytes() <= largestHexData ? sDEFAULT_HEX64_ENCODING : sDEFAULT_BASE64_ENCODING;
}

std::shared_ptr<XMLContentHandler>
Serializer::GetXMLContentHandler(const std::unordered_map<std::string, std::string>&) {
    RaiseNoXML(GetDataObject().GetTypeName());
}

void Serializer::DataToXML(std::ostream&, Core::XMLWriter&) { RaiseNoXML(GetDataObject().GetTypeName()); }

std::uint64_t Serializer::ToBinary(Core::BinaryOutputStream& stream) {
    const DataObjectHeader header(GetDataObject(), this);
    OutputPadded(stream, *this, header, "Qor.Tivor.Serializer");
    return header.dataSize;
}

std::uint64_t Serializer::GetSerializedDataObjectSize_bytes() const {
    auto& serializer = const_cast<Serializer&>(*this);
    const DataObjectHeader header(serializer.GetDataObject(), &serializer);
    return header.GetSize_bytes() + header.dataSize;
}

bool Serializer::IsDefaultEncoding(const std::string& encoding) { return encoding.starts_with("def/"); }

BuiltInSerializerBase::~BuiltInSerializerBase() = default;

std::string BuiltInSerializerBase::GetVersion() { return {}; }

std::string BuiltInSerializerBase::GetModule() { return "*"; }

} // namespace Qor::Tivor
