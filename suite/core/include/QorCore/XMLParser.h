#pragma once

#include <QorCore/Alert.h>
#include <QorCore/Export.h>
#include <QorCore/XMLParseHandler.h>

#include <cstdint>
#include <string>
#include <utility>

namespace Qor::Core {

class BinaryInputStream;

/// A document that is no XML, or more than readers accept. The text tells the place, e.g. "line 3, column 7: mismatched
/// tag", and so do the variables "Line" and "Column".
QOR_DECLARE_ALERT(QOR_CORE_API, XMLParseError, IOError);

/// A place in a document: both count from 1, columns in characters.
struct XMLPosition {
    std::uint64_t line = 0;
    std::uint64_t column = 0;

    bool operator==(const XMLPosition&) const = default;
};

/// What parsers for all kinds of handlers have in common.
class XMLParserBody {
public:
    XMLParserBody() = default;
    XMLParserBody(const XMLParserBody&) = delete;
    XMLParserBody& operator=(const XMLParserBody&) = delete;

    /// For handlers, while they are called: where that begins which they are called for. Attributes are where their tag
    /// is, text and CDATA sections where their first character is. Line 0 when nothing is parsed.
    QOR_CORE_API XMLPosition GetPosition() const;

protected:
    ~XMLParserBody() = default;
    QOR_CORE_API void ParseDocument(BinaryInputStream& stream, XMLParseHandler& handler);

private:
    class Run;

    const Run* m_run = nullptr;
};

/// Tells a `Handler`, which is an `XMLParseHandler`, what stands in a document. Memory is taken for what the handler
/// gets at once, e.g. one text, for the elements that are open, and for each different name. The content of a CDATA
/// section goes from the stream to the handler as it is read; only in UTF-16 and ISO-8859-1 a section stands in memory.
///
/// Documents are in UTF-8, UTF-16, ISO-8859-1 or US-ASCII, with or without a byte order mark. Processing instructions
/// are passed over. A document type may be named but not declared in the document, and external ones are never read.
///
/// Thread rule: a parser parses one document at a time; any number of parsers works side by side.
template <class Handler>
class XMLParser : public XMLParserBody {
public:
    /// Reads the stream to its end, which must be the end of the document, and calls the handler on the way. Raises
    /// - `XMLParseError` when the document is not well-formed, ends too early, is in another encoding, declares
    ///   something in a document type, or exceeds the limits of the calling thread (`ReadLimits`): elements nested up
    ///   to 3 * `nesting` deep, their names and those of attributes up to `nameBytes` long, up to 64 attributes in an
    ///   element, their values as long as a key or a name in Base64, and tags and comments up to 256 MiB;
    /// - what the stream raises, unchanged;
    /// - what the handler throws, whatever that is. An `Error` without a variable "Line" gets the variables "Line" and
    ///   "Column" on its way, which tell `GetPosition()`, and is else unchanged;
    /// - `AssertionError` when called by a handler of a parse that this parser is at.
    /// The handler has then seen the document up to the fault, and the parser is ready for another document.
    void Parse(BinaryInputStream& stream, Handler& handler) { ParseDocument(stream, handler); }
};

} // namespace Qor::Core
