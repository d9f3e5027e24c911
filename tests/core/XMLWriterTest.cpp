#include "Alerts.h"

#include <QorCore/MemoryStreams.h>
#include <QorCore/XMLParser.h>
#include <QorCore/XMLWriter.h>

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <sstream>

namespace Qor::Core::Testing {

namespace {

using Events = std::vector<std::string>;

void WriteCData(XMLWriter& writer, std::ostream& stream, const std::string& bytes) {
    MemoryInputStream input(bytes.data(), bytes.size());
    writer.CData(stream, input);
}

/// What a parser sees; blanks between elements aside.
class EventLog final : public XMLParseHandler {
public:
    void OnStartTag(const std::string& tag) override { events.push_back('<' + tag); }
    void OnAttribute(const std::string& name, const XMLAttributeValue<std::string>& value) override {
        events.push_back('@' + name + '=' + value.GetText());
    }
    void OnTextContent(const std::string& text) override {
        if (text.find_first_not_of(" \n") != text.npos)
            events.push_back('\'' + text);
    }
    void OnCDataSection(BinaryInputStream& section) override {
        std::string text;
        for (char c = 0; section.Read(&c, 1) == 1;)
            text += c;
        const bool goesOn = !events.empty() && events.back().starts_with("[");
        goesOn ? void(events.back() += text) : events.push_back('[' + text);
    }
    void OnComment(const std::string& text) override { events.push_back('!' + text); }
    void OnEndTag(const std::string& tag, bool) override { events.push_back('>' + tag); }

    Events events;
};

Events Parse(const std::string& document) {
    MemoryInputStream stream(document.data(), document.size());
    EventLog log;
    XMLParser<EventLog>().Parse(stream, log);
    return log.events;
}

} // namespace

TEST(XMLWriter, WritesWhatIsReadByPeopleAndParsers) {
    std::ostringstream stream;
    XMLWriter writer;
    writer.StartDocument(stream);
    writer.StartTag(stream, "a");
    writer.Attribute(stream, "k", "1 \"<&>'\t\r\n\xC3\xA4");
    writer.StartTag(stream, "empty");
    writer.EndTag(stream);
    writer.Comment(stream, " note ");
    writer.StartTag(stream, "b");
    writer.Text(stream, "x < y");
    writer.Text(stream, " & ]]>\r\n ");
    writer.StartTag(stream, "inside");
    writer.StartTag(stream, "deep");
    writer.EndTag(stream);
    writer.EndTag(stream);
    writer.EndTag(stream);
    writer.StartTag(stream, "c");
    WriteCData(writer, stream, "1]]>2]]]>3");
    writer.EndTag(stream);
    writer.EndTag(stream);
    writer.EndDocument(stream);
    EXPECT_EQ(stream.str(), R"(<?xml version="1.0" encoding="UTF-8"?>
<a k="1 &quot;&lt;&amp;&gt;'&#9;&#13;&#10;ä">
  <empty/>
  <!-- note -->
  <b>x &lt; y &amp; ]]&gt;&#13;
 <inside><deep/></inside></b>
  <c><![CDATA[1]]]]><![CDATA[>2]]]]]><![CDATA[>3]]></c>
</a>
)");
    EXPECT_EQ(Parse(stream.str()),
              (Events{"<a", "@k=1 \"<&>'\t\r\n\xC3\xA4", "<empty", ">empty", "! note ", "<b", "'x < y & ]]>\r\n ",
                      "<inside", "<deep", ">deep", ">inside", ">b", "<c", "[1]]>2]]]>3", ">c", ">a"}));
}

TEST(XMLWriter, AnyTextComesBack) {
    std::mt19937 random(7);
    const std::string characters[] = {"]", "]", ">", "<", "&", "a", " ", "\n", "\t", "\"", "\xC3\xA4", "\xEF\xBF\xBD"};
    for (int round = 0; round < 100; ++round) {
        std::string text = "x";
        for (auto length = random() % 40'000 >> random() % 14; length != 0; --length)
            text += characters[random() % std::size(characters)];
        std::ostringstream stream;
        XMLWriter writer;
        writer.StartDocument(stream);
        writer.StartTag(stream, "a");
        writer.Attribute(stream, "k", text);
        writer.Text(stream, text);
        WriteCData(writer, stream, text);
        writer.EndTag(stream);
        writer.EndDocument(stream);
        EXPECT_TRUE(Parse(stream.str()) == (Events{"<a", "@k=" + text, '\'' + text, '[' + text, ">a"})) << text;
    }
}

TEST(XMLWriter, RefusesWhatWouldBeNoDocument) {
    using namespace std::string_literals;
    std::ostringstream stream;
    XMLWriter writer;
    writer.StartDocument(stream);
    writer.StartTag(stream, "a");
    const std::string texts[] = {"\0"s, "\x01", "\x1F", "\xFF", "\xC3", "\xED\xA0\x80", "\xEF\xBF\xBE", "\xEF\xBF\xBF"};
    const std::pair<const char*, std::function<void()>> misuses[] = {
        {"ends early", [&] { writer.EndDocument(stream); }},
        {"name", [&] { writer.StartTag(stream, "a b"); }},
        {"empty name", [&] { writer.Attribute(stream, "", "x"); }},
        {"comment", [&] { writer.Comment(stream, "a--b"); }},
        {"comment's end", [&] { writer.Comment(stream, "a-"); }},
    };
    const std::string before = stream.str();
    for (const auto& [name, misuse] : misuses)
        EXPECT_FALSE(RaisedBy<LogicError>(misuse).GetText().empty()) << name;
    for (const std::string& text : texts) {
        EXPECT_FALSE(XMLWriter::CanHold(text));
        RaisedBy<LogicError>([&] { writer.Attribute(stream, "k", text); });
        RaisedBy<LogicError>([&] { writer.Text(stream, text); });
    }
    EXPECT_EQ(stream.str(), before);
    writer.Text(stream, "t");
    RaisedBy<LogicError>([&] { writer.Attribute(stream, "late", "x"); });
    writer.EndTag(stream);
    RaisedBy<LogicError>([&] { writer.EndTag(stream); });
    RaisedBy<LogicError>([&] { writer.Text(stream, "outside"); });
    EXPECT_TRUE(XMLWriter::CanHold("\t\n\r \x7F\xEF\xBF\xBD\xF4\x8F\xBF\xBF"));
}

} // namespace Qor::Core::Testing
