#include "DataDecoders.h"

#include "../model/XMLText.h"
#include "DataBlock.h"

#include <QorCore/Base64.h>
#include <QorCore/MemoryStreams.h>
#include <QorCore/Message.h>
#include <QorCore/NumberText.h>

#include <cstdlib>

namespace Qor::Tivor {

namespace {

const char* const category = "Qor.Tivor.Serializer.GetXMLContentHandler";

[[noreturn]] void RaiseBadContent(const std::string& text) {
    Core::Error::RaiseError(Core::IOError(text), QOR_CODE_CONTEXT("Serializer"), category);
}

} // namespace

void DataTarget::Fill(std::uint64_t size, Core::BinaryInputStream& stream) {
    DataObjectHeader header;
    header.typeName = m_serializer.GetDataObject().GetTypeName();
    header.version = m_serializer.GetVersion();
    header.module = m_serializer.GetModule();
    header.dataSize = size;
    InputBounded(stream, m_serializer, header, "Qor.Tivor.DataObject");
}

void NumberDecoder::OnText(std::string text) {
    const std::uint64_t number = std::strtoull(text.c_str(), nullptr, m_base);
    Core::MemoryInputStream stream(&number, sizeof number); // numbers lie in memory as they are stored
    m_target.Fill(m_target.GetSize().value_or(sizeof number), stream);
}

void Base64DataDecoder::OnCDataSection(Core::BinaryInputStream& section) {
    if (m_isDecoded)
        RaiseBadContent("Expected one section of Base64, found two");
    Decode(section);
}

void Base64DataDecoder::OnText(std::string text) {
    if (m_isDecoded && !Core::TrimBlanks(text).empty())
        RaiseBadContent("Expected one section of Base64, found text beside it");
    if (m_isDecoded)
        return;
    Core::MemoryInputStream stream(text.data(), text.size());
    Decode(stream);
}

void Base64DataDecoder::Decode(Core::BinaryInputStream& text) {
    m_isDecoded = true;
    Core::Base64DecoderStream data(text);
    if (!m_target.GetSize()) {
        std::string all;
        AppendSection(all, data);
        Core::MemoryInputStream stream(all.data(), all.size());
        return m_target.Fill(all.size(), stream);
    }
    const std::uint64_t size = *m_target.GetSize();
    m_target.Fill(size, data);
    if (char more = 0; data.Read(&more, 1) != 0)
        RaiseBadContent(Core::FormatText("Expected %1% bytes in Base64, found more", {size}));
}

} // namespace Qor::Tivor
