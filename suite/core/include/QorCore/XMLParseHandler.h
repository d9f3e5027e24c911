#pragma once

#include <QorCore/Export.h>

#include <string>
#include <utility>

namespace Qor::Core {

class BinaryInputStream;

/// The value of an attribute, with references resolved and white space made blanks.
template <class T>
class XMLAttributeValue {
public:
    explicit XMLAttributeValue(T text) : m_text(std::move(text)) {}

    const T& GetText() const { return m_text; }

private:
    T m_text;
};

/// Sees a document while it is parsed; the defaults do nothing. For each element: its start tag, its attributes in the
/// order of the document, the end of the start tag, the content, its end tag. All text is UTF-8, whatever the encoding
/// of the document, and its lines end with '\n'.
///
/// What an operation throws ends the parse and reaches the caller of `XMLParser::Parse`, errors with their place.
/// Operations may parse other documents, with parsers of their own.
class QOR_CORE_API XMLParseHandler {
public:
    XMLParseHandler() = default;
    XMLParseHandler(const XMLParseHandler&) = default;
    XMLParseHandler& operator=(const XMLParseHandler&) = default;
    virtual ~XMLParseHandler();

    /// Before all else, with what the XML declaration tells: version "1.0", no encoding and not standalone where it is
    /// silent. Not called for a document without anything.
    virtual void OnStartDoc(const std::string& version, const std::string& encoding, bool standalone);
    /// After all else; not called for a document that has a fault.
    virtual void OnEndDoc();

    virtual void OnStartTag(const std::string& tag);
    /// The start tag and all its attributes were seen.
    virtual void OnStartTagContent();
    virtual void OnAttribute(const std::string& name, const XMLAttributeValue<std::string>& value);
    /// Called once for all text up to the next tag, comment, CDATA section or processing instruction, however it was
    /// read. The references to characters, and to the five entities that need no declaration, are part of the text.
    virtual void OnTextContent(const std::string& text);
    /// `emptyElement`: the element was written as `<a/>`.
    virtual void OnEndTag(const std::string& tag, bool emptyElement);
    virtual void OnComment(const std::string& comment);
    /// A reference in the content, to an entity that only an external document type could declare. Such a type is never
    /// read, and references to its entities in the values of attributes are left out.
    virtual void OnEntityReference(const std::string& entity);
    /// The bytes of a CDATA section, as UTF-8. What is not read is dropped; the stream ends with the call. Its
    /// `BytesLeft` is an upper bound. A fault of the document in the section is raised by the stream when it is read up
    /// to there, and by the parser in any case.
    virtual void OnCDataSection(BinaryInputStream& section);
};

} // namespace Qor::Core
