#include "XMLRecorder.h"

#include <QorCore/Context.h>
#include <QorCore/MemoryStreams.h>
#include <QorCore/XMLParser.h>

#include <gtest/gtest.h>

#include <Alerts.h>
#include <algorithm>
#include <string>
#include <vector>

namespace Qor::Core::Testing {

namespace {

using Parser = XMLParser<Recorder>;

// As many bytes as anyone asks for, up to a size; keeps how many that were each time.
class Endless final : public BinaryInputStream {
public:
    Endless(std::string begin, std::uint64_t size) : m_begin(std::move(begin)), m_left(size) {}

    std::vector<std::uint64_t> requests;

protected:
    std::uint64_t DoRead(void* destination, std::uint64_t size) override {
        requests.push_back(size);
        const std::uint64_t done = std::min(size, m_left);
        std::fill_n(static_cast<char*>(destination), done, 'x');
        m_begin.copy(static_cast<char*>(destination), m_begin.size());
        m_begin.clear();
        m_left -= done;
        return done;
    }

private:
    std::string m_begin;
    std::uint64_t m_left;
};

std::string CallsOf(const std::string& document, std::uint64_t cDataRead = 1'000'000) {
    Recorder recorder;
    recorder.cDataRead = cDataRead;
    MemoryInputStream stream(document.data(), document.size());
    Parser().Parse(stream, recorder);
    return Joined(recorder.seen);
}

std::string FaultOf(const std::string& document) {
    const XMLParseError error = RaisedBy<XMLParseError>([&] { CallsOf(document); });
    EXPECT_EQ(error.GetTypeName() + " " + error.GetCategory(), "XMLParseError Qor.Core.XMLParser");
    EXPECT_EQ(error.GetText().find("line " + error.GetVariable("Line") + ", column " + error.GetVariable("Column")),
              0u);
    return error.GetText();
}

const std::string everything = "<?xml version='1.0' encoding='UTF-8'?><!--c--><a x='1' y=\"&lt;2\">t&amp;u<b/>"
                               "<![CDATA[<]]]]><?p i?>\xC3\xA4\r\nv</a>";
const std::string callsOfEverything = "doc(1.0,UTF-8) !c <a @x=1 @y=<2 > 't&u' <b > /b> [<]]] '\xC3\xA4\nv' </a> end";

TEST(XMLParser, TellsWhatStandsInADocument) {
    const std::pair<std::string, std::string> rows[] = {
        {everything, callsOfEverything},
        {"\xEF\xBB\xBF<?xml version='1.0' standalone='yes'?><a/>\n", "doc(1.0,,alone) <a > /a> end"},
        {"<a><b><c/></b>x<b/></a>", "doc(1.0,) <a > <b > <c > /c> </b> 'x' <b > /b> </a> end"},
        {"<n:a z='' b='2' n:a='1'/>", "doc(1.0,) <n:a @z= @b=2 @n:a=1 > /n:a> end"},
        {"<a>1&lt;2&gt;3&amp;4&quot;5&apos;6&#65;&#x20AC;</a>", "doc(1.0,) <a > '1<2>3&4\"5'6A\xE2\x82\xAC' </a> end"},
        {"<a b='1\n2&#10;3\t4'>\r\n5\r6\n</a>", "doc(1.0,) <a @b=1 2\n3 4 > '\n5\n6\n' </a> end"},
        {"<!--1--><a>x<!--2-->y</a><!--3-->", "doc(1.0,) !1 <a > 'x' !2 'y' </a> !3 end"},
        {"<?p?><a>x<?p q?>y<?r?></a><?s?>", "doc(1.0,) <a > 'x' 'y' </a> end"},
        {"<a>x<![CDATA[]]>y<![CDATA[1]]><![CDATA[&lt;]>\r\n]]></a>",
         "doc(1.0,) <a > 'x' [] 'y' [1] [&lt;]>\n] </a> end"},
        {"<!DOCTYPE a SYSTEM 'file:///etc/passwd'><a b='1&c;2'>x&d;y</a>", "doc(1.0,) <a @b=12 > 'x' &d 'y' </a> end"},
        {"<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE4<![CDATA[\xE4]]></a>",
         "doc(1.0,ISO-8859-1) <a > '\xC3\xA4' [\xC3\xA4] </a> end"},
        {std::string("\xFF\xFE<\0a\0>\0\xAC\x20<\0/\0a\0>\0", 18), "doc(1.0,) <a > '\xE2\x82\xAC' </a> end"},
        {"<a>" + std::string(3 * pieceSize, 'x') + "</a>",
         "doc(1.0,) <a > '" + std::string(3 * pieceSize, 'x') + "' </a> end"},
        {"<!--" + std::string(5 * pieceSize, 'x') + "--><a/>",
         "doc(1.0,) !" + std::string(5 * pieceSize, 'x') + " <a > /a> end"},
    };
    for (const auto& [document, calls] : rows) {
        EXPECT_EQ(CallsOf(document), calls) << document.substr(0, 200);
        Recorder recorder;
        Trickle stream = Deliver(document);
        Parser().Parse(stream, recorder);
        EXPECT_EQ(Joined(recorder.seen), calls) << "in bytes: " << document.substr(0, 200);
    }
}

// Each piece is a new look at all of a token that did not end yet, so the number of pieces must not grow with it.
TEST(XMLParser, PiecesGrowWithATokenThatDoesNotEndAndOnlyThen) {
    for (const char* const begin : {"<!--", "<a><!--", "<a>x<b c='", "<a><?b "}) {
        Endless stream(begin, 256 * pieceSize - 1);
        Recorder recorder;
        EXPECT_THROW(Parser().Parse(stream, recorder), XMLParseError);
        EXPECT_LE(stream.requests.size(), 11u) << begin;
    }
    for (const char* const begin : {"<a>", "<a><![CDATA["}) {
        Endless stream(begin, 64 * pieceSize - 1);
        Recorder recorder;
        EXPECT_THROW(Parser().Parse(stream, recorder), XMLParseError);
        EXPECT_EQ(std::count(stream.requests.begin(), stream.requests.end(), pieceSize), 64) << begin;
    }
}

TEST(XMLParser, WhatTheHandlerDoesNotReadOfASectionIsDropped) {
    const std::string document = "<a><![CDATA[12\n3\n]]>4<![CDATA[5\n]6]]></a>";
    EXPECT_EQ(CallsOf(document, 0), "doc(1.0,) <a > [] '4' [] </a> end");
    EXPECT_EQ(CallsOf(document, 1), "doc(1.0,) <a > [1] '4' [5] </a> end");
}

TEST(XMLParser, HandlersLearnWhereTheyAre) {
    const std::string document =
        "<?xml version='1.0'?>\n<!--\n--><a\n b='1'>\xC3\xA4 x\n&lt;<b/>\n  <![CDATA[1\n2]]></a>\n";
    Parser parser;
    Recorder recorder;
    std::string places;
    recorder.action = [&] {
        const XMLPosition place = parser.GetPosition();
        places += std::to_string(place.line) + ":" + std::to_string(place.column) + " ";
    };
    MemoryInputStream stream(document.data(), document.size());
    parser.Parse(stream, recorder);
    EXPECT_EQ(Joined(recorder.seen), "doc(1.0,) !\n <a @b=1 > '\xC3\xA4 x\n<' <b > /b> '\n  ' [1\n2] </a> end");
    EXPECT_EQ(places, "1:1 2:1 3:4 3:4 3:4 4:8 5:5 5:5 5:9 5:9 6:12 7:5 8:1 ");
    EXPECT_EQ(parser.GetPosition(), XMLPosition());
}

TEST(XMLParser, FaultsAreReportedWithTheirPlace) {
    const std::string declarations = "a document type without declarations expected, found the start of declarations";
    const std::pair<std::string, std::string> rows[] = {
        {"", "line 1, column 1: no element found"},
        {"<a>\n<b>\n  x</a>", "line 3, column 6: mismatched tag"},
        {"<a>\n\xC3\xA4 & </a>", "line 2, column 4: not well-formed (invalid token)"},
        {"<a/>\n<b/>", "line 2, column 1: junk after document element"},
        {"<a b='1' b='2'/>", "line 1, column 10: duplicate attribute"},
        {"<a>&b;</a>", "line 1, column 4: undefined entity"},
        {"<!DOCTYPE a><a>&b;</a>", "line 1, column 16: undefined entity"},
        {"<a>\xC3(</a>", "line 1, column 4: not well-formed (invalid token)"},
        {"<a>&#0;</a>", "line 1, column 4: reference to invalid character number"},
        {"<?xml version='1.0' encoding='UTF-16'?><a/>", "line 1, column 31: encoding specified in XML declaration is "
                                                        "incorrect"},
        {" <?xml version='1.0'?><a/>", "line 1, column 2: XML or text declaration not at start of entity"},
        // Entities that grow, that stand for files, and those of document types.
        {"<!DOCTYPE a [<!ENTITY b 'bb'><!ENTITY c '&b;&b;&b;'>]><a>&c;</a>", "line 1, column 13: " + declarations},
        {"<!DOCTYPE a\n[<!ENTITY b SYSTEM 'file:///etc/passwd'>]><a>&b;</a>", "line 2, column 1: " + declarations},
        {"<!DOCTYPE a [<!ENTITY % b '<!ENTITY c \"d\">'> %b;]><a/>", "line 1, column 13: " + declarations},
        {"<!DOCTYPE a SYSTEM 'b' []><a/>", "line 1, column 24: " + declarations},
    };
    for (const auto& [document, text] : rows)
        EXPECT_EQ(FaultOf(document), text) << document;
    for (std::size_t size = 0; size < everything.size(); ++size)
        EXPECT_EQ(FaultOf(everything.substr(0, size)).find("line "), 0u) << size;
}

TEST(XMLParser, LimitsOfTheThreadHold) {
    const Context::ScopedLimits scope({.nesting = 2, .nameBytes = 5, .keyBytes = 10});
    const auto withAttributes = [](std::size_t count) {
        std::string tag = "<a";
        for (; count != 0; --count)
            tag += " a" + std::to_string(count) + "=''";
        return tag + "/>";
    };
    const auto withValue = [](std::size_t size) { return "<a>\n<b c='" + std::string(size, 'x') + "'/></a>"; };
    const struct {
        std::string accepted, refused, text;
    } rows[] = {
        {Repeated(6, "<a>") + Repeated(6, "</a>"), Repeated(7, "<a>") + Repeated(7, "</a>"),
         "line 1, column 19: elements nested up to 6 deep expected, found one in 6 others"},
        {"<a>" + Repeated(9, "<b/>") + "</a>", "<a><a><a><a><a><b/><b/><a><a/>",
         "line 1, column 27: elements nested up to 6 deep expected, found one in 6 others"},
        {"<abcde/>", "<a>\n<abcdef/>",
         "line 2, column 1: names of up to 5 bytes expected, found the name of an element with 6 bytes"},
        {"<a abcde=''/>", "<a abcdef=''/>",
         "line 1, column 1: names of up to 5 bytes expected, found the name of an attribute with 6 bytes"},
        {withAttributes(64), withAttributes(65),
         "line 1, column 1: up to 64 attributes in an element expected, found 65"},
        {withValue(80), withValue(81),
         "line 2, column 1: values of attributes of up to 80 bytes expected, found 81 bytes in \"c\""},
    };
    for (const auto& [accepted, refused, text] : rows) {
        EXPECT_FALSE(CallsOf(accepted).empty());
        EXPECT_EQ(FaultOf(refused), text);
    }
}

TEST(XMLParser, DepthTakesNoStack) {
    const Context::ScopedLimits scope({.nesting = 200'000});
    const std::size_t depth = 600'000;
    EXPECT_EQ(CallsOf(Repeated(depth, "<a>") + Repeated(depth, "</a>")).size(), 10 + depth * (3 + 2 + 5) + 3);
}

TEST(XMLParser, FailuresOfTheStreamPassThrough) {
    Parser parser;
    for (const std::string& document : {std::string(), everything, everything + std::string(pieceSize, ' ')}) {
        Recorder recorder;
        Trickle failing = Deliver(document, true);
        EXPECT_EQ(RaisedBy<IOError>([&] { parser.Parse(failing, recorder); }).ToString(),
                  IOError("The medium failed").ToString());
        EXPECT_EQ(parser.GetPosition(), XMLPosition());
    }
    Recorder recorder;
    Trickle stream = Deliver(everything);
    parser.Parse(stream, recorder);
    EXPECT_EQ(Joined(recorder.seen), callsOfEverything);
}

} // namespace

} // namespace Qor::Core::Testing
