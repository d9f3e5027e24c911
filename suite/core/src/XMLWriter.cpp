#include <QorCore/Alert.h>
#include <QorCore/Base64.h>
#include <QorCore/Message.h>
#include <QorCore/Stream.h>
#include <QorCore/Utf8.h>
#include <QorCore/XMLWriter.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <ostream>

namespace Qor::Core {

namespace {

[[noreturn]] void RaiseMisuse(std::string text) {
    Error::RaiseError(LogicError(std::move(text)), QOR_CODE_CONTEXT("XMLWriter"), "Qor.Core.XMLWriter");
}

// Unformatted: what a caller has set on the stream, as a width, is not for us.
void Put(std::ostream& stream, std::string_view text) {
    stream.write(text.data(), static_cast<std::streamsize>(text.size()));
}

bool IsForbidden(char c) { return static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r'; }

void Require(std::string_view text, const char* what) {
    if (!XMLWriter::CanHold(text))
        RaiseMisuse(
            FormatText("Expected %1% that XML can hold, found control characters or bytes that are no UTF-8", {what}));
}

void RequireName(std::string_view name) {
    Require(name, "a name");
    if (name.empty() || name.find_first_of(" \t\r\n<>&\"'/=") != name.npos)
        RaiseMisuse(FormatText("Expected a name for XML, found \"%1%\"", {std::string(name)}));
}

/// What stands for a character, or null for the character itself.
const char* ReferenceFor(char c, bool isInAttribute) {
    switch (c) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '\r': // alone, or before LF, it would be read as LF
        return "&#13;";
    case '"':
        return isInAttribute ? "&quot;" : nullptr;
    case '\t':
        return isInAttribute ? "&#9;" : nullptr;
    case '\n':
        return isInAttribute ? "&#10;" : nullptr;
    default:
        return nullptr;
    }
}

void WriteEscaped(std::ostream& stream, std::string_view text, bool isInAttribute) {
    std::size_t begin = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (const char* const reference = ReferenceFor(text[i], isInAttribute)) {
            Put(stream, text.substr(begin, i - begin));
            Put(stream, reference);
            begin = i + 1;
        }
    }
    Put(stream, text.substr(begin));
}

// Copies bytes into a CDATA section, and ends it in the middle of each "]]>" to begin another one.
class SectionCopy {
public:
    explicit SectionCopy(std::ostream& stream) : m_stream(stream) {}

    void Take(const char* bytes, std::size_t size) {
        const char* const end = bytes + size;
        const char* begin = bytes;
        for (const char* cursor = bytes; (cursor = FindNext(cursor, end)) != end; ++cursor) {
            if (*cursor == ']') {
                m_brackets = std::min(m_brackets + 1, 2);
            } else if (*cursor == '>' && m_brackets == 2) {
                Put(m_stream, {begin, cursor});
                Put(m_stream, "]]><![CDATA[");
                begin = cursor;
                m_brackets = 0;
            } else {
                m_brackets = 0;
            }
        }
        Put(m_stream, {begin, end});
    }

private:
    const char* FindNext(const char* cursor, const char* end) const {
        if (m_brackets != 0 || cursor == end)
            return cursor;
        const void* const found = std::memchr(cursor, ']', static_cast<std::size_t>(end - cursor));
        return found != nullptr ? static_cast<const char*>(found) : end;
    }

    std::ostream& m_stream;
    int m_brackets = 0; // at the end of what was written, up to two
};

bool CopyPiece(BinaryInputStream& bytes, SectionCopy& copy, char* piece, std::size_t size) {
    const auto got = static_cast<std::size_t>(bytes.Read(piece, size));
    copy.Take(piece, got);
    return got == size;
}

} // namespace

XMLWriter::XMLWriter(ELayout layout) : m_layout(layout) {}
XMLWriter::~XMLWriter() = default;

bool XMLWriter::CanHold(std::string_view text) {
    return std::none_of(text.begin(), text.end(), IsForbidden) && text.find("\xEF\xBF\xBE") == text.npos &&
           text.find("\xEF\xBF\xBF") == text.npos && IsUtf8(text);
}

void XMLWriter::StartDocument(std::ostream& stream) {
    m_open.clear();
    m_isInStartTag = false;
    Put(stream, R"(<?xml version="1.0" encoding="UTF-8"?>)");
}

void XMLWriter::EndDocument(std::ostream& stream) {
    if (!m_open.empty())
        RaiseMisuse(FormatText("Expected the end of <%1%>, found the end of the document", {m_open.back().name}));
    Put(stream, "\n");
}

void XMLWriter::BeginLine(std::ostream& stream, std::size_t depth) {
    if (m_layout == ePLAIN || (!m_open.empty() && m_open.back().hasText))
        return;
    Put(stream, "\n");
    for (; depth != 0; --depth)
        Put(stream, "  ");
}

void XMLWriter::EndStartTag(std::ostream& stream) {
    if (m_isInStartTag)
        Put(stream, ">");
    m_isInStartTag = false;
}

void XMLWriter::StartTag(std::ostream& stream, std::string_view name) {
    RequireName(name);
    EndStartTag(stream);
    BeginLine(stream, m_open.size());
    Put(stream, "<");
    Put(stream, name);
    m_open.push_back({std::string(name), !m_open.empty() && m_open.back().hasText});
    m_isInStartTag = true;
}

void XMLWriter::Attribute(std::ostream& stream, std::string_view name, std::string_view value) {
    RequireName(name);
    Require(value, "an attribute");
    if (!m_isInStartTag)
        RaiseMisuse(FormatText("Expected the attribute %1% in a start tag, found none open", {std::string(name)}));
    Put(stream, " ");
    Put(stream, name);
    Put(stream, "=\"");
    WriteEscaped(stream, value, true);
    Put(stream, "\"");
}

void XMLWriter::AnyAttribute(std::ostream& stream, const std::string& name, std::string_view value) {
    if (CanHold(value))
        return Attribute(stream, name, value);
    Attribute(stream, name, EncodeBase64(value));
    Attribute(stream, name + "encoding", "def/base64");
}

void XMLWriter::EndTag(std::ostream& stream) {
    if (m_open.empty())
        RaiseMisuse("Expected an open element to be ended, found none");
    const Element element = std::move(m_open.back());
    if (m_isInStartTag && m_layout == eLINES) {
        Put(stream, "/>");
    } else {
        if (!m_isInStartTag)
            BeginLine(stream, m_open.size() - 1);
        EndStartTag(stream);
        Put(stream, "</");
        Put(stream, element.name);
        Put(stream, ">");
    }
    m_isInStartTag = false;
    m_open.pop_back();
}

void XMLWriter::BeginText(std::ostream& stream, const char* operation) {
    if (m_open.empty() && m_layout == eLINES)
        RaiseMisuse(FormatText("Expected an open element for %1%, found none", {operation}));
    EndStartTag(stream);
    if (!m_open.empty())
        m_open.back().hasText = true;
}

void XMLWriter::Text(std::ostream& stream, std::string_view text) {
    Require(text, "a text");
    BeginText(stream, "text");
    WriteEscaped(stream, text, false);
}

void XMLWriter::CData(std::ostream& stream, BinaryInputStream& bytes) {
    BeginText(stream, "a CDATA section");
    Put(stream, "<![CDATA[");
    SectionCopy copy(stream);
    std::array<char, 8 * 1024> first;
    if (CopyPiece(bytes, copy, first.data(), first.size())) {
        constexpr std::size_t size = 256 * 1024;
        const auto piece = std::make_unique_for_overwrite<char[]>(size);
        while (CopyPiece(bytes, copy, piece.get(), size)) {
        }
    }
    Put(stream, "]]>");
}

void XMLWriter::Comment(std::ostream& stream, std::string_view text) {
    Require(text, "a comment");
    if (text.find("--") != text.npos || text.ends_with('-'))
        RaiseMisuse("Expected a comment without \"--\" and without '-' at its end, found one with it");
    EndStartTag(stream);
    BeginLine(stream, m_open.size());
    Put(stream, "<!--");
    Put(stream, text);
    Put(stream, "-->");
}

void XMLWriter::Verbatim(std::ostream& stream, std::string_view content) {
    BeginText(stream, "content");
    Put(stream, content);
}

void XMLWriter::EntityReference(std::ostream& stream, std::string_view name) {
    RequireName(name);
    BeginText(stream, "a reference");
    Put(stream, "&");
    Put(stream, name);
    Put(stream, ";");
}

} // namespace Qor::Core
