#include <QorCore/Context.h>
#include <QorCore/MemoryStreams.h>
#include <QorCore/Message.h>
#include <QorCore/XMLParser.h>

#include <algorithm>
#include <exception>
#include <expat.h>
#include <memory>
#include <new>
#include <optional>
#include <string_view>
#include <type_traits>

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

constexpr std::uint32_t pieceSize = 64 * 1024;
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

} // namespace

// One document on its way through expat.
class XMLParserBody::Run {
public:
    explicit Run(XMLParseHandler& handler);

    void Parse(BinaryInputStream& stream);
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

    void StartDocument(const XML_Char* version, const XML_Char* encoding, bool standalone);
    void EndContent();
    void CheckElement(std::string_view tag, const XML_Char** attributes) const;
    void CheckName(std::string_view name, const char* what) const;
    bool ParsePiece(BinaryInputStream& stream, std::uint32_t size);
    std::uint32_t NextPieceSize() const;

    XMLPosition Here() const;
    [[noreturn]] void Raise(const std::string& text) const;
    [[noreturn]] void RaiseFailure() const;

    ParserPointer m_parser;
    XMLParseHandler& m_handler;
    Limits m_limits;
    std::exception_ptr m_failure;
    bool m_isStarted = false;
    std::uint64_t m_depth = 0;
    std::uint64_t m_bytesParsed = 0;
    std::optional<XMLPosition> m_contentStart; // set while there is content that the handler has not got yet
    std::string m_content;
};

XMLParserBody::Run::Run(XMLParseHandler& handler)
    : m_parser(XML_ParserCreate(nullptr)), m_handler(handler), m_limits(Context::Current().limits) {
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
        (self.*Operation)(arguments...);
    } catch (...) {
        self.m_failure = std::current_exception();
        XML_StopParser(self.m_parser.get(), XML_FALSE);
    }
}

void XMLParserBody::Run::OnDeclaration(const XML_Char* version, const XML_Char* encoding, int standalone) {
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

void XMLParserBody::Run::OnStartCData() { EndContent(); }

void XMLParserBody::Run::OnEndCData() {
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

void XMLParserBody::Run::Parse(BinaryInputStream& stream) {
    while (ParsePiece(stream, NextPieceSize())) {
    }
    m_handler.OnEndDoc();
}

bool XMLParserBody::Run::ParsePiece(BinaryInputStream& stream, std::uint32_t size) {
    void* const piece = XML_GetBuffer(m_parser.get(), static_cast<int>(size));
    if (piece == nullptr)
        RaiseFailure();
    const auto read = static_cast<std::uint32_t>(stream.Read(piece, size));
    const bool isLast = read < size;
    m_bytesParsed += read;
    if (XML_ParseBuffer(m_parser.get(), static_cast<int>(read), isLast) != XML_STATUS_OK)
        RaiseFailure();
    return !isLast;
}

// With each piece, expat looks again at all of a tag or comment that did not end yet: pieces of its size keep the work
// linear. Byte indices have 32 bits on some systems, which is enough for their difference.
std::uint32_t XMLParserBody::Run::NextPieceSize() const {
    const auto seen = static_cast<std::uint32_t>(XML_GetCurrentByteIndex(m_parser.get()));
    const std::uint32_t unfinished = m_bytesParsed == 0 ? 0 : static_cast<std::uint32_t>(m_bytesParsed) - seen;
    if (unfinished > largestToken)
        Raise(FormatText("tags and comments of up to %1% bytes expected, found a longer one", {largestToken}));
    return std::max(pieceSize, unfinished);
}

XMLPosition XMLParserBody::Run::Here() const {
    return {XML_GetCurrentLineNumber(m_parser.get()), XML_GetCurrentColumnNumber(m_parser.get()) + 1};
}

void XMLParserBody::Run::Raise(const std::string& text) const {
    const XMLPosition here = Here();
    XMLParseError error(FormatText("line %1%, column %2%: %3%", {here.line, here.column, text}));
    error.AddVariable("Line", std::to_string(here.line));
    error.AddVariable("Column", std::to_string(here.column));
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
    Run run(handler);
    m_run = &run;
    run.Parse(stream);
}

} // namespace Qor::Core
