#include "DataContainerXMLHandler.h"

#include "../serialization/XMLAttributes.h"

#include <QorCore/Message.h>
#include <Tivor/XMLHandler.h>

namespace Qor::Tivor {

namespace {

const char* const category = "Qor.Tivor.DataContainerXMLHandler";

} // namespace

DataContainerXMLHandler::DataContainerXMLHandler(std::shared_ptr<DataContainer> container)
    : m_container(std::move(container)), m_lockable(m_container->DefaultsToLockableData()) {}

void DataContainerXMLHandler::PrepareForNewContent() { m_level.emplace(); }

void DataContainerXMLHandler::OnEndContent() { m_level.reset(); }

void DataContainerXMLHandler::OnStartTag(const std::string& tag) {
    ResetCurrentData();
    if (tag == dataTag || tag == containerTag)
        return;
    SkipTagContent();
    Core::Warning::RaiseWarning(SkippingUnknownTag(Core::FormatText("Skipping unknown XML tag named %1%", {tag})),
                                QOR_CODE_CONTEXT("DataContainer"), category);
}

void DataContainerXMLHandler::OnAttribute(const std::string& name, const Core::XMLAttributeValue<std::string>& value) {
    if (name == "key")
        m_key = value.GetText();
    else if (name == "keyencoding")
        m_keyEncoding = value.GetText();
}

void DataContainerXMLHandler::OnStartTagContent() {
    if (!m_keyEncoding.empty()) {
        XMLAttributes attributes{{"key", m_key}, {"keyencoding", m_keyEncoding}};
        DecodeXMLAttributes(attributes);
        m_key = attributes["key"];
    }
    m_object = PushDataObject(m_key, category);
}

void DataContainerXMLHandler::OnEndTag(const std::string&, bool) {
    if (m_object) {
        if (m_lockable)
            m_object->EnableDataLocking();
        m_container->Put(m_key, std::move(m_object));
    }
    ResetCurrentData();
}

void DataContainerXMLHandler::ResetCurrentData() {
    m_key.clear();
    m_keyEncoding.clear();
    m_object.reset();
}

} // namespace Qor::Tivor
