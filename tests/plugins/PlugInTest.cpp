#include "Alerts.h"
#include "PlugInValues.h"
#include "Samples.h"
#include "StoredBytes.h"
#include "Threads.h"

#include <QorCore/Context.h>
#include <QorCore/MemoryStreams.h>
#include <Tivor/DataObjectFactory.h>
#include <Tivor/UnboundDataObject.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <mutex>

#if __has_include(<dlfcn.h>)
#include <dlfcn.h>
#define TIVOR_TEST_COUNTS_LOADER_CALLS
#endif

namespace Qor::Tivor::Testing {

namespace {

/// How often the system was asked to load a library with this in its name; a fallback where that cannot be counted.
#ifdef TIVOR_TEST_COUNTS_LOADER_CALLS
std::mutex loaderMutex;
std::vector<std::string>& LoadedNames() {
    static auto* const names = new std::vector<std::string>;
    return *names;
}

std::ptrdiff_t CountLoaderCalls(const std::string& part, std::ptrdiff_t) {
    const std::lock_guard guard(loaderMutex);
    return std::count_if(LoadedNames().begin(), LoadedNames().end(),
                         [&](const std::string& name) { return name.find(part) != std::string::npos; });
}
#else
std::ptrdiff_t CountLoaderCalls(const std::string&, std::ptrdiff_t fallback) { return fallback; }
#endif

using namespace std::string_literals;
using Core::Testing::Warnings;
using Names = std::vector<std::string>;

DataObjectFactory& Factory() { return DataObjectFactory::Instance(); }

std::string Text(const std::string& text) {
    Core::MemoryOutputStream stream;
    Core::DataOutputStream(stream).Write(text);
    return {reinterpret_cast<const char*>(stream.GetBytes().data()), stream.GetSize()};
}

std::string Entry(const std::string& key, const std::string& className, const std::string& version,
                  const std::string& module, const std::string& data, const char* code = "00") {
    return Text(key) + Bytes(code) + Text(className) + Text(version) + Text(module) + Bytes("01") +
           static_cast<char>(data.size()) + data;
}

const std::string end = Bytes("00000000 7F FFFF");
const std::string spectrum = Text("lines") + Bytes("05000000");

std::string SpectrumIn(const std::string& module, const char* code = "00") {
    return Entry("k", Spectrum::className, "2.1", module, spectrum, code);
}

bool IsUnbound(const std::shared_ptr<DataObject>& object) {
    return std::dynamic_pointer_cast<UnboundData>(object) != nullptr;
}
bool IsSpectrum(const std::shared_ptr<DataObject>& object) {
    const auto bound = std::dynamic_pointer_cast<GenericWrapper<Spectrum>>(object);
    return bound && bound->GetData()->lines == "lines" && bound->GetData()->order == 5;
}

/// What an operation raises, or "", and after a '+' what it warns of.
template <class Operation>
std::string OutcomeOf(Operation operation) {
    std::string outcome;
    const Warnings warnings;
    try {
        operation();
    } catch (const Core::UnknownError&) {
        outcome = "unknown";
    } catch (const Core::IOError&) {
        outcome = "io";
    } catch (const Core::Error&) {
        outcome = "error";
    } catch (const std::exception& error) {
        outcome = error.what();
    } catch (int) {
        outcome = "int";
    }
    for (const std::string& name : warnings.GetNames())
        outcome += '+' + name;
    return outcome;
}

void ExpectUsable(const DataContainer& container) {
    ExpectNothingHeld(container);
    EXPECT_TRUE(IsSpectrum(Read(SpectrumIn("GoodPlugIn.dll"))));
    EXPECT_EQ(Stored(*container.Clone()), Stored(container));
}

const char* const misbehaving = "MisbehavingPlugIn.dll";

struct Misbehaviour {
    std::string className;
    std::string read = "";
    std::string write = "";
    std::string clone = "";
    std::string size = "";
    // Where XML makes a difference.
    std::optional<std::string> readXML = std::nullopt;
    std::optional<std::string> writeXML = std::nullopt;
};

std::vector<Misbehaviour> AllMisbehaviours() {
    std::vector<Misbehaviour> all = {
        {"plain"},
        {"nothing at create", "+DataObjectCreationFailed"},
        {"nothing at serializer", "error"},
        {"much at size", "", "+SkippingData"},
        {"little at size", "", "io"},
        {"much at read"},
        {"little at read", "+SkippingData"},
        {"replacement at read"},
        {"replacement at write", "", "io"},
        {"nothing at xml"},
        {"nothing at handler", "", "", "", "", "error"},
    };
    for (const std::string what : {"error", "exception", "int", "reentry"}) {
        const std::string raised = what == "reentry" ? "" : what;
        const std::string wrapped = raised.empty() || what == "error" ? raised : "unknown";
        all.push_back({what + " at create", raised.empty() ? "" : "+DataObjectCreationFailed"});
        all.push_back({what + " at serializer", raised, wrapped, "", raised});
        all.push_back({what + " at read", raised});
        all.push_back({what + " at write", "", wrapped});
        all.push_back({what + " at clone", "", "", raised});
        all.push_back({what + " at size", "", wrapped, "", raised});
        all.push_back({what + " at handler", "", "", "", "", raised});
        all.push_back({what + " at content", "", "", "", "", raised});
        all.push_back({what + " at xml", "", "", "", "", "", wrapped});
    }
    return all;
}

std::string Element(const std::string& className, const std::string& content) {
    const bool isOwn = content.find_first_not_of("0123456789") != content.npos;
    return "<Data key=\"odd\" typeid=\"0\" typename=\"" + className +
           "\" module=\"MisbehavingPlugIn.dll\" version=\"1\" size=\"4\"" + (isOwn ? ">" : " encoding=\"def/hex64\">") +
           content + "</Data>";
}

std::string Document(const std::string& element) {
    return "<DataContainer><Data key='a' typeid='1' encoding='def/hex64'>1</Data>" + element +
           "<Data key='b' typeid='6' encoding='def/hex64'>5</Data></DataContainer>";
}

void CheckReading(const Misbehaviour& row, const std::string& expected,
                  const std::function<void(DataContainer& container)>& read) {
    for (const std::string before : {"", "was "}) {
        DataContainer container(true);
        if (!before.empty())
            container.PutValue("was", 1);
        EXPECT_EQ(OutcomeOf([&] { read(container); }), expected);
        const bool isRaised = !expected.empty() && expected[0] != '+';
        const bool isSkipped = expected == "+DataObjectCreationFailed";
        EXPECT_EQ(Keys(container), before + (isRaised ? "" : isSkipped ? "a b " : "a odd b "));
        const auto odd = container.Remove("odd");
        if (row.className == "plain" || row.className.ends_with(" at xml")) {
            EXPECT_EQ(DataOf(*odd), "text");
        }
        ExpectUsable(container);
    }
}

void CheckReading(const Misbehaviour& row) {
    const std::string bytes = Bytes("01000000 'a' 01 01") + Entry("odd", row.className, "1", misbehaving, "text") +
                              Bytes("01000000 'b' 06 05000000") + end;
    CheckReading(row, row.read, [&](DataContainer& container) { EXPECT_EQ(ReadInto(container, bytes), bytes.size()); });
    const bool isOwn = row.className.ends_with(" at xml") || row.readXML;
    const std::string document = Document(Element(row.className, isOwn ? "text" : "74786574"));
    CheckReading(row, row.readXML.value_or(row.read),
                 [&](DataContainer& container) { ReadXMLInto(container, document); });
}

void CheckTheOthers(const Misbehaviour& row) {
    const auto object = Factory().CreateExternalDataObject(row.className, "1", misbehaving, false);
    ASSERT_TRUE(object);
    object->EnableDataLocking();
    const auto container = DataContainer::Create(true);
    container->PutValue("a", true);
    container->GetSubData({"sub"}, true)->Put("odd", object);
    container->PutValue("b", 5);
    const bool isLeftOut = row.className == "nothing at serializer";
    Core::MemoryOutputStream stream;
    const std::pair<std::string, std::function<void()>> operations[] = {
        {isLeftOut ? "error" : row.write, [&] { SerializationManager::OutputDataBlock(stream, "odd", *object); }},
        {row.write, [&] { container->OutputData(stream, true); }},
        {row.writeXML.value_or(row.write), [&] { container->OutputXML(stream); }},
        {row.clone, [&] { EXPECT_EQ(container->Clone()->NumDataObjects(), 3u); }},
        {row.size, [&] { EXPECT_GT(container->GetDataSize_bytes(), isLeftOut ? 10u : 40u); }},
    };
    for (const auto& [expected, operation] : operations) {
        EXPECT_EQ(OutcomeOf(operation), expected);
        EXPECT_EQ(Keys(*container), "a sub b ");
        EXPECT_EQ(container->GetSubData({"sub"}, false)->Get("odd"), object);
        ExpectNothingHeld(*container);
    }
    container->GetSubData({"sub"}, false)->Remove("odd");
    ExpectUsable(*container);
}

} // namespace

TEST(PlugIn, MisbehaviourCostsItsOperation) {
    for (const Misbehaviour& row : AllMisbehaviours()) {
        SCOPED_TRACE(row.className);
        CheckReading(row);
        if (row.read != "+DataObjectCreationFailed")
            CheckTheOthers(row);
    }
}

// The content of an element is kept where nobody knows the class, in both forms of a container.
TEST(PlugIn, AnXMLFormOfItsOwnOutlivesAPlaceWithoutIt) {
    const std::string element = Element("nothing at xml", "some <b k=\"1\">more</b> text");
    const auto isKept = [&](DataContainer& container) {
        EXPECT_TRUE(IsUnbound(container.Get("odd")));
        EXPECT_NE(StoredXML(container).find(element), std::string::npos) << StoredXML(container);
    };
    std::string text = Document(Element("nothing at xml", "text"));
    std::string bytes;
    {
        const Core::Context::ScopedLimits refusing({.moduleNames = Core::EModuleNames::none});
        const Warnings warnings;
        isKept(*DataContainer::FromXMLString(Document(element)));
        const auto kept = DataContainer::FromXMLString(text);
        bytes = Stored(*kept);
        DataContainer again;
        ReadInto(again, bytes);
        EXPECT_TRUE(again == *kept);
        text = StoredXML(again);
        EXPECT_EQ(warnings.GetNames(), Names(3, "KeepingUnread"));
    }
    DataContainer fromBytes;
    ReadInto(fromBytes, bytes);
    const auto fromText = DataContainer::FromXMLString(text);
    for (DataContainer* const container : {&fromBytes, fromText.get()}) {
        EXPECT_FALSE(IsUnbound(container->Get("odd")));
        EXPECT_EQ(DataOf(*container->Get("odd")), "text");
        EXPECT_NE(StoredXML(*container).find(Element("nothing at xml", "text")), std::string::npos);
    }
}

TEST(PlugIn, FailuresAreExplained) {
    const std::string load = "Call to ::LoadLibrary for %1 failed with the error: ";
    const std::pair<std::string, std::string> rows[] = {
        {"AbsentPlugIn.dll", load},
        {"a\0b.dll"s, load},
        {std::string(300, 'x') + ".dll", load},
        {TIVOR_PROJECT "/CMakeLists.dll", load},
        {"EmptyPlugIn.dll",
         "Call to ::GetProcAddress() for %1 failed to find a data object factory interface function"},
    };
    for (const auto& [module, text] : rows) {
        SCOPED_TRACE(module);
        std::string expected = text;
        expected.replace(expected.find("%1"), 2, module);
        EXPECT_FALSE(Factory().CreateExternalDataObject("C", "V", module, false));
        const std::string failure = Factory().GetLastError();
        EXPECT_EQ(failure.substr(0, expected.size()), expected);
        EXPECT_EQ(failure.size() > expected.size(), text == load);
        const std::string block = Entry("k", "C", "V", module, "data");
        EXPECT_EQ(OutcomeOf([&] { EXPECT_FALSE(Read(block)); }), "+DataObjectCreationFailed");
        const Core::Context::ScopedLimits keeping({.keepsUnavailable = true});
        const Warnings warnings;
        const auto kept = Read(block);
        ASSERT_TRUE(IsUnbound(kept));
        EXPECT_EQ(Stored(*kept), block);
        EXPECT_EQ(warnings.GetNames(), Names{"KeepingUnread"});
    }
    for (const char* const what : {"error", "exception", "int"}) {
        EXPECT_FALSE(Factory().CreateExternalDataObject(what + " at create"s, "", misbehaving, false));
        EXPECT_NE(Factory().GetLastError().find(*what == 'i' ? "unknown type" : what), std::string::npos);
    }
}

TEST(PlugIn, ReadersChooseWhichNamesAreLoaded) {
    using enum Core::EModuleNames;
    const std::string good = "GoodPlugIn.dll";
    const std::string longName = std::string(252, 'x') + ".dll";
    // Loaded, kept unread, or failed.
    const std::tuple<Core::EModuleNames, std::string, char> rows[] = {
        {any, good, 'l'},           {any, TIVOR_TEST_PROGRAMS "/EmptyPlugIn.dll", 'f'},
        {any, "a b.dll", 'f'},      {any, longName, 'f'},
        {bare, good, 'l'},          {bare, TIVOR_TEST_PROGRAMS "/" + good, 'k'},
        {bare, "./" + good, 'k'},   {bare, "c:" + good, 'k'},
        {bare, "..\\" + good, 'k'}, {bare, "a b.dll", 'k'},
        {bare, "a\0b.dll"s, 'k'},   {bare, "\xC3\xA4.dll", 'k'},
        {bare, longName, 'k'},      {bare, longName.substr(1), 'f'},
        {bare, "A-z_0.9.dll", 'f'}, {none, good, 'k'},
        {none, "absent.dll", 'k'},
    };
    const std::map<char, std::string> outcomes = {
        {'l', ""}, {'k', "+KeepingUnread"}, {'f', "+DataObjectCreationFailed"}};
    for (const auto& [names, module, expected] : rows) {
        SCOPED_TRACE(module);
        const Core::Context::ScopedLimits scoped({.moduleNames = names});
        std::shared_ptr<DataObject> object;
        const auto calls = CountLoaderCalls(module, 0);
        const std::string bytes = SpectrumIn(module, "80");
        EXPECT_EQ(OutcomeOf([&] { object = Read(bytes); }), outcomes.at(expected));
        EXPECT_EQ(IsSpectrum(object), expected == 'l');
        EXPECT_EQ(IsUnbound(object), expected == 'k');
        if (object) {
            const bool isKept = expected == 'k';
            const std::string writtenFor = object->GetSerializer()->GetModule();
            EXPECT_EQ(Stored(*object), SpectrumIn(writtenFor, isKept ? "80" : "00"));
            EXPECT_TRUE(!isKept || (writtenFor == module && CountLoaderCalls(module, 0) == calls));
        }
    }
}

TEST(PlugIn, OneReadTriesSoManyInVain) {
    std::string bytes;
    for (const int round : {0, 1})
        for (int i = 0; i < 10; ++i) {
            const std::string name = std::to_string(i);
            const std::string block = Entry(name, "C", "", "vain" + name + ".dll", "data");
            const std::string sub = block + end;
            bytes += round == 0 ? block : Text("sub" + name) + Bytes("7D 01") + static_cast<char>(sub.size()) + sub;
        }
    EXPECT_TRUE(IsSpectrum(Read(SpectrumIn("GoodPlugIn.dll"))));
    bytes += SpectrumIn("GoodPlugIn.dll") + end;
    Core::ReadLimits limits;
    for (const int limit : {1, 4, 10, 11}) {
        limits.failingModules = static_cast<std::uint32_t>(limit);
        const Core::Context::ScopedLimits scoped(limits);
        const Warnings warnings;
        DataContainer container;
        const auto before = CountLoaderCalls("vain", 0);
        EXPECT_EQ(ReadInto(container, bytes), bytes.size());
        EXPECT_EQ(CountLoaderCalls("vain", before + std::min(limit, 10)) - before, std::min(limit, 10));
        EXPECT_EQ(warnings.seen.size(), 20u);
        EXPECT_TRUE(IsSpectrum(container.Get("k"))) << "what is loaded serves on";
    }
}

TEST(PlugInThreads, LoadALibraryOnce) {
    const std::string bytes =
        SpectrumIn("GoodPlugIn.dll") + Entry("b", Band::className, "2.1", "GoodPlugIn.dll", std::string(16, '\0')) +
        Entry("v", "C", "", "vain.dll", "data") + Entry("e", "C", "", "EmptyPlugIn.dll", "data") + end;
    Core::Testing::OnThreads(8, [&](int) {
        for (int round = 0; round < 20; ++round) {
            const Warnings warnings;
            DataContainer container;
            EXPECT_EQ(ReadInto(container, bytes), bytes.size());
            EXPECT_EQ(Keys(container), "k b ");
            EXPECT_TRUE(IsSpectrum(container.Get("k")));
            EXPECT_EQ(warnings.GetNames(), Names(2, "DataObjectCreationFailed"));
            EXPECT_EQ(Factory().GetLastError().substr(0, 8), "Call to ");
        }
    });
    EXPECT_EQ(CountLoaderCalls("GoodPlugIn.dll", 1), 1);
}

} // namespace Qor::Tivor::Testing

#ifdef TIVOR_TEST_COUNTS_LOADER_CALLS
// Stands in front of the system's.
extern "C" __attribute__((visibility("default"))) void* dlopen(const char* name, int flags) noexcept {
    static const auto next = reinterpret_cast<void* (*)(const char*, int)>(dlsym(RTLD_NEXT, "dlopen"));
    if (name != nullptr) {
        const std::lock_guard guard(Qor::Tivor::Testing::loaderMutex);
        Qor::Tivor::Testing::LoadedNames().emplace_back(name);
    }
    return next(name, flags);
}
#endif
