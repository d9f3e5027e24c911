#include <QorCore/Message.h>
#include <Tivor/XMLHandler.h>

namespace Qor::Tivor {

InvalidDataTag::~InvalidDataTag() = default;
NullXMLContentHandler::~NullXMLContentHandler() = default;

namespace {

XMLHandler& Require(XMLHandler* handler) {
    if (handler == nullptr)
        Core::Error::RaiseError(Core::LogicError("Attempted push of XMLContentHandler onto a NULL root handler"),
                                QOR_CODE_CONTEXT("XMLHandler"), "Qor.Tivor.XMLContentHandler");
    return *handler;
}

} // namespace

XMLContentHandler::XMLContentHandler() = default;
XMLContentHandler::~XMLContentHandler() = default;

void XMLContentHandler::PrepareForNewContent() {}

void XMLContentHandler::OnStartTag(const std::string&) {
    if (m_handler != nullptr)
        m_handler->m_tagIsOwned = false;
}

void XMLContentHandler::OnStartTagContent() {}
void XMLContentHandler::OnEndTag(const std::string&, bool) {}
void XMLContentHandler::OnAttribute(const std::string&, const Core::XMLAttributeValue<std::string>&) {}
void XMLContentHandler::OnTextContent(const std::string&) {}
void XMLContentHandler::OnComment(const std::string&) {}
void XMLContentHandler::OnEntityReference(const std::string&) {}
void XMLContentHandler::OnCDataSection(Core::BinaryInputStream&) {}
void XMLContentHandler::OnEndContent() {}

void XMLContentHandler::PushHandler(std::shared_ptr<XMLContentHandler> handler) {
    Require(m_handler).PushHandler(std::move(handler));
}

std::shared_ptr<DataObject> XMLContentHandler::PushDataObject(const std::string& key, const char* category) {
    return Require(m_handler).PushDataObject(key, category);
}

void XMLContentHandler::SkipTagContent() {
    if (m_handler != nullptr)
        m_handler->SkipTagContent();
}

std::string XMLContentHandler::CurrentTag() const {
    return m_handler != nullptr && !m_handler->m_tags.empty() ? m_handler->m_tags.back() : std::string();
}

} // namespace Qor::Tivor
