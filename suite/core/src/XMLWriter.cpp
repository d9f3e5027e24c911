#include <QorCore/Alert.h>
#include <QorCore/Message.h>
#include <QorCore/Stream.h>
#include <QorCore/Utf8.h>
#include <QorCore/XMLWriter.h>

#include <algorithm>
#include <array>
#include <ostream>

namespace Qor::Core {

namespace {

[[noreturn]] void RaiseMisuse(std::string text) {
    Error::RaiseError(LogicError(std::move(text)), QOR_CODE_CONTEXT("XMLWriter"), "Qor.Core.XMLWriter");
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
            stream << text.substr(begin, i - begin) << reference;
            begin = i + 1;
        }
    }
    stream << text.substr(begin);
}

} // namespace

XMLWriter::XMLWriter() = default;
XMLWriter::~XMLWriter() = default;

bool XMLWriter::CanHold(std::string_view text) {
    return std::none_of(text.begin(), text.end(), IsForbidden) && text.find("\xEF\xBF\xBE") == text.npos &&
           text.find("\xEF\xBF\xBF") == text.npos && IsUtf8(text);
}

void XMLWriter::StartDocument(std::ostream& stream) {
    m_open.clear();
    m_isInStartTag = false;
    stream << R"(<?xml version="1.0" encoding="UTF-8"?>)";
}

void XMLWriter::EndDocument(std::ostream& stream) {
    if (!m_open.empty())
        RaiseMisuse(FormatText("Expected the end of <%1%>, found the end of the document", {m_open.back().name}));
    stream << '\n';
}

void XMLWriter::BeginLine(std::ostream& stream, std::size_t depth) {
    stream << '\n';
    for (; depth != 0; --depth)
        stream << "  ";
}

void XMLWriter::EndStartTag(std::ostream& stream) {
    if (m_isInStartTag)
        stream << '>';
    m_isInStartTag = false;
}

void XMLWriter::StartTag(std::ostream& stream, std::string_view name) {
    RequireName(name);
    EndStartTag(stream);
    if (m_open.empty() || !m_open.back().hasText)
        BeginLine(stream, m_open.size());
    stream << '<' << name;
    m_open.push_back({std::string(name), !m_open.empty() && m_open.back().hasText});
    m_isInStartTag = true;
}

void XMLWriter::Attribute(std::ostream& stream, std::string_view name, std::string_view value) {
    RequireName(name);
    Require(value, "an attribute");
    if (!m_isInStartTag)
        RaiseMisuse(FormatText("Expected the attribute %1% in a start tag, found none open", {std::string(name)}));
    stream << ' ' << name << "=\"";
    WriteEscaped(stream, value, true);
    stream << '"';
}

void XMLWriter::EndTag(std::ostream& stream) {
    if (m_open.empty())
        RaiseMisuse("Expected an open element to be ended, found none");
    const Element element = std::move(m_open.back());
    m_open.pop_back();
    if (m_isInStartTag) {
        stream << "/>";
        m_isInStartTag = false;
        return;
    }
    if (!element.hasText)
        BeginLine(stream, m_open.size());
    stream << "</" << element.name << '>';
}

void XMLWriter::BeginText(std::ostream& stream, const char* operation) {
    if (m_open.empty())
        RaiseMisuse(FormatText("Expected an open element for %1%, found none", {operation}));
    EndStartTag(stream);
    m_open.back().hasText = true;
}

void XMLWriter::Text(std::ostream& stream, std::string_view text) {
    Require(text, "a text");
    BeginText(stream, "text");
    WriteEscaped(stream, text, false);
}

void XMLWriter::CData(std::ostream& stream, BinaryInputStream& bytes) {
    static constexpr std::string_view end = "]]>";
    BeginText(stream, "a CDATA section");
    stream << "<![CDATA[";
    std::array<char, 16 * 1024> piece;
    std::size_t matched = 0; // of the end, at the end of what was written
    while (const auto size = static_cast<std::size_t>(bytes.Read(piece.data(), piece.size()))) {
        std::size_t begin = 0;
        for (std::size_t i = 0; i < size; ++i) {
            matched = piece[i] == end[matched] ? matched + 1 : piece[i] == ']' ? std::max<std::size_t>(matched, 1) : 0;
            if (matched == end.size()) { // in two sections, cut before the '>'
                stream.write(piece.data() + begin, static_cast<std::streamsize>(i - begin));
                stream << "]]><![CDATA[";
                begin = i;
                matched = 0;
            }
        }
        stream.write(piece.data() + begin, static_cast<std::streamsize>(size - begin));
    }
    stream << end;
}

void XMLWriter::Comment(std::ostream& stream, std::string_view text) {
    Require(text, "a comment");
    if (text.find("--") != text.npos || text.ends_with('-'))
        RaiseMisuse("Expected a comment without \"--\" and without '-' at its end, found one with it");
    EndStartTag(stream);
    if (m_open.empty() || !m_open.back().hasText)
        BeginLine(stream, m_open.size());
    stream << "<!--" << text << "-->";
}

void XMLWriter::EntityReference(std::ostream& stream, std::string_view name) {
    RequireName(name);
    BeginText(stream, "a reference");
    stream << '&' << name << ';';
}

} // namespace Qor::Core
