#include "DataDecoders.h"

#include "DataBlock.h"

#include <QorCore/Base64.h>
#include <QorCore/MemoryStreams.h>
#include <QorCore/Message.h>

#include <cstdlib>

namespace Qor::Tivor {

namespace {

const char* const category = "Qor.Tivor.Serializer.GetXMLContentHandler";

[[noreturn]] void RaiseBadContent(const std::string& text) {
    Core::Error::RaiseError(Core::IOError(text), QOR_CODE_CONTEXT("Serializer"), category);
}

std::string ReadAll(Core::BinaryInputStream& stream) {
    std::string all;
    char piece[1024];
    while (const auto size = static_cast<std::size_t>(stream.Read(piece, sizeof piece)))
        all.append(piece, size);
    return all;
}

} // namespace

void DataDecoder::OnEntityReference(const std::string& entity) {
    RaiseBadContent(Core::FormatText("Expected data, found a reference to the entity \"%1%\"", {entity}));
}

void DataDecoder::Decode(std::uint64_t size, Core::BinaryInputStream& stream) {
    DataObject& object = m_serializer.GetDataObject();
    DataObjectHeader header;
    header.typeName = object.GetTypeName();
    header.version = m_serializer.GetVersion();
    header.module = m_serializer.GetModule();
    header.dataSize = size;
    InputBounded(stream, m_serializer, header, "Qor.Tivor.DataObject");
}

void NumberDecoder::OnCDataSection(Core::BinaryInputStream& section) { m_text += ReadAll(section); }

void NumberDecoder::OnEndContent() {
    const std::uint64_t number = std::strtoull(m_text.c_str(), nullptr, m_base);
    Core::MemoryInputStream stream(&number, sizeof number); // numbers lie in memory as they are stored
    Decode(SizeOr(sizeof number), stream);
}

void Base64DataDecoder::OnCDataSection(Core::BinaryInputStream& section) {
    if (m_isDecoded)
        RaiseBadContent("Expected one section of Base64, found two");
    DecodeBase64(section);
}

void Base64DataDecoder::OnEndContent() {
    const bool hasText = m_text.find_first_not_of(" \t\r\n") != m_text.npos;
    if (m_isDecoded && hasText)
        RaiseBadContent("Expected one section of Base64, found text beside it");
    if (m_isDecoded)
        return;
    Core::MemoryInputStream text(m_text.data(), m_text.size());
    DecodeBase64(text);
}

void Base64DataDecoder::DecodeBase64(Core::BinaryInputStream& text) {
    m_isDecoded = true;
    Core::Base64DecoderStream data(text);
    if (!HasSize()) {
        const std::string all = ReadAll(data);
        Core::MemoryInputStream stream(all.data(), all.size());
        return Decode(all.size(), stream);
    }
    const std::uint64_t size = SizeOr(0);
    Decode(size, data);
    if (char more = 0; data.Read(&more, 1) != 0)
        RaiseBadContent(Core::FormatText("Expected %1% bytes in Base64, found more", {size}));
}

} // namespace Qor::Tivor
