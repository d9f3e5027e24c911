#include "ObjectCreation.h"
#include "ReadOperation.h"
#include "XMLAttributes.h"

#include <QorCore/Message.h>
#include <Tivor/XMLHandler.h>

#include <utility>

namespace Qor::Tivor {

SkippingUnknownTag::~SkippingUnknownTag() = default;

namespace {

const char* const category = "Qor.Tivor.XMLHandler.OnStartTagContent";

bool IsDataTag(const std::string& tag) { return tag == dataTag || tag == containerTag; }

bool IsOfClass(DataObject& object, const DataObjectHeader& header) {
    return WithoutFlag(header.typeCode) == WithoutFlag(static_cast<std::uint16_t>(object.GetTypeID())) &&
           header.typeName == object.GetTypeName();
}

} // namespace

Core::Mutex XMLHandler::sm_ParseMutex;

XMLHandler::XMLHandler() = default;

XMLHandler::XMLHandler(std::shared_ptr<DataObject> root) : m_presetRoot(std::move(root)) {}

XMLHandler::~XMLHandler() { ResetHandler(); }

Core::Lock XMLHandler::AcquireParseLock() {
    return Core::Lock(std::shared_ptr<Core::Mutex>(std::shared_ptr<void>(), &sm_ParseMutex)); // which lives for ever
}

template <class Work>
void XMLHandler::Deliver(Work work) {
    try {
        work();
    } catch (Core::Error& error) {
        AddKeys(error);
        ResetHandler();
        throw;
    } catch (...) {
        ResetHandler();
        throw;
    }
}

void XMLHandler::AddKeys(Core::Error& error) const {
    for (auto level = m_levels.rbegin(); level != m_levels.rend(); ++level)
        if (level->object && (level + 1 != m_levels.rend() || !level->key.empty()))
            error.AddVariable("Key", level->key);
}

void XMLHandler::PushHandler(std::shared_ptr<XMLContentHandler> handler) {
    if (!handler)
        Core::Error::RaiseError(Core::NullPointerError("A handler of XML content is needed; a null one was given"),
                                QOR_CODE_CONTEXT("XMLHandler"), "Qor.Tivor.XMLHandler");
    m_levels.emplace_back();
    m_depths.push_back(m_tags.size());
    m_handlers.push_back(handler); // as the last: it is what counts when memory runs out here
    handler->m_handler = this;
    handler->PrepareForNewContent();
}

void XMLHandler::PopHandler() {
    // The handler before the serializer that it may refer to, and that one before its object.
    m_handlers.back()->m_handler = nullptr;
    m_handlers.pop_back();
    m_depths.resize(m_handlers.size());
    m_levels.resize(m_handlers.size());
}

void XMLHandler::ResetHandler() {
    OnEndDoc();
    m_root.reset();
    m_presetRoot.reset();
    m_rootTag.clear();
    m_attributes.clear();
}

void XMLHandler::SkipTagContent() {
    if (m_skips)
        return;
    m_skips = true;
    m_skippedDepth = m_tags.size();
}

void XMLHandler::OnStartDoc(const std::string&, const std::string&, bool) {}

void XMLHandler::OnEndDoc() {
    while (!m_handlers.empty())
        PopHandler();
    m_depths.clear();
    m_levels.clear();
    m_tags.clear();
    m_skips = false;
}

void XMLHandler::OnStartTag(const std::string& tag) {
    m_tags.push_back(tag);
    m_attributes.clear();
    if (m_tags.size() == 1)
        m_rootTag = tag;
    if (m_skips)
        return;
    Deliver([&] {
        m_tagIsOwned = true;
        if (!m_handlers.empty())
            m_handlers.back()->OnStartTag(tag);
        else if (!IsDataTag(tag))
            SkipTagContent();
    });
}

void XMLHandler::OnAttribute(const std::string& name, const Core::XMLAttributeValue<std::string>& value) {
    if (m_skips)
        return;
    Deliver([&] {
        if (!m_handlers.empty())
            m_handlers.back()->OnAttribute(name, value);
        m_attributes.insert_or_assign(name, value.GetText());
    });
}

void XMLHandler::OnStartTagContent() {
    if (m_skips)
        return;
    Deliver([this] {
        if (m_handlers.empty())
            StartRoot();
        else if (!m_tagIsOwned)
            RaiseInvalidDataTag(m_tags.back(), "no element can stand here");
        else
            m_handlers.back()->OnStartTagContent();
    });
}

void XMLHandler::OnTextContent(const std::string& text) {
    if (!m_skips && !m_handlers.empty())
        Deliver([&] { m_handlers.back()->OnTextContent(text); });
}

void XMLHandler::OnComment(const std::string& comment) {
    if (!m_skips && !m_handlers.empty())
        Deliver([&] { m_handlers.back()->OnComment(comment); });
}

void XMLHandler::OnEntityReference(const std::string& entity) {
    if (!m_skips && !m_handlers.empty())
        Deliver([&] { m_handlers.back()->OnEntityReference(entity); });
}

void XMLHandler::OnCDataSection(Core::BinaryInputStream& section) {
    if (!m_skips && !m_handlers.empty())
        Deliver([&] { m_handlers.back()->OnCDataSection(section); });
}

void XMLHandler::OnEndTag(const std::string& tag, bool emptyElement) {
    if (m_tags.empty())
        return; // of an element that was forgotten
    m_tags.pop_back();
    if (m_skips && m_tags.size() < m_skippedDepth)
        m_skips = false;
    Deliver([&] {
        while (!m_handlers.empty() && m_tags.size() < m_depths.back())
            EndContent();
        if (!m_skips && !m_handlers.empty())
            m_handlers.back()->OnEndTag(tag, emptyElement);
    });
}

// For whatever the handler may push or want to be skipped then, its element is over.
void XMLHandler::EndContent() {
    const std::size_t below = m_handlers.size() - 1;
    m_handlers.back()->OnEndContent();
    m_skips = false;
    while (m_handlers.size() > below)
        PopHandler();
}

void XMLHandler::StartRoot() {
    DecodeXMLAttributes(m_attributes);
    const std::string* const found = FindXMLAttribute(m_attributes, "key");
    const std::string key = found != nullptr ? *found : std::string();
    if (!m_presetRoot) {
        m_root = PushDataObject(key, category);
        return;
    }
    if (!IsOfClass(*m_presetRoot, GetXMLHeader(m_tags.back(), m_attributes)))
        RaiseInvalidDataTag(m_tags.back(), "it is of another class than the object to be read");
    m_root = std::move(m_presetRoot);
    PushObject(m_root, key);
}

std::shared_ptr<DataObject> XMLHandler::PushDataObject(const std::string& key, const char* raisedBy) {
    const ReadOperation reading;
    try {
        DecodeXMLAttributes(m_attributes);
        const DataObjectHeader header = GetXMLHeader(m_tags.back(), m_attributes);
        std::string reason;
        std::shared_ptr<DataObject> object = CreateObject(header, key, reason);
        if (!object) {
            SkipTagContent();
            ReadOperation::Current().KeepUnread(header, reason, GetPath(key));
            WarnOfCreationFailure(header, key, reason, raisedBy);
            return nullptr;
        }
        PushObject(object, key);
        return object;
    } catch (Core::Error& error) {
        if (!m_levels.empty() || !key.empty())
            error.AddVariable("Key", key);
        throw;
    }
}

std::vector<std::string> XMLHandler::GetPath(const std::string& key) const {
    std::vector<std::string> path;
    for (std::size_t i = 1; i < m_levels.size(); ++i)
        if (m_levels[i].object)
            path.push_back(m_levels[i].key);
    path.push_back(key);
    return path;
}

void XMLHandler::PushObject(const std::shared_ptr<DataObject>& object, const std::string& key) {
    std::shared_ptr<Serializer> serializer = object->GetSerializer();
    if (!serializer)
        RaiseNullSerializer(object->GetTypeName(), category);
    const std::string* const encoding = FindXMLAttribute(m_attributes, "encoding");
    const bool isDefault = encoding != nullptr && Serializer::IsDefaultEncoding(*encoding);
    auto handler = isDefault ? serializer->Serializer::GetXMLContentHandler(m_attributes)
                             : serializer->GetXMLContentHandler(m_attributes);
    if (!handler)
        Core::Error::RaiseError(
            NullXMLContentHandler(
                Core::FormatText("Attempt to deserialize data %1% failed to obtain an XMLContentHandler implementation",
                                 {"named " + key})),
            QOR_CODE_CONTEXT("XMLHandler"), category);
    PushHandler(std::move(handler));
    m_levels.back() = {key, object, std::move(serializer)};
}

} // namespace Qor::Tivor
