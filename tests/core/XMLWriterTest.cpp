#include "Alerts.h"
#include "XMLRecorder.h"

#include <QorCore/MemoryStreams.h>
#include <QorCore/XMLWriter.h>

#include <gtest/gtest.h>

#include <functional>
#include <sstream>

namespace Qor::Core::Testing {

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
    const std::string bytes = "1]]>2]]]>3";
    MemoryInputStream section(bytes.data(), bytes.size());
    writer.CData(stream, section);
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
    const std::string document = stream.str();
    MemoryInputStream input(document.data(), document.size());
    Recorder recorder;
    XMLParser<Recorder>().Parse(input, recorder);
    EXPECT_EQ(Joined(recorder.seen),
              "doc(1.0,UTF-8) <a @k=1 \"<&>'\t\r\n\xC3\xA4 > '\n  ' <empty > /empty> '\n  ' ! note  "
              "'\n  ' <b > 'x < y & ]]>\r\n ' <inside > <deep > /deep> </inside> </b> '\n  ' <c > "
              "[1]]] [>2]]]] [>3] </c> '\n' </a> end");
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
