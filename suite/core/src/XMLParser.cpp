#include "XMLMarkup.h"
#include "XMLSectionStream.h"
#include "XMLSource.h"

#include <QorCore/Context.h>
#include <QorCore/MemoryStreams.h>
#include <QorCore/Message.h>
#include <QorCore/XMLParser.h>

#include <algorithm>
#include <exception>
#include <expat.h>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <string_view>
#include <type_traits>
#include <vector>

namespace Qor::Core {

XMLParseError::~XMLParseError() = default;

XMLParseHandler::~XMLParseHandler() = default;
void XMLParseHandler::OnStartDoc(const std::string&, const std::string&, bool) {}
void XMLParseHandler::OnEndDoc() {}
void XMLParseHandler::OnStartTag(const std::string&) {}
void XMLParseHandler::OnStartTagContent() {}
void XMLParseHandler::OnAttribute(const std::string&, const XMLAttributeValue<std::string>&) {}
void XMLParseHandler::OnTextContent(const std::string&) {}
void XMLParseHandler::OnEndTag(const std::string&, bool) {}
void XMLParseHandler::OnComment(const std::string&) {}
void XMLParseHandler::OnEntityReference(const std::string&) {}
void XMLParseHandler::OnCDataSection(BinaryInputStream&) {}

namespace {

constexpr std::uint32_t largestToken = 256 * 1024 * 1024;
constexpr std::size_t mostAttributes = 64;
constexpr std::uint64_t roomBesideBase64 = 64;

struct Limits {
    explicit Limits(const ReadLimits& limits)
        : depth(std::uint64_t{3} * limits.nesting), nameBytes(limits.nameBytes),
          valueBytes((std::max<std::uint64_t>(limits.keyBytes, limits.nameBytes) + 2) / 3 * 4 + roomBesideBase64) {}

    std::uint64_t depth;
    std::uint64_t nameBytes;
    std::uint64_t valueBytes;
};

struct FreeParser {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};
using ParserPointer = std::unique_ptr<std::remove_pointer_t<XML_Parser>, FreeParser>;

std::string TextOf(const XML_Char* text) { return text != nullptr ? text : ""; }

enum class Encoding { eUTF8, eASCII, eOTHER };

Encoding EncodingOf(std::string name) {
    std::transform(name.begin(), name.end(), name.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    return name.empty() || name == "UTF-8" ? Encoding::eUTF8 : name == "US-ASCII" ? Encoding::eASCII : Encoding::eOTHER;
}

void AddPosition(Error& error, XMLPosition position) {
    error.AddVariable("Line", std::to_string(position.line));
    error.AddVariable("Column", std::to_string(position.column));
}

bool IsUtf16(std::string_view document) {
    const std::string_view start = document.substr(0, 2);
    return start == "\xFE\xFF" || start == "\xFF\xFE" || start.find('\0') != start.npos;
}

} // namespace

// One document on its way through expat, which knows nothing of the content of CDATA sections in UTF-8: it gets the
// opening of such a section, then its "]]>", while the handler gets what is between them from the source.
class XMLParserBody::Run {
public:
    Run(BinaryInputStream& stream, XMLParseHandler& handler);

    void Parse();
    XMLPosition GetPosition() const { return m_contentStart.value_or(Here()); }

private:
    template <auto Operation, class... Arguments>
    static void Forward(void* run, Arguments... arguments) noexcept;

    void OnDeclaration(const XML_Char* version, const XML_Char* encoding, int standalone);
    void OnDocumentType(const XML_Char* name, const XML_Char* system, const XML_Char* publicId, int hasDeclarations);
    void OnStartElement(const XML_Char* tag, const XML_Char** attributes);
    void OnEndElement(const XML_Char* tag);
    void OnCharacters(const XML_Char* characters, int size);
    void OnStartCData();
    void OnEndCData();
    void OnComment(const XML_Char* comment);
    void OnInstruction(const XML_Char* target, const XML_Char* data);
    void OnSkippedEntity(const XML_Char* entity, int isParameter);

    template <class Operation>
    void CallHandler(Operation operation);
    void StartDocument(const XML_Char* version, const XML_Char* encoding, bool standalone);
    void EndContent();
    void CheckElement(std::string_view tag, const XML_Char** attributes) const;
    void CheckName(std::string_view name, const char* what) const;
    XMLPortion NextPortion() const;
    void Feed(std::size_t size, bool isLast);
    void PassSection();
    [[noreturn]] void RaiseFaultOfSection(XMLPosition opened, XMLPosition place);
    std::uint32_t NextPieceSize() const;

    XMLPosition ParserPosition() const;
    XMLPosition Shifted(XMLPosition ofParser) const;
    XMLPosition Here() const { return Shifted(ParserPosition()); }
    void SetShift(XMLPosition ofParser, XMLPosition ofDocument);
    [[noreturn]] void Raise(const std::string& text) const;
    [[noreturn]] void RaiseFailure() const;

    XMLSource m_source;
    ParserPointer m_parser;
    XMLParseHandler& m_handler;
    Limits m_limits;
    std::exception_ptr m_failure;
    bool m_isStarted = false;
    std::uint64_t m_depth = 0;
    Encoding m_encoding = Encoding::eUTF8;
    std::uint64_t m_bytesFed = 0;
    // Where the parser sees the content of the section that it has opened with the last byte it was fed.
    std::optional<XMLPosition> m_openedSection;
    bool m_isSectionPassed = false;
    // What the sections that the parser did not see add to its positions; to columns in its line `shiftedLine` only.
    XMLPosition m_shift;
    std::uint64_t m_shiftedLine = 0;
    std::optional<XMLPosition> m_contentStart; // set while there is content that the handler has not got yet
    std::string m_content;
};

XMLParserBody::Run::Run(BinaryInputStream& stream, XMLParseHandler& handler)
    : m_source(stream), m_parser(XML_ParserCreate(nullptr)), m_handler(handler), m_limits(Context::Current().limits) {
    XML_Parser parser = m_parser.get();
    if (parser == nullptr)
        throw std::bad_alloc();
    XML_SetUserData(parser, this);
    XML_SetXmlDeclHandler(parser, &Forward<&Run::OnDeclaration>);
    XML_SetStartDoctypeDeclHandler(parser, &Forward<&Run::OnDocumentType>);
    XML_SetElementHandler(parser, &Forward<&Run::OnStartElement>, &Forward<&Run::OnEndElement>);
    XML_SetCharacterDataHandler(parser, &Forward<&Run::OnCharacters>);
    XML_SetCdataSectionHandler(parser, &Forward<&Run::OnStartCData>, &Forward<&Run::OnEndCData>);
    XML_SetCommentHandler(parser, &Forward<&Run::OnComment>);
    XML_SetProcessingInstructionHandler(parser, &Forward<&Run::OnInstruction>);
    XML_SetSkippedEntityHandler(parser, &Forward<&Run::OnSkippedEntity>);
}

// Nothing may be thrown through the frames of expat, which still makes some calls after it was stopped.
template <auto Operation, class... Arguments>
void XMLParserBody::Run::Forward(void* run, Arguments... arguments) noexcept {
    Run& self = *static_cast<Run*>(run);
    if (self.m_failure)
        return;
    try {
        self.CallHandler([&] { (self.*Operation)(arguments...); });
    } catch (...) {
        self.m_failure = std::current_exception();
        XML_StopParser(self.m_parser.get(), XML_FALSE);
    }
}

template <class Operation>
void XMLParserBody::Run::CallHandler(Operation operation) {
    try {
        operation();
    } catch (Error& error) {
        const std::vector<AlertInfo::Variable>& variables = error.GetVariables();
        if (std::none_of(variables.begin(), variables.end(), [](const auto& known) { return known.name == "Line"; }))
            AddPosition(error, GetPosition());
        throw;
    }
}

void XMLParserBody::Run::OnDeclaration(const XML_Char* version, const XML_Char* encoding, int standalone) {
    if (encoding != nullptr)
        m_encoding = EncodingOf(encoding);
    StartDocument(version, encoding, standalone == 1);
}

// Without declarations there are no entities to expand and no defaults of attributes.
void XMLParserBody::Run::OnDocumentType(const XML_Char*, const XML_Char*, const XML_Char*, int hasDeclarations) {
    EndContent();
    if (hasDeclarations != 0)
        Raise("a document type without declarations expected, found the start of declarations");
}

void XMLParserBody::Run::OnStartElement(const XML_Char* tag, const XML_Char** attributes) {
    EndContent();
    CheckElement(tag, attributes);
    ++m_depth;
    m_handler.OnStartTag(tag);
    for (; *attributes != nullptr; attributes += 2)
        m_handler.OnAttribute(attributes[0], XMLAttributeValue<std::string>(attributes[1]));
    m_handler.OnStartTagContent();
}

void XMLParserBody::Run::OnEndElement(const XML_Char* tag) {
    EndContent();
    --m_depth;
    // The end of <a/> is an event of its own, without bytes.
    m_handler.OnEndTag(tag, XML_GetCurrentByteCount(m_parser.get()) == 0);
}

void XMLParserBody::Run::OnCharacters(const XML_Char* characters, int size) {
    if (!m_contentStart)
        m_contentStart = Here();
    m_content.append(characters, static_cast<std::size_t>(size));
}

void XMLParserBody::Run::OnStartCData() {
    EndContent();
    const auto bytesSeen = static_cast<std::uint32_t>(XML_GetCurrentByteIndex(m_parser.get())) + openingOfCData.size();
    if (m_encoding == Encoding::eOTHER ||
        static_cast<std::uint32_t>(bytesSeen) != static_cast<std::uint32_t>(m_bytesFed))
        return;
    m_openedSection = ParserPosition();
    m_openedSection->column += openingOfCData.size();
}

void XMLParserBody::Run::OnEndCData() {
    if (m_isSectionPassed) {
        m_isSectionPassed = false;
        return;
    }
    if (!m_contentStart)
        m_contentStart = Here();
    MemoryInputStream section(m_content.data(), m_content.size());
    m_handler.OnCDataSection(section);
    m_content.clear();
    m_contentStart.reset();
}

void XMLParserBody::Run::OnComment(const XML_Char* comment) {
    EndContent();
    m_handler.OnComment(comment);
}

void XMLParserBody::Run::OnInstruction(const XML_Char*, const XML_Char*) { EndContent(); }

void XMLParserBody::Run::OnSkippedEntity(const XML_Char* entity, int) {
    EndContent();
    m_handler.OnEntityReference(entity);
}

void XMLParserBody::Run::StartDocument(const XML_Char* version, const XML_Char* encoding, bool standalone) {
    m_isStarted = true;
    m_handler.OnStartDoc(TextOf(version), TextOf(encoding), standalone);
}

// What comes before anything that is not text.
void XMLParserBody::Run::EndContent() {
    if (!m_isStarted)
        StartDocument("1.0", nullptr, false);
    if (!m_contentStart)
        return;
    m_handler.OnTextContent(m_content);
    m_content.clear();
    m_contentStart.reset();
}

void XMLParserBody::Run::CheckElement(std::string_view tag, const XML_Char** attributes) const {
    if (m_depth == m_limits.depth)
        Raise(FormatText("elements nested up to %1% deep expected, found one in %1% others", {m_limits.depth}));
    CheckName(tag, "element");
    std::size_t count = 0;
    for (; *attributes != nullptr; attributes += 2, ++count) {
        CheckName(attributes[0], "attribute");
        const std::string_view value = attributes[1];
        if (value.size() > m_limits.valueBytes)
            Raise(FormatText("values of attributes of up to %1% bytes expected, found %2% bytes in \"%3%\"",
                             {m_limits.valueBytes, value.size(), attributes[0]}));
    }
    if (count > mostAttributes)
        Raise(FormatText("up to %1% attributes in an element expected, found %2%", {mostAttributes, count}));
}

void XMLParserBody::Run::CheckName(std::string_view name, const char* what) const {
    if (name.size() > m_limits.nameBytes)
        Raise(FormatText("names of up to %1% bytes expected, found the name of an %2% with %3% bytes",
                         {m_limits.nameBytes, what, name.size()}));
}

void XMLParserBody::Run::Parse() {
    m_source.ReadOn(xmlPieceSize);
    if (IsUtf16(m_source.GetText()))
        m_encoding = Encoding::eOTHER;
    for (bool isLast = false; !isLast;) {
        const XMLPortion portion = NextPortion();
        isLast = m_source.IsAtEnd() && !portion.opensCData;
        Feed(portion.size, isLast);
        if (m_openedSection)
            PassSection();
        else if (!isLast && !portion.opensCData)
            m_source.ReadOn(NextPieceSize());
    }
    CallHandler([this] { m_handler.OnEndDoc(); });
}

// When a tag or comment did not end with what it was fed, expat may look at it again only after it was fed as much once
// more, and then does not see at once that a section begins. So it gets tags and comments as a whole.
XMLPortion XMLParserBody::Run::NextPortion() const {
    const std::string_view text = m_source.GetText();
    if (m_encoding == Encoding::eOTHER)
        return {text.size(), false};
    const XMLPortion portion = FindPortion(text);
    const bool isAll = !portion.opensCData && (m_source.IsAtEnd() || text.size() - portion.size > largestToken);
    return isAll ? XMLPortion{text.size(), false} : portion;
}

void XMLParserBody::Run::Feed(std::size_t size, bool isLast) {
    if (size == 0 && !isLast)
        return;
    const std::string_view text = m_source.GetText().substr(0, size);
    m_source.Drop(size);
    m_bytesFed += size;
    if (XML_Parse(m_parser.get(), text.data(), static_cast<int>(size), isLast) != XML_STATUS_OK)
        RaiseFailure();
}

void XMLParserBody::Run::PassSection() {
    const XMLPosition opened = *m_openedSection;
    m_openedSection.reset();
    m_contentStart = Shifted(opened);
    XMLSectionStream section(m_source, *m_contentStart, m_encoding == Encoding::eASCII,
                             [&](XMLPosition place) { RaiseFaultOfSection(opened, place); });
    CallHandler([&] { m_handler.OnCDataSection(section); });
    section.Skip(std::numeric_limits<std::uint64_t>::max());
    m_contentStart.reset();
    m_isSectionPassed = true;
    SetShift(opened, section.GetPosition());
}

// Expat judges what cannot be, or ends too early.
void XMLParserBody::Run::RaiseFaultOfSection(XMLPosition opened, XMLPosition place) {
    SetShift(opened, place);
    if (XML_GetErrorCode(m_parser.get()) == XML_ERROR_NONE) {
        const std::string_view text = m_source.GetText().substr(0, longestCharacter);
        XML_Parse(m_parser.get(), text.data(), static_cast<int>(text.size()), XML_TRUE);
    }
    RaiseFailure();
}

// With each piece, all of a tag or comment that did not end yet is looked at again: pieces of its size keep the work
// linear. Byte indices have 32 bits on some systems, which is enough for their difference.
std::uint32_t XMLParserBody::Run::NextPieceSize() const {
    const auto seen = static_cast<std::uint32_t>(XML_GetCurrentByteIndex(m_parser.get()));
    const std::uint32_t unfinished = m_bytesFed == 0 ? 0 : static_cast<std::uint32_t>(m_bytesFed) - seen;
    if (unfinished > largestToken)
        Raise(FormatText("tags and comments of up to %1% bytes expected, found a longer one", {largestToken}));
    return std::max({xmlPieceSize, unfinished, static_cast<std::uint32_t>(m_source.GetText().size())});
}

XMLPosition XMLParserBody::Run::ParserPosition() const {
    return {XML_GetCurrentLineNumber(m_parser.get()), XML_GetCurrentColumnNumber(m_parser.get()) + 1};
}

// Shifts are differences, and may wrap.
XMLPosition XMLParserBody::Run::Shifted(XMLPosition ofParser) const {
    return {ofParser.line + m_shift.line, ofParser.column + (ofParser.line == m_shiftedLine ? m_shift.column : 0)};
}

void XMLParserBody::Run::SetShift(XMLPosition ofParser, XMLPosition ofDocument) {
    m_shiftedLine = ofParser.line;
    m_shift = {ofDocument.line - ofParser.line, ofDocument.column - ofParser.column};
}

void XMLParserBody::Run::Raise(const std::string& text) const {
    const XMLPosition here = Here();
    XMLParseError error(FormatText("line %1%, column %2%: %3%", {here.line, here.column, text}));
    AddPosition(error, here);
    Error::RaiseError(std::move(error), QOR_CODE_CONTEXT("XMLParser"), "Qor.Core.XMLParser");
}

void XMLParserBody::Run::RaiseFailure() const {
    if (m_failure)
        std::rethrow_exception(m_failure);
    const XML_Error code = XML_GetErrorCode(m_parser.get());
    if (code == XML_ERROR_NO_MEMORY)
        throw std::bad_alloc();
    Raise(XML_ErrorString(code));
}

XMLPosition XMLParserBody::GetPosition() const { return m_run != nullptr ? m_run->GetPosition() : XMLPosition(); }

void XMLParserBody::ParseDocument(BinaryInputStream& stream, XMLParseHandler& handler) {
    QOR_ASSERT(m_run == nullptr, "XMLParser");
    const struct Leaver {
        ~Leaver() { run = nullptr; }
        const Run*& run;
    } leaver{m_run};
    Run run(stream, handler);
    m_run = &run;
    run.Parse();
}

} // namespace Qor::Core
