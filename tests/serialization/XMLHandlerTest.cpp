#include "Alerts.h"
#include "ForeignObject.h"
#include "StoredBytes.h"

#include <QorCore/MemoryStreams.h>
#include <Tivor/DataContainer.h>
#include <Tivor/UnboundDataObject.h>
#include <Tivor/XMLHandler.h>

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <thread>

// Which handler gets which event, and that nothing is left behind when one of them throws.

namespace Qor::Tivor::Testing {

namespace {

using namespace Core::Testing;

/// What happened, and what handlers do when it does.
struct Stage {
    std::string log;
    /// By event: words of which each is "skip", "parse", "error", "number", "null" or the name of a handler to be
    /// pushed.
    std::map<std::string, std::string> script;
};

class ScriptedHandler final : public XMLContentHandler {
public:
    ScriptedHandler(std::shared_ptr<Stage> stage, std::string name)
        : m_stage(std::move(stage)), m_name(std::move(name)) {}

    void PrepareForNewContent() override { Note("prepare"); }
    void OnStartTag(const std::string& tag) override { Note("<" + tag); }
    void OnStartTagContent() override { Note(">" + CurrentTag()); }
    void OnEndTag(const std::string& tag, bool emptyElement) override { Note((emptyElement ? "/" : "</") + tag + ">"); }
    void OnAttribute(const std::string& name, const Core::XMLAttributeValue<std::string>& value) override {
        Note("@" + name + "=" + value.GetText());
    }
    void OnTextContent(const std::string& text) override { Note("'" + text + "'"); }
    void OnComment(const std::string& comment) override { Note("!" + comment); }
    void OnEntityReference(const std::string& entity) override { Note("&" + entity); }
    void OnCDataSection(Core::BinaryInputStream& section) override {
        std::string bytes(100, ' ');
        bytes.resize(static_cast<std::size_t>(section.Read(bytes.data(), bytes.size())));
        Note("[" + bytes + "]");
    }
    void OnEndContent() override { Note("end"); }

    using XMLContentHandler::CurrentTag;
    using XMLContentHandler::PushDataObject;
    using XMLContentHandler::PushHandler;

private:
    void Note(const std::string& event) {
        const std::string entry = m_name + ':' + event;
        m_stage->log += (m_stage->log.empty() ? "" : " ") + entry;
        const auto found = m_stage->script.find(entry);
        std::istringstream words(found != m_stage->script.end() ? found->second : "");
        for (std::string word; words >> word;)
            Act(word);
    }
    void Act(const std::string& word) {
        if (word == "skip")
            SkipTagContent();
        else if (word == "parse")
            EXPECT_EQ(DataContainer::FromXMLString("<DataContainer><DataContainer key='k'/></DataContainer>")
                          ->NumDataObjects(),
                      1u);
        else if (word == "error")
            throw Core::LogicError("mine");
        else if (word == "number")
            throw 7;
        else
            PushHandler(word == "null" ? nullptr : std::make_shared<ScriptedHandler>(m_stage, word));
    }

    std::shared_ptr<Stage> m_stage;
    std::string m_name;
};

/// An object that the handler "a" reads.
std::shared_ptr<ForeignObject> ReadBy(const std::shared_ptr<XMLContentHandler>& handler) {
    auto object = std::make_shared<ForeignObject>();
    object->onReadXML = [handler] { return handler; };
    return object;
}

std::string RootElement(const std::string& content) {
    return "<!DOCTYPE Data SYSTEM 'absent'><Data key='root' typeid='0' typename='Test.Foreign'>" + content + "</Data>";
}

void Parse(const std::string& document, XMLHandler& handler) {
    Core::MemoryInputStream stream(document.data(), document.size());
    const Core::Lock lock = handler.AcquireParseLock();
    XMLDataParser().Parse(stream, handler);
}

std::string Play(const std::string& content, const std::map<std::string, std::string>& script) {
    const auto stage = std::make_shared<Stage>(Stage{{}, script});
    XMLHandler handler(ReadBy(std::make_shared<ScriptedHandler>(stage, "a")));
    Parse(RootElement(content), handler);
    EXPECT_TRUE(handler.GetRoot());
    return stage->log;
}

void ExpectUsable(XMLHandler& handler) {
    handler.ResetHandler();
    std::thread([&] {
        Parse("<DataContainer><DataContainer key='k'/></DataContainer>", handler);
        const auto root = std::dynamic_pointer_cast<DataContainerWrapper>(handler.GetRoot());
        EXPECT_TRUE(root && root->GetData()->Exists("k"));
        EXPECT_EQ(handler.GetRootTag(), "DataContainer");
        handler.ResetHandler();
        EXPECT_TRUE(!handler.GetRoot() && handler.GetRootTag().empty());
    }).join();
}

const std::string everything = "<y k='v'>t<!--c-->&e;<![CDATA[d]]></y>";
const std::string allEvents = "a:prepare a:<y a:@k=v a:>y a:'t' a:!c a:&e a:[d] a:</y> a:end";

} // namespace

TEST(XMLHandler, DeliversToTheTopOfItsStack) {
    struct Row {
        const char* content;
        std::map<std::string, std::string> script;
        std::string log;
    };
    const Row rows[] = {
        {everything.c_str(), {}, allEvents},
        {"<x/>t<y k='1'/>", {}, "a:prepare a:<x a:>x a:/x> a:'t' a:<y a:@k=1 a:>y a:/y> a:end"},
        // A handler for the element of a child, from its attributes on or from its content on.
        {"<x k='1'>t</x>u", {{"a:<x", "b"}}, "a:prepare a:<x b:prepare b:@k=1 b:>x b:'t' b:end a:</x> a:'u' a:end"},
        {"<x k='1'>t</x>u", {{"a:>x", "b"}}, "a:prepare a:<x a:@k=1 a:>x b:prepare b:'t' b:end a:</x> a:'u' a:end"},
        {"<x k='1' l='2'/>", {{"a:@k=1", "b"}}, "a:prepare a:<x a:@k=1 b:prepare b:@l=2 b:>x b:end a:/x> a:end"},
        {"<x>t<y>u</y>v</x>w",
         {{"a:>x", "b"}, {"b:<y", "c"}},
         "a:prepare a:<x a:>x b:prepare b:'t' b:<y c:prepare c:>y c:'u' c:end b:</y> b:'v' b:end a:</x> a:'w' a:end"},
        // Several at one depth leave it together.
        {"<x>t</x>u",
         {{"a:>x", "b"}, {"b:prepare", "c"}},
         "a:prepare a:<x a:>x b:prepare c:prepare c:'t' c:end b:end a:</x> a:'u' a:end"},
        {"<x>t<y/>u</x>",
         {{"a:'t'", "b c"}},
         "a:prepare a:<x a:>x a:'t' b:prepare c:prepare c:<y c:>y c:/y> c:'u' c:end b:end a:</x> a:end"},
        {"<x>t<y/>u</x>v",
         {{"a:/y>", "b"}},
         "a:prepare a:<x a:>x a:'t' a:<y a:>y a:/y> b:prepare b:'u' b:end a:</x> a:'v' a:end"},
        // One that is pushed for an element which is over gets nothing.
        {"<x>t</x>u",
         {{"a:>x", "b"}, {"b:end", "c"}},
         "a:prepare a:<x a:>x b:prepare b:'t' b:end c:prepare a:</x> a:'u' a:end"},
        // Skipping, up to the end tag.
        {"<x k='1'>t<y/></x>u<z/>", {{"a:<x", "skip"}}, "a:prepare a:<x a:</x> a:'u' a:<z a:>z a:/z> a:end"},
        {"<x/>u", {{"a:<x", "skip skip"}}, "a:prepare a:<x a:/x> a:'u' a:end"},
        // In a nested handler: its own element, one inside, and one that is over.
        {"<x>t<y/>u</x>v",
         {{"a:>x", "b"}, {"b:'t'", "skip"}},
         "a:prepare a:<x a:>x b:prepare b:'t' b:end a:</x> a:'v' a:end"},
        {"<x><y>t</y>u</x>v",
         {{"a:>x", "b"}, {"b:<y", "skip"}},
         "a:prepare a:<x a:>x b:prepare b:<y b:</y> b:'u' b:end a:</x> a:'v' a:end"},
        {"<x>t</x>u", {{"a:<x", "skip b"}}, "a:prepare a:<x b:prepare b:end a:</x> a:'u' a:end"},
        {"<x>t</x>u", {{"a:<x", "b skip"}}, "a:prepare a:<x b:prepare b:end a:</x> a:'u' a:end"},
        {"t<x>u</x>",
         {{"a:'t'", "parse"}, {"a:<x", "parse"}, {"a:end", "parse"}},
         "a:prepare a:'t' a:<x a:>x a:'u' a:</x> a:end"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(Play(row.content, row.script), row.log) << row.content;
}

TEST(XMLHandler, KeepsNothingOfWhatFailed) {
    std::istringstream events(allEvents);
    for (std::string event; events >> event;)
        for (const bool isError : {true, false}) {
            SCOPED_TRACE(event);
            const auto stage = std::make_shared<Stage>(Stage{{}, {{event, isError ? "error" : "number"}}});
            auto scripted = std::make_shared<ScriptedHandler>(stage, "a");
            const std::weak_ptr<XMLContentHandler> kept = scripted;
            XMLHandler handler(ReadBy(scripted));
            const auto parse = [&] { Parse(RootElement(everything), handler); };
            if (isError) {
                const auto error = RaisedBy<Core::LogicError>(parse);
                EXPECT_EQ(error.GetText(), "mine");
                EXPECT_EQ(error.GetVariable("Line"), "1");
                EXPECT_NE(error.GetVariable("Column"), "");
                EXPECT_TRUE(error.GetVariable("Key") == "root" || event == "a:prepare");
            } else {
                EXPECT_THROW(parse(), int);
            }
            EXPECT_EQ(scripted->CurrentTag(), "");
            EXPECT_FALSE(handler.GetRoot());
            scripted.reset();
            EXPECT_TRUE(kept.expired());
            EXPECT_EQ(stage->log, allEvents.substr(0, allEvents.find(event) + event.size()));
            ExpectUsable(handler);
        }
}

// What another handler on the stack did not see is not seen by others either.
TEST(XMLHandler, EmptiesItsStackInTheMiddle) {
    const std::pair<const char*, std::string> rows[] = {{"<x><y>t</z></x>", "mismatched tag"},
                                                        {"<x>", "mismatched tag"},
                                                        {"<x>&amp</x>", "not well-formed (invalid token)"}};
    for (const auto& [content, fault] : rows) {
        const auto stage = std::make_shared<Stage>(Stage{{}, {{"a:>x", "b"}, {"b:>y", "c"}}});
        auto scripted = std::make_shared<ScriptedHandler>(stage, "a");
        const std::weak_ptr<XMLContentHandler> kept = scripted;
        XMLHandler handler(ReadBy(scripted));
        const std::string document = RootElement(content);
        EXPECT_TRUE(RaisedBy<Core::XMLParseError>([&] { Parse(document, handler); }).GetText().ends_with(fault));
        EXPECT_NE(scripted->CurrentTag(), "") << "it is on the stack";
        EXPECT_EQ(stage->log.find("end"), stage->log.npos);
        handler.ResetHandler();
        EXPECT_EQ(scripted->CurrentTag(), "");
        scripted.reset();
        EXPECT_TRUE(kept.expired());
        ExpectUsable(handler);
    }
}

TEST(XMLHandler, IsNeededForPushing) {
    const auto stage = std::make_shared<Stage>();
    ScriptedHandler alone(stage, "a");
    const auto other = std::make_shared<ScriptedHandler>(stage, "b");
    const std::function<void()> pushes[] = {[&] { alone.PushHandler(other); }, [&] { alone.PushHandler(nullptr); },
                                            [&] { alone.PushDataObject("k", "Test"); }};
    for (const auto& push : pushes)
        EXPECT_EQ(RaisedBy<Core::LogicError>(push).ToString(),
                  "LogicError [Qor.Tivor.XMLContentHandler] Attempted push "
                  "of XMLContentHandler onto a NULL root handler");
    EXPECT_EQ(alone.CurrentTag() + stage->log, "");
    stage->script = {{"c:>x", "null"}};
    XMLHandler handler(ReadBy(std::make_shared<ScriptedHandler>(stage, "c")));
    RaisedBy<Core::NullPointerError>([&] { Parse(RootElement("<x/>"), handler); });
    ExpectUsable(handler);
}

// Without `OnStartTag` a handler has no elements, whoever pushed it, and wherever its element stands.
TEST(XMLHandler, RefusesElementsThatNobodyExpects) {
    class Reader final : public XMLContentHandler {};
    for (const std::string name : {"x", "Data", "DataContainer"}) {
        XMLHandler handler(ReadBy(std::make_shared<Reader>()));
        const auto parse = [&] { Parse(RootElement("\n <" + name + " typeid='6'/>"), handler); };
        EXPECT_EQ(RaisedBy<InvalidDataTag>(parse).ToString(),
                  "InvalidDataTag [Qor.Tivor.XMLHandler.OnStartTagContent] Invalid Tivor XML data tag named " + name +
                      "; Reason = no element can stand here; Key = root; Line = 2; Column = 2");
        ExpectUsable(handler);
    }
}

TEST(XMLHandler, NeedsASerializerAndItsHandler) {
    for (const bool isSerializable : {true, false}) {
        const auto object = ReadBy(nullptr);
        object->isSerializable = isSerializable;
        XMLHandler handler(object);
        const std::string category = " [Qor.Tivor.XMLHandler.OnStartTagContent] ";
        const std::string expected =
            isSerializable ? "NullXMLContentHandler" + category +
                                 "Attempt to deserialize data named root failed to "
                                 "obtain an XMLContentHandler implementation"
                           : "NullSerializer" + category + "No serializer for data with class name = Test.Foreign";
        EXPECT_TRUE(ErrorOf([&] { Parse(RootElement(""), handler); }).starts_with(expected));
        ExpectUsable(handler);
    }
}

// As it was read, and again after its way through the binary form.
TEST(XMLHandler, DeliversKeptContentWhenItsClassHasBecomeKnown) {
    const std::string content = "t<y k=\"v\">u<!--c--><![CDATA[d]]></y>&lt;";
    const auto fromText = DataContainer::FromXMLString(
        "<DataContainer><Data key='k' typeid='0' typename='Test.Foreign' version='1.2' module='absent'>" + content +
        "</Data></DataContainer>");
    DataContainer fromBytes;
    ReadInto(fromBytes, Stored(*fromText));
    const std::string log = Play(content, {});
    for (DataContainer* const container : {fromText.get(), &fromBytes}) {
        const auto unbound = std::dynamic_pointer_cast<UnboundData>(container->Get("k"));
        ASSERT_TRUE(unbound);
        EXPECT_NE(StoredXML(*container).find('>' + content + "</Data>"), std::string::npos) << StoredXML(*container);
        const auto stage = std::make_shared<Stage>();
        unbound->BindType(*ReadBy(std::make_shared<ScriptedHandler>(stage, "a")));
        EXPECT_EQ(stage->log, log + ' ' + log) << "what fails, fails on a copy";
        stage->script = {{"a:[d]", "error"}};
        const auto target = ReadBy(std::make_shared<ScriptedHandler>(stage, "a"));
        EXPECT_EQ(RaisedBy<Core::LogicError>([&] { unbound->BindType(*target); }).GetText(), "mine");
    }
}

} // namespace Qor::Tivor::Testing
