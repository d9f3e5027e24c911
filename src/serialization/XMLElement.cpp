#include "XMLElement.h"

#include "KeptXML.h"
#include "ObjectCreation.h"
#include "XMLAttributes.h"

#include <QorCore/XMLWriter.h>

namespace Qor::Tivor {

namespace {

std::optional<std::uint64_t> GetWrittenSize(const Serializer& serializer, const DataObjectHeader& header) {
    std::optional<std::uint64_t> declaredSize;
    if (const auto* const kept = dynamic_cast<const KeptXML*>(&serializer); kept && kept->KeepsXML(declaredSize))
        return declaredSize;
    return header.HasSizeField() ? std::optional(header.dataSize) : std::nullopt;
}

void StartElement(std::ostream& stream, Core::XMLWriter& writer, const char* tag, const std::string& dataName,
                  std::uint16_t typeCode) {
    writer.StartTag(stream, tag);
    if (!dataName.empty())
        writer.AnyAttribute(stream, "key", dataName);
    writer.Attribute(stream, "typeid", std::to_string(typeCode));
}

} // namespace

void OutputXMLHeader(std::ostream& stream, Core::XMLWriter& writer, DataObject& object, Serializer& serializer,
                     const std::string& dataName) {
    const DataObjectHeader header(object, &serializer);
    const std::uint16_t code = WithoutFlag(header.typeCode);
    StartElement(stream, writer, code == eDATA_CONTAINER ? containerTag : dataTag, dataName, header.typeCode);
    if (code == eDATA_CONTAINER)
        return;
    if (code == eNO_TYPE || CarriesClassName(code))
        writer.AnyAttribute(stream, "typename", header.typeName);
    if (code == eNO_TYPE && !header.module.empty())
        writer.AnyAttribute(stream, "module", header.module);
    if (code == eNO_TYPE && !header.version.empty())
        writer.AnyAttribute(stream, "version", header.version);
    if (const auto size = GetWrittenSize(serializer, header))
        writer.Attribute(stream, "size", std::to_string(*size));
    if (const std::string encoding = serializer.GetXMLEncoding(); !encoding.empty())
        writer.AnyAttribute(stream, "encoding", encoding);
}

void SerializationManager::OutputXMLHeader(std::ostream& stream, Core::XMLWriter& writer, const DataObject& object,
                                           const std::string& dataName) {
    auto& asked = const_cast<DataObject&>(object);
    const std::shared_ptr<Serializer> serializer = asked.GetSerializer();
    if (!serializer)
        RaiseNullSerializer(object.GetTypeName(), "Qor.Tivor.SerializationManager");
    Tivor::OutputXMLHeader(stream, writer, asked, *serializer, dataName);
}

void SerializationManager::OutputDataContainerXMLHeader(std::ostream& stream, Core::XMLWriter& writer,
                                                        const std::string& dataName) {
    StartElement(stream, writer, containerTag, dataName, eDATA_CONTAINER);
}

} // namespace Qor::Tivor
