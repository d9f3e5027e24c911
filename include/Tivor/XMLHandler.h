#pragma once

#include <QorCore/Mutex.h>
#include <QorCore/XMLParser.h>
#include <Tivor/XMLContentHandler.h>

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace Qor::Tivor {

/// An element is not known where it stands; it is passed over with all its content.
QOR_DECLARE_ALERT(TIVOR_API, SkippingUnknownTag, Core::Warning);

/// Reads data objects from the events of an XML parser. The element of a data object is "Data", with the attributes
/// that `SerializationManager::OutputXMLHeader` writes, or "DataContainer". For the root element, the object is created
/// and its serializer asked for a content handler; what stands in the element is delivered to that handler, which may
/// push others for the elements inside. So every serializer reads its own content, wherever in a document it stands.
///
/// When anything is raised, by this class or by a content handler, the stack is emptied first, and an error tells by
/// variables "Key", innermost first, where it was.
///
/// Thread rule: belongs to one thread from the first event to `ResetHandler` or its end, and that thread holds the lock
/// of `AcquireParseLock` meanwhile: one document is read at a time in a process.
class TIVOR_API XMLHandler : public Core::XMLParseHandler {
public:
    XMLHandler();
    /// The root element fills this object instead of a new one. Raises `InvalidDataTag` for an element of another class
    /// than the object's.
    explicit XMLHandler(std::shared_ptr<DataObject> root);
    XMLHandler(const XMLHandler&) = delete;
    XMLHandler& operator=(const XMLHandler&) = delete;
    ~XMLHandler() override;

    void OnStartDoc(const std::string& version, const std::string& encoding, bool standalone) override;
    void OnEndDoc() override;
    void OnStartTag(const std::string& tag) override;
    void OnStartTagContent() override;
    void OnAttribute(const std::string& name, const Core::XMLAttributeValue<std::string>& value) override;
    void OnTextContent(const std::string& text) override;
    void OnEndTag(const std::string& tag, bool emptyElement) override;
    void OnComment(const std::string& comment) override;
    void OnEntityReference(const std::string& entity) override;
    void OnCDataSection(Core::BinaryInputStream& section) override;
    /// To be held for a whole parse.
    virtual Core::Lock AcquireParseLock();

    /// Forgets everything, the root too; then the handler reads another document.
    void ResetHandler();
    /// Delivers nothing more up to the end of the innermost open element, whose end tag is delivered again.
    void SkipTagContent();

    /// The object that was read, or is being read; empty when the root element is not that of an object, or of one that
    /// could not be created.
    std::shared_ptr<DataObject> GetRoot() const { return m_root; }
    /// The name of the root element.
    const std::string& GetRootTag() const { return m_rootTag; }

protected:
    /// Raises `NullPointerError` for an empty pointer.
    void PushHandler(std::shared_ptr<XMLContentHandler> handler);
    void PopHandler();

private:
    friend class XMLContentHandler;

    // Keeps what a handler refers to.
    struct Level {
        std::string key;
        std::shared_ptr<DataObject> object;
        std::shared_ptr<Serializer> serializer;
    };

    template <class Work>
    void Deliver(Work work);
    void EndContent();
    void StartRoot();
    std::shared_ptr<DataObject> PushDataObject(const std::string& key, const char* category);
    void PushObject(const std::shared_ptr<DataObject>& object, const std::string& key);
    std::vector<std::string> GetPath(const std::string& key) const;
    void AddKeys(Core::Error& error) const;

    static Core::Mutex sm_ParseMutex;

    std::shared_ptr<DataObject> m_root;
    std::vector<std::string> m_tags;
    std::vector<std::shared_ptr<XMLContentHandler>> m_handlers;
    std::vector<std::size_t> m_depths; // of the tags, when each handler was pushed
    bool m_skips = false;
    std::unordered_map<std::string, std::string> m_attributes; // of the element that was started last
    std::vector<Level> m_levels;                               // one for each handler
    std::size_t m_skippedDepth = 0;
    bool m_tagIsOwned = false; // the handler knows what to do with the element that was started last
    std::shared_ptr<DataObject> m_presetRoot;
    std::string m_rootTag;
};

/// Reads a document whose root element is that of a data object.
using XMLDataParser = Core::XMLParser<XMLHandler>;

} // namespace Qor::Tivor
