#include "XMLRecorder.h"

#include <QorCore/MemoryStreams.h>
#include <QorCore/Utf8.h>
#include <QorCore/XMLParser.h>

#include <gtest/gtest.h>

#include <Alerts.h>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace Qor::Core::Testing {

namespace {

// In this encoding, sections are read by expat and stand in memory: what comes from the source is compared with that.
std::string Utf16(const std::string& utf8) {
    std::string bytes; // without a mark, which would be a column
    const auto append = [&](std::uint32_t unit) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    };
    for (const wchar_t wide : WideFromUtf8(utf8)) {
        const auto c = static_cast<std::uint32_t>(wide);
        if (c > 0xFFFF)
            append(0xD800 + ((c - 0x10000) >> 10));
        append(c > 0xFFFF ? 0xDC00 + (c & 0x3FF) : c);
    }
    return bytes;
}

// What the handler saw, where it was, and the error.
std::string OutcomeOf(BinaryInputStream& stream, std::uint64_t readSize, std::uint64_t cDataRead = 1'000'000) {
    XMLParser<Recorder> parser;
    Recorder recorder;
    recorder.readSize = readSize;
    recorder.cDataRead = cDataRead;
    std::string places;
    const auto place = [&] {
        return std::to_string(parser.GetPosition().line) + ":" + std::to_string(parser.GetPosition().column) + " ";
    };
    recorder.action = [&] { places += place(); };
    const std::string fault = ErrorOf([&] { parser.Parse(stream, recorder); });
    return Joined(recorder.seen) + "\n" + places + fault;
}

std::string OutcomeOf(const std::string& document, std::uint64_t readSize = 1000, std::uint64_t cDataRead = 1'000'000) {
    MemoryInputStream stream(document.data(), document.size());
    return OutcomeOf(stream, readSize, cDataRead);
}

std::string FaultOf(const std::string& document, std::uint64_t cDataRead = 1'000'000) {
    const std::string outcome = OutcomeOf(document, 1000, cDataRead);
    const std::size_t begin = outcome.find("line ");
    return begin == outcome.npos ? "none" : outcome.substr(begin, outcome.find("; Line = ") - begin);
}

// Puts an instruction before a document, so that its first `before` bytes are the last ones of a piece.
std::string WithPieceEndingBehind(std::size_t before, const std::string& document) {
    return "<?p " + std::string(pieceSize - 7 - before, 'p') + "\n?>" + document;
}

TEST(XMLSection, SeemsToBeReadAsAWhole) {
    const std::string utf8 = "\x7F\xC2\x80\xC3\xA4\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBD\xEF\xBB\xBF\xF0\x90\x80\x80"
                             "\xF4\x8F\xBF\xBF";
    const std::string documents[] = {
        "<a><![CDATA[]]></a>",
        "<a x='1' y=\"&lt;2\">t&amp;u<b/><![CDATA[<]]]]><?p i?>\xC3\xA4\r\nv&#x20AC;</a>",
        "<a>t<![CDATA[1]]><![CDATA[2]]>u\r\n<![CDATA[\r\n3\r4\n\r\r\n]]>v<b/></a>",
        "<a><![CDATA[]]]]><![CDATA[]]]]]]><![CDATA[> ]> ]] > \t&lt;<b>&#0;]]></a>",
        "<a><![CDATA[]]]></a><![CDATA[<a>]]>&amp;</a>",
        "<a><![CDATA[" + utf8 + "]]>" + utf8 + "&x</a>",
        "<a b='>' c=\"'>\"><!-- ' <![CDATA[ > --><?p \" <![CDATA[ > ?>&amp;'<![CDATA[x]]></a>",
        "<!DOCTYPE a SYSTEM '<![CDATA[>'><a>&b;<![CDATA[x]]>&c;</a>",
        "<a>" + Repeated(50, "<![CDATA[x]]>y") + "\n" + Repeated(50, "<![CDATA[x\n]]>y") + "&</a>",
        // Faults behind sections, and between them.
        "<a><![CDATA[12\n\xC3\xA4"
        "4]]> & </a>",
        "<a><![CDATA[1234]]>\n & </a>",
        "<a>\n  <![CDATA[12\n3]]><![CDATA[4]]></b>",
        "<a><b c='<![CDATA['/><![CDATA[]]></a>",
        "<a>&<![CDATA[1]]></a>",
        "<a <![CDATA[1]]></a>",
        "<![CDATA[1]]><a/>",
        // Faults in sections.
        "<a><![CDATA[",
        "<a>\n<![CDATA[1\n23",
        "<a><![CDATA[1]",
        "<a><![CDATA[1]]",
        "<a><![CDATA[\r",
        "<a><![CDATA[123]]><![CDATA[\n\r\n4\x01]]></a>",
        "<a><![CDATA[123\x0C",
        "<a><![CDATA[12\xEF\xBF\xBE]]></a>",
        "<a><![CDATA[12\xEF\xBF\xBF",
    };
    for (const std::string& document : documents) {
        const std::string expected = OutcomeOf(Utf16("<?p \n?>" + document));
        for (std::size_t split = 0; split <= document.size(); ++split) {
            const std::uint64_t readSize = split % 3 == 0 ? 1 : split % 3 == 1 ? 7 : 1000;
            EXPECT_EQ(OutcomeOf(WithPieceEndingBehind(split, document), readSize), expected)
                << document << ' ' << split;
        }
        Trickle trickle = Deliver(document);
        EXPECT_EQ(OutcomeOf(trickle, 1000), OutcomeOf(Utf16(document))) << document;
    }
}

TEST(XMLSection, AnyTextIsReadInAnyPieces) {
    std::mt19937 random(5);
    const auto below = [&](std::size_t end) { return random() % end; };
    const std::vector<std::string> tokens = {"\r\n", "\r", "\n",       "\t",           "]",
                                             "]]",   ">",  "\xC3\xA4", "\xE2\x82\xAC", "\xF0\x9F\x98\x80"};
    for (int round = 0; round < 400; ++round) {
        std::string text;
        for (std::size_t count = below(20); count != 0; --count)
            text += std::string(below(2) * below(90), 'x') + tokens[below(round % 2 == 0 ? 4 : tokens.size())];
        for (std::size_t end = 0; (end = text.find("]]>", end)) != text.npos;)
            text.erase(end, 3), end = 0;
        const std::string document = "<a><![CDATA[" + text + (below(9) == 0 ? "\x01" : "") + "]]> &</a>";
        const std::string padded = WithPieceEndingBehind(below(document.size()), document);
        EXPECT_EQ(OutcomeOf(padded, 1 + below(below(2) == 0 ? 10 : 500)), OutcomeOf(Utf16("<?p \n?>" + document)))
            << round;
    }
}

TEST(XMLSection, WhatIsNoCharacterIsAFaultWhereItStands) {
    using namespace std::string_literals;
    std::vector<std::string> rows = {"\0"s};
    std::istringstream words(
        "\x80 \xC0\x80 \xC1\xBF \xC3( \xE0\x9F\xBF \xE2\x82( \xED\xA0\x80 \xEF\xBF\xBE \xEF\xBF\xBF \xF0\x8F\xBF\xBF "
        "\xF4\x90\x80\x80 \xF5\x80\x80\x80 \xFF \x1F \xF0\x9F\x98");
    for (std::string word; words >> word;)
        rows.push_back(word);
    for (const std::string& row : rows) {
        const bool isCut = row == "\xF0\x9F\x98";
        const std::string bytes = isCut ? row : row + "]]></a>";
        const std::string text =
            "line 1, column 16: "s + (isCut ? "partial character" : "not well-formed (invalid token)");
        for (const std::uint64_t cDataRead : {0u, 1u, 3u, 1000u})
            EXPECT_EQ(FaultOf("<a><![CDATA[123" + bytes, cDataRead), text) << bytes;
        for (std::size_t size = 33; size < 140; ++size)
            EXPECT_EQ(FaultOf("<a><![CDATA[" + std::string(size - 33, 'x') + "\n" + std::string(15, ' ') + bytes),
                      "line 2" + text.substr(6))
                << bytes << size;
    }
}

TEST(XMLSection, ComesFromTheSourceWhereverThatBreaks) {
    const auto isTaken = [](const std::string& document) {
        Trickle stream = Deliver(document, false, 1000);
        Recorder recorder;
        XMLParser<Recorder>().Parse(stream, recorder);
        EXPECT_FALSE(recorder.seen.empty());
        return !recorder.sectionSize;
    };
    const std::string section = "<![CDATA[x]]></b>";
    const std::string beginnings[] = {
        "<b c='1' d='>' e=\">'\">",
        "<b><!-- ' > < <![CDATA[ -->",
        "<b>&#0000000000065;",
        "<b>]]\xC3\xA4]]\r",
        "<b><?p '?>",
    };
    for (const std::string& beginning : beginnings)
        for (std::size_t split = 0; split <= (beginning + section).size(); ++split)
            EXPECT_TRUE(isTaken(WithPieceEndingBehind(split, beginning + section))) << beginning << ' ' << split;
    for (const std::size_t size : {pieceSize, 3 * pieceSize, 20 * pieceSize})
        for (const std::size_t offset : {0u, 1u, 5u, 1000u, 50'000u}) {
            const std::string filler = std::string(offset, '>') + std::string(size - offset, 'x');
            EXPECT_TRUE(isTaken("<b c='" + filler + "'>" + section)) << size << ' ' << offset;
            EXPECT_TRUE(isTaken("<b><?p " + filler + "?>" + section)) << size << ' ' << offset;
            EXPECT_TRUE(isTaken("<b><!--" + filler + "-->" + section)) << size << ' ' << offset;
        }
    const std::pair<std::string, bool> encodings[] = {
        {"UTF-8", true}, {"utf-8", true}, {"US-ASCII", true}, {"us-ascii", true}, {"ISO-8859-1", false}};
    for (const auto& [encoding, taken] : encodings)
        EXPECT_EQ(isTaken("<?xml version='1.0' encoding='" + encoding + "'?><b>" + section), taken) << encoding;
    EXPECT_TRUE(isTaken("\xEF\xBB\xBF<b>" + section));
    EXPECT_FALSE(isTaken(Utf16("<b>" + section)));
    EXPECT_EQ(FaultOf("<?xml version='1.0' encoding='US-ASCII'?><a><![CDATA[1\xC3\xA4]]></a>"),
              "line 1, column 55: not well-formed (invalid token)");
}

// Reads a section twice, whatever happens.
class Stubborn final : public XMLParseHandler {
public:
    void OnCDataSection(BinaryInputStream& section) override {
        bytesLeft = section.BytesLeft();
        for (std::string bytes(2 * pieceSize, '?'); errors.size() < 2;) {
            try {
                section.Read(bytes.data(), bytes.size());
                errors.push_back("none");
            } catch (const IOError& error) {
                errors.push_back(error.ToString());
            }
        }
    }

    std::optional<std::uint64_t> bytesLeft;
    std::vector<std::string> errors;
};

TEST(XMLSection, HandlersCannotHideAFault) {
    for (const std::string content : {"1\x01", "\r", "", "1\xC3", "1]]"}) {
        const std::string document = "<a><![CDATA[" + content;
        Stubborn handler;
        MemoryInputStream stream(document.data(), document.size());
        const auto error = RaisedBy<XMLParseError>([&] { XMLParser<Stubborn>().Parse(stream, handler); });
        EXPECT_EQ(handler.errors, std::vector<std::string>(2, error.ToString()));
        EXPECT_EQ(handler.bytesLeft, content.size());
    }
    Stubborn handler;
    const std::string document = "<a><![CDATA[" + std::string(pieceSize, 'x');
    Trickle failing = Deliver(document, true);
    const auto error = RaisedBy<IOError>([&] { XMLParser<Stubborn>().Parse(failing, handler); });
    EXPECT_EQ(error.ToString(), IOError("The medium failed").ToString());
    EXPECT_EQ(handler.errors, std::vector<std::string>(2, error.ToString()));
}

} // namespace

} // namespace Qor::Core::Testing
