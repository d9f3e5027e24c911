#include "XMLTextHandler.h"

#include "../model/XMLText.h"

#include <utility>

namespace Qor::Tivor {

void XMLTextHandler::PrepareForNewContent() { m_text.clear(); }

void XMLTextHandler::OnTextContent(const std::string& text) { m_text += text; }

void XMLTextHandler::OnEntityReference(const std::string& entity) {
    RaiseEntityReference(entity, "Serializer", "Qor.Tivor.Serializer");
}

void XMLTextHandler::OnCDataSection(Core::BinaryInputStream& section) { AppendSection(m_text, section); }

void XMLTextHandler::OnEndContent() { OnText(std::exchange(m_text, {})); }

} // namespace Qor::Tivor
