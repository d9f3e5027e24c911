#include "DataBlock.h"
#include "DataDecoders.h"
#include "DefaultXML.h"
#include "KeptXML.h"
#include "XMLAttributes.h"

#include <QorCore/Message.h>
#include <Tivor/Serializer.h>

namespace Qor::Tivor {

namespace {

constexpr std::uint64_t largestHexData = 8;

const char* const xmlCategory = "Qor.Tivor.Serializer.GetXMLContentHandler";

const std::string& RequireAttribute(const XMLAttributes& attributes, const char* name) {
    if (const std::string* const value = FindXMLAttribute(attributes, name))
        return *value;
    Core::Error::RaiseError(MissingXMLAttribute(Core::FormatText("Missing required %1% attribute for XML data %2%",
                                                                 {name, DescribeXMLKey(attributes)})),
                            QOR_CODE_CONTEXT("Serializer"), xmlCategory);
}

// Kept data knows its size when it is read.
std::optional<std::uint64_t> GetDeclaredSize(Serializer& serializer, const XMLAttributes& attributes) {
    if (const std::optional<std::uint64_t> size = GetXMLSize(attributes))
        return size;
    if (serializer.DataSizeIsConstant())
        return serializer.GetDataSize_bytes();
    if (dynamic_cast<const KeptXML*>(&serializer) == nullptr)
        RequireAttribute(attributes, "size");
    return std::nullopt;
}

} // namespace

const std::string Serializer::sDEFAULT_UINT64_ENCODING = "def/uint64";
const std::string Serializer::sDEFAULT_BASE64_ENCODING = "def/base64";
const std::string Serializer::sDEFAULT_HEX64_ENCODING = "def/hex64";

InvalidXMLEncoding::~InvalidXMLEncoding() = default;
MissingXMLAttribute::~MissingXMLAttribute() = default;

Serializer::~Serializer() = default;

std::string Serializer::GetXMLEncoding() {
    return GetDataSize_bytes() <= largestHexData ? sDEFAULT_HEX64_ENCODING : sDEFAULT_BASE64_ENCODING;
}

std::shared_ptr<XMLContentHandler>
Serializer::GetXMLContentHandler(const std::unordered_map<std::string, std::string>& attributes) {
    const std::string& encoding = RequireAttribute(attributes, "encoding");
    const DataTarget target(*this, GetDeclaredSize(*this, attributes));
    if (encoding == sDEFAULT_UINT64_ENCODING)
        return std::make_shared<UINT64DataDecoder>(target);
    if (encoding == sDEFAULT_HEX64_ENCODING)
        return std::make_shared<Hex64DataDecoder>(target);
    if (encoding == sDEFAULT_BASE64_ENCODING)
        return std::make_shared<Base64DataDecoder>(target);
    Core::Error::RaiseError(InvalidXMLEncoding(Core::FormatText("Invalid xml encoding of \"%1%\" for XML data %2%",
                                                                {encoding, DescribeXMLKey(attributes)})),
                            QOR_CODE_CONTEXT("Serializer"), xmlCategory);
}

void Serializer::DataToXML(std::ostream& stream, Core::XMLWriter& writer) {
    if (GetDataSize_bytes() <= largestHexData)
        OutputHex64(stream, writer, *this);
    else
        OutputBase64(stream, writer, *this);
}

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
