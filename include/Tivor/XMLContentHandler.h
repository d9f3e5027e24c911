#pragma once

#include <QorCore/XMLParseHandler.h>
#include <Tivor/Serializer.h>

#include <memory>
#include <string>

namespace Qor::Tivor {

/// An element stands where no such element can be, or what makes it a data element is missing or malformed.
QOR_DECLARE_ALERT(TIVOR_API, InvalidDataTag, Core::IOError);
/// The object was created, but nothing reads its content from XML.
QOR_DECLARE_ALERT(TIVOR_API, NullXMLContentHandler, Core::LogicError);

/// Receives the content of one element, everything inside it included: it is pushed onto the stack of an `XMLHandler`
/// while the element's start tag is seen, and popped by its end tag. Start tag and attributes of its own element were
/// seen by whoever pushed it, and the end tag will be.
///
/// The defaults do nothing. A handler whose element can hold other elements overrides `OnStartTag`; without that, an
/// element inside is the error `InvalidDataTag`. Text may come in several pieces, between comments for instance: the
/// whole of it is known in `OnEndContent`.
///
/// Thread rule: belongs to one parse at a time.
class TIVOR_API XMLContentHandler {
public:
    XMLContentHandler(const XMLContentHandler&) = delete;
    XMLContentHandler& operator=(const XMLContentHandler&) = delete;

    /// The handler was pushed.
    virtual void PrepareForNewContent();
    virtual void OnStartTag(const std::string& tag);
    /// The start tag and all its attributes were seen.
    virtual void OnStartTagContent();
    virtual void OnEndTag(const std::string& tag, bool emptyElement);
    virtual void OnAttribute(const std::string& name, const Core::XMLAttributeValue<std::string>& value);
    virtual void OnTextContent(const std::string& text);
    virtual void OnComment(const std::string& comment);
    virtual void OnEntityReference(const std::string& entity);
    /// The bytes of a CDATA section, as UTF-8; what is not read is dropped.
    virtual void OnCDataSection(Core::BinaryInputStream& section);
    /// The element ends, and the handler is about to be popped.
    virtual void OnEndContent();
    virtual ~XMLContentHandler();

protected:
    XMLContentHandler();

    /// Lets another handler receive the content of the element that is open, from now on. Raises `LogicError` when this
    /// handler is on no stack.
    void PushHandler(std::shared_ptr<XMLContentHandler> handler);
    /// For `OnStartTagContent` of a "Data" or "DataContainer" element: creates the object that the element's attributes
    /// describe, and pushes the handler that reads it; the object is whole when `OnEndTag` is called for the element.
    /// An empty pointer, and the element is skipped, with the warning `DataObjectCreationFailed` under `category`, when
    /// its class is not to be had. Raises `InvalidDataTag`, `NullSerializer`, `NullXMLContentHandler`, and what the
    /// object's serializer raises.
    std::shared_ptr<DataObject> PushDataObject(const std::string& key, const char* category);
    /// Passes over the rest of the element that is open; its end tag is seen again.
    void SkipTagContent();
    /// The innermost open element; empty when this handler is on no stack.
    std::string CurrentTag() const;

private:
    friend class XMLHandler;

    XMLHandler* m_handler = nullptr;
};

} // namespace Qor::Tivor
