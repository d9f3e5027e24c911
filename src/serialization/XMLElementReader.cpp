#include "XMLElementReader.h"

#include <QorCore/Message.h>
#include <Tivor/XMLHandler.h>

namespace Qor::Tivor {

namespace {

const char* const category = "Qor.Tivor.Serializer";

} // namespace

void XMLElementReader::PrepareForNewContent() { m_open.clear(); }

void XMLElementReader::OnStartTag(const std::string& tag) {
    const bool isKnown = Knows(GetOpen(0), tag);
    m_open.push_back(tag);
    m_attributes.clear();
    if (isKnown)
        return;
    SkipTagContent();
    Core::Warning::RaiseWarning(SkippingUnknownTag(Core::FormatText("Skipping unknown XML tag named %1%", {tag})),
                                QOR_CODE_CONTEXT("Serializer"), category);
}

void XMLElementReader::OnStartTagContent() {
    DecodeXMLAttributes(m_attributes);
    OnElement(GetOpen(1), GetOpen(0), m_attributes);
}

std::string_view XMLElementReader::GetOpen(std::size_t above) const {
    return above < m_open.size() ? std::string_view(m_open[m_open.size() - 1 - above]) : std::string_view();
}

void XMLElementReader::OnEndTag(const std::string&, bool) { m_open.pop_back(); }

void XMLElementReader::OnAttribute(const std::string& name, const Core::XMLAttributeValue<std::string>& value) {
    m_attributes.insert_or_assign(name, value.GetText());
}

std::string GetXMLText(const XMLAttributes& attributes, const std::string& name, const char* missing) {
    const std::string* const text = FindXMLAttribute(attributes, name);
    return text != nullptr ? *text : missing;
}

void RaiseUnexpectedXML(const std::string& expected, const std::string& place, const std::string& found) {
    Core::Error::RaiseError(Core::IOError(Core::FormatText("Expected %1% in %2%, found %3%", {expected, place, found})),
                            QOR_CODE_CONTEXT("Serializer"), category);
}

void RaiseUnexpectedAttribute(const std::string& expected, const std::string& name, const std::string& found) {
    RaiseUnexpectedXML(expected, "the attribute \"" + name + '"', '"' + found + '"');
}

} // namespace Qor::Tivor
