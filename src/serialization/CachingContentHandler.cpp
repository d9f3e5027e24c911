#include "CachingContentHandler.h"

#include <QorCore/Message.h>

namespace Qor::Tivor {

CachingContentHandler::CachingContentHandler(Keep keep) : m_keep(std::move(keep)) {}

void CachingContentHandler::OnStartTag(const std::string& tag) { m_writer.StartTag(m_content, tag); }

void CachingContentHandler::OnEndTag(const std::string&, bool) { m_writer.EndTag(m_content); }

void CachingContentHandler::OnAttribute(const std::string& name, const Core::XMLAttributeValue<std::string>& value) {
    m_writer.Attribute(m_content, name, value.GetText());
}

void CachingContentHandler::OnTextContent(const std::string& text) { m_writer.Text(m_content, text); }

void CachingContentHandler::OnComment(const std::string& comment) { m_writer.Comment(m_content, comment); }

// Where it will be written again, nobody could resolve it.
void CachingContentHandler::OnEntityReference(const std::string& entity) {
    Core::Error::RaiseError(
        Core::IOError(Core::FormatText("Expected content that means the same in any document, found a reference to "
                                       "the entity \"%1%\"",
                                       {entity})),
        QOR_CODE_CONTEXT("UnboundData"), "Qor.Tivor.CachingContentHandler.BindData");
}

void CachingContentHandler::OnCDataSection(Core::BinaryInputStream& section) { m_writer.CData(m_content, section); }

void CachingContentHandler::OnEndContent() { m_keep(std::move(m_content).str()); }

} // namespace Qor::Tivor
