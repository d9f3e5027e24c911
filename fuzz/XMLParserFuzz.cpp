// An XML document, in pieces that the first three bytes choose, against expat that gets it as a whole: the same calls
// in the same order, and the same fault at the same place.

#include <QorCore/MemoryStreams.h>
#include <QorCore/XMLParser.h>

#include <algorithm>
#include <cstdlib>
#include <expat.h>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>

using namespace Qor::Core;

namespace {

constexpr std::size_t pieceSize = 64 * 1024;

/// What is called, and the fault, which begins as those of the parser do.
struct Outcome {
    std::string calls;
    std::string fault;
};

void Require(bool condition, const char* text, const Outcome& found, const Outcome& expected) {
    if (condition)
        return;
    std::cerr << text << "\nfound    " << found.calls << '\n'
              << found.fault << "\nexpected " << expected.calls << '\n'
              << expected.fault << '\n';
    std::abort();
}

std::string Call(char kind, std::string_view text) { return kind + std::string(text) + '\n'; }

class Recorder final : public XMLParseHandler {
public:
    Recorder(std::string& calls, std::size_t readSize, std::size_t sectionBytes)
        : m_calls(calls), m_readSize(readSize), m_sectionBytes(sectionBytes) {}

    void OnStartTag(const std::string& tag) override { m_calls += Call('<', tag); }
    void OnAttribute(const std::string& name, const XMLAttributeValue<std::string>& value) override {
        m_calls += Call('@', name + '=' + value.GetText());
    }
    void OnTextContent(const std::string& text) override { m_calls += Call('\'', text); }
    void OnEndTag(const std::string& tag, bool) override { m_calls += Call('>', tag); }
    void OnComment(const std::string& comment) override { m_calls += Call('!', comment); }
    void OnEntityReference(const std::string& entity) override { m_calls += Call('&', entity); }
    void OnCDataSection(BinaryInputStream& section) override {
        std::string text;
        for (std::string piece(m_readSize, '?'); !piece.empty() && text.size() < m_sectionBytes; text += piece)
            piece.resize(static_cast<std::size_t>(section.Read(piece.data(), piece.size())));
        m_calls += Call('[', text.substr(0, m_sectionBytes));
    }

private:
    std::string& m_calls;
    std::size_t m_readSize;
    std::size_t m_sectionBytes;
};

Outcome Found(const std::string& document, std::size_t readSize, std::size_t sectionBytes) {
    Outcome outcome;
    Recorder recorder(outcome.calls, readSize, sectionBytes);
    MemoryInputStream stream(document.data(), document.size());
    try {
        XMLParser<Recorder>().Parse(stream, recorder);
    } catch (const XMLParseError& error) {
        outcome.fault = error.GetText();
    }
    return outcome;
}

class Reference {
public:
    explicit Reference(std::size_t sectionBytes) : m_sectionBytes(sectionBytes) {
        XML_SetUserData(m_parser.get(), this);
        XML_SetStartDoctypeDeclHandler(m_parser.get(), [](void* self, const XML_Char*, const XML_Char*, const XML_Char*,
                                                          int) { Of(self).EndText(); });
        XML_SetElementHandler(
            m_parser.get(),
            [](void* self, const XML_Char* tag, const XML_Char** attributes) {
                Of(self).Add('<', tag);
                for (; *attributes != nullptr; attributes += 2)
                    Of(self).Add('@', std::string(attributes[0]) + '=' + attributes[1]);
            },
            [](void* self, const XML_Char* tag) { Of(self).Add('>', tag); });
        XML_SetCharacterDataHandler(m_parser.get(), [](void* self, const XML_Char* text, int size) {
            Of(self).m_text.append(text, static_cast<std::size_t>(size));
        });
        XML_SetCdataSectionHandler(
            m_parser.get(), [](void* self) { Of(self).EndText(); }, [](void* self) { Of(self).EndSection(); });
        XML_SetCommentHandler(m_parser.get(), [](void* self, const XML_Char* text) { Of(self).Add('!', text); });
        XML_SetProcessingInstructionHandler(m_parser.get(),
                                            [](void* self, const XML_Char*, const XML_Char*) { Of(self).EndText(); });
        XML_SetSkippedEntityHandler(m_parser.get(),
                                    [](void* self, const XML_Char* name, int) { Of(self).Add('&', name); });
    }

    Outcome Parse(const std::string& document) {
        XML_Parser parser = m_parser.get();
        if (XML_Parse(parser, document.data(), static_cast<int>(document.size()), XML_TRUE) != XML_STATUS_OK)
            m_outcome.fault = "line " + std::to_string(XML_GetCurrentLineNumber(parser)) + ", column " +
                              std::to_string(XML_GetCurrentColumnNumber(parser) + 1) + ": " +
                              XML_ErrorString(XML_GetErrorCode(parser));
        return m_outcome;
    }

private:
    static Reference& Of(void* self) { return *static_cast<Reference*>(self); }

    void Add(char kind, std::string_view text) {
        EndText();
        m_outcome.calls += Call(kind, text);
    }
    void EndText() {
        if (!m_text.empty())
            m_outcome.calls += Call('\'', m_text);
        m_text.clear();
    }
    void EndSection() {
        m_outcome.calls += Call('[', std::string_view(m_text).substr(0, m_sectionBytes));
        m_text.clear();
    }

    struct FreeParser {
        void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
    };

    std::unique_ptr<std::remove_pointer_t<XML_Parser>, FreeParser> m_parser{XML_ParserCreate(nullptr)};
    std::size_t m_sectionBytes;
    Outcome m_outcome;
    std::string m_text;
};

/// Outside the outermost element, expat names another fault when a piece ends in a word.
bool IsOutside(const std::string& fault) {
    return fault.ends_with(": junk after document element") || fault.ends_with(": syntax error");
}

/// Puts an instruction before what follows the XML declaration, so that a piece ends in the last `split` bytes.
std::string InPieces(std::string document, std::size_t split) {
    std::size_t begin = 0;
    if (document.starts_with("<?xml "))
        begin = std::min(document.find("?>"), document.size() - 2) + 2;
    const std::size_t behind = std::min(split, document.size() - begin);
    return document.insert(begin, "<?p " + std::string(pieceSize - begin - behind - 6, 'p') + "?>");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 3 || size > pieceSize / 2)
        return 0;
    std::string document(reinterpret_cast<const char*>(data) + 3, size - 3);
    if (data[0] % 2 == 1)
        document = InPieces(document, data[0] / 2u);
    const std::size_t sectionBytes = data[2] == 255 ? 5 : document.size();
    const Outcome found = Found(document, data[1] + 1u, sectionBytes);
    if (found.fault.find(" expected, found ") != found.fault.npos) // a limit, or what only this parser refuses
        return 0;
    const Outcome expected = Reference(sectionBytes).Parse(document);
    Require(found.fault == expected.fault || IsOutside(found.fault) || IsOutside(expected.fault), "another fault",
            found, expected);
    // Of a faulty section, something may be read.
    Require(found.calls == expected.calls || (sectionBytes < document.size() && !found.fault.empty()), "other calls",
            found, expected);
    return 0;
}
