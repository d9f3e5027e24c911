#pragma once

#include <QorCore/Export.h>

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace Qor::Core {

class BinaryInputStream;

/// Writes an XML 1.0 document in UTF-8, piece by piece: what is well-formed by the order of the calls is well-formed on
/// disk. Each element stands on a line of its own, indented, except in elements that hold text, comments aside: there
/// no blank is added, since it would be part of the text.
///
/// The writer knows what is open, the stream takes the bytes; all calls for a document give the same stream. A stream
/// that has failed takes nothing more, as streams do, and its owner asks it in the end.
///
/// Thread rule: a writer is used by one thread at a time.
class QOR_CORE_API XMLWriter {
public:
    enum ELayout {
        eLINES, ///< as above
        ePLAIN  ///< nothing but what is written, an end tag for each element, and text may stand outside of elements
    };

    explicit XMLWriter(ELayout layout = eLINES);
    XMLWriter(const XMLWriter&) = delete;
    XMLWriter& operator=(const XMLWriter&) = delete;
    ~XMLWriter();

    /// Whether XML can hold the text: well-formed UTF-8 without control characters other than TAB, LF and CR, and
    /// without U+FFFE and U+FFFF. What it cannot hold is refused below, with a `LogicError`, before anything is
    /// written.
    static bool CanHold(std::string_view text);

    void StartDocument(std::ostream& stream);
    /// Raises `LogicError` while elements are open.
    void EndDocument(std::ostream& stream);

    void StartTag(std::ostream& stream, std::string_view name);
    /// For the element that was started last, before anything in it; raises `LogicError` later.
    void Attribute(std::ostream& stream, std::string_view name, std::string_view value);
    /// The same for whatever bytes: where XML cannot hold them, Base64 in one line, and beside the attribute another
    /// one of its name plus "encoding", which says "def/base64".
    void AnyAttribute(std::ostream& stream, const std::string& name, std::string_view value);
    void EndTag(std::ostream& stream);

    void Text(std::ostream& stream, std::string_view text);
    /// Copies all that is left of `bytes`, which must be what XML can hold, and is not checked.
    void CData(std::ostream& stream, BinaryInputStream& bytes);
    /// Raises `LogicError` for a text with "--" in it, or '-' at its end.
    void Comment(std::ostream& stream, std::string_view text);
    /// Copies content that is well-formed by itself, and is not checked; it counts as text.
    void Verbatim(std::ostream& stream, std::string_view content);
    void EntityReference(std::ostream& stream, std::string_view name);

    /// The elements that are open.
    std::size_t GetDepth() const { return m_open.size(); }

private:
    struct Element {
        std::string name;
        bool hasText;
    };

    void EndStartTag(std::ostream& stream);
    void BeginText(std::ostream& stream, const char* operation);
    void BeginLine(std::ostream& stream, std::size_t depth);

    ELayout m_layout;
    std::vector<Element> m_open;
    bool m_isInStartTag = false;
};

} // namespace Qor::Core
