// The command line tool, run in this process, and once as the program that it is.
#include "ToolFixture.h"

#include <QorCore/System.h>
#include <Tivor/ArrayDataObjects.h>
#include <Tivor/BinaryDataFile.h>
#include <Tivor/CollectionSerialization.h>
#include <Tivor/ScalarData.h>

#include <RunProgram.h>
#include <algorithm>
#include <array>
#include <limits>

namespace Qor::Tivor::Testing {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

void Fill(DataContainer& container) {
    RowMajorMatrix<double> rows(2, 2);
    ColumnMajorMatrix<float> columns(2, 3);
    for (std::size_t i = 0; i < 2; ++i) {
        rows(i, 0) = -0.0;
        rows(i, 1) = i == 0 ? 1e-7 : -infinity;
        for (std::size_t j = 0; j < 3; ++j)
            columns(i, j) = static_cast<float>(10 * i + j) + 0.1f;
    }
    container.PutValue("rows", rows);
    container.PutValue("columns", columns);
    container.PutValue("nothing", RowMajorMatrix<double>(0, 0));
    const std::array<std::uint64_t, 2> numbers{0, UINT64_MAX};
    container.Put("array", MakeArray(std::span<const std::uint64_t>(numbers)));
    container.PutValue("flags", std::vector<bool>{true, false});
    container.PutValue("bytes", std::vector<char>{'a', -1});
    container.PutValue("texts", std::vector<std::wstring>{L"\u00F6", L" "});
    container.PutValue("map", SelfMap<std::string>{{"a", "b\nc"}, {"d", ""}});
    container.PutValue("complex", std::complex<float>(0.1f, std::numeric_limits<float>::quiet_NaN()));
    container.PutValue("spacing", UnitizedDouble(0.5, "Micrometer"));
    container.PutValue("lines", "one\ntwo");
    container.PutValue("raw", "\xFF\x01");
    const auto scalar = std::make_shared<ScalarData>("Mode", eSIGNED_INTEGRAL_TYPE);
    scalar->SetValue(-3);
    container.Put("mode", scalar);
    container.GetSubData({"below", "deep"}, true)->PutValue("x", 1.5f);
}

} // namespace

TEST_F(ToolTest, ShowsValuesOfEveryShape) {
    {
        BinaryDataFile made(file, DataFile::eREAD_WRITE, DataFile::eCREATE_NEW, nullptr);
        Fill(made);
        made.Flush();
    }
    const struct {
        std::string key, text, json;
    } rows[] = {
        {"rows", "-0\t1e-07\n-0\t-inf\n", R"({"rows":2,"columns":2,"values":[[-0.0,1e-07],[-0.0,"-inf"]]})"},
        {"columns", "0.1\t1.1\t2.1\n10.1\t11.1\t12.1\n",
         R"({"rows":2,"columns":3,"values":[[0.1,1.1,2.1],[10.1,11.1,12.1]]})"},
        {"nothing", "", R"({"rows":0,"columns":0,"values":[]})"},
        {"array", "0\n18446744073709551615\n", "[0,18446744073709551615]"},
        {"flags", "true\nfalse\n", "[true,false]"},
        {"bytes", "97\n-1\n", "[97,-1]"},
        {"texts", "\xC3\xB6\n\" \"\n", "[\"\xC3\xB6\",\" \"]"},
        {"map", "a\t\"b\\nc\"\nd\t\"\"\n", R"({"a":"b\nc","d":""})"},
        {"complex", "(0.1,nan)\n", R"([0.1,"nan"])"},
        {"raw", "\xFF\x01\n", R"({"hex":"ff01"})"},
        {"mode", "-3\n", "-3"},
        {"below", "deep:\n  x: 1.5\n", R"({"deep":{"x":1.5}})"},
    };
    const Json all = SayJson("get");
    for (const auto& [key, text, json] : rows) {
        EXPECT_EQ(Say("get", {key}), text) << key;
        EXPECT_EQ(SayJson("get", {key}).dump(), json) << key;
        EXPECT_EQ(all.at(key).dump(), json) << key;
    }
    EXPECT_EQ(Say("get", {"spacing"}), "0.5 um\n");
    EXPECT_EQ(all["spacing"]["unit"]["name"], "Micrometer");
    EXPECT_NE(Say("get").find("lines: \"one\\ntwo\"\nraw: \"\\xff\\x01\"\nmode: -3\nbelow:\n  deep:\n    x: 1.5\n"),
              std::string::npos);
    EXPECT_EQ(Say("ls", {"below"}), "below   DataContainer  35\n  deep  DataContainer  17\n    x   float          4\n");
    EXPECT_EQ(SayJson("ls", {"below", "deep"})["entries"][1].dump(),
              R"({"path":["below","deep","x"],"class":"float","code":12,"bytes":4,"isReadable":true})");

    // A scalar keeps its width.
    ExpectError({"set", file, "mode", "2147483648"}, "Expected a whole number in the range of Mode, which has 4 bytes");
    EXPECT_EQ(Say("set", {"mode", "-2147483648"}), "mode, Mode: -3 -> -2147483648\n");
    EXPECT_EQ(SayJson("get", {"mode"}), -2147483648);
}

TEST_F(ToolTest, ShowsTheGoldenFiles) {
    std::vector<Core::PathName> golden;
    Core::System::EnumFiles(Core::PathName(TIVOR_TEST_DATA "/golden"), "*.qordata", golden);
    ASSERT_FALSE(golden.empty());
    for (const Core::PathName& path : golden) {
        file = path.ToString();
        SCOPED_TRACE(file);
        const BinaryDataFile read(file, DataFile::eREAD_ONLY, DataFile::eOPEN_EXISTING, nullptr);
        const Json shown = SayJson("get");
        EXPECT_EQ(shown.size(), read.NumDataObjects());
        EXPECT_EQ(SayJson("info")["entries"], SayJson("ls")["entries"].size());
        Say("get");
    }
}

TEST_F(ToolTest, SetsValuesOfEveryScalarClass) {
    const struct {
        std::string type, text, json, other, otherJson, refused;
    } rows[] = {
        {"bool", "true", "true", "false", "false", "1"},
        {"int8", "-128", "-128", "127", "127", "128"},
        {"long", "2147483647", "2147483647", "-5", "-5", "2147483648"},
        {"int64", "-9223372036854775808", "-9223372036854775808", "5", "5", "0x10"},
        {"uint64", "18446744073709551615", "18446744073709551615", "5", "5", "18446744073709551616"},
        {"float", "0.1", "0.1", "-inf", "\"-inf\"", "1e39"},
        {"double", "0.1", "0.1", "-2.5e-300", "-2.5e-300", "0,5"},
        {"AsciiString", "true", "\"true\"", "", "\"\"", "unrefused"},
        {"UnicodeString", "\xC3\xB6", "\"\xC3\xB6\"", "[a,b]", "\"[a,b]\"", "\xFF"},
        {"QORTime", "2024-01-31T12:34:56.1234567Z", "\"2024-01-31T12:34:56.1234567Z\"", "1999-12-31T23:00:00Z",
         "\"1999-12-31T23:00:00.0000000Z\"", "yesterday"},
        {"QORElapse", "-1.5", "\"-1.5000000\"", "2", "\"2.0000000\"", "2s"},
    };
    Say("set", {"first", "x", "--create"});
    for (const auto& [type, text, json, other, otherJson, refused] : rows) {
        SCOPED_TRACE(type);
        Say("set", {"a", type, text, "--type", type});
        EXPECT_EQ(SayJson("ls", {"a", type})["entries"][0]["class"], type);
        EXPECT_EQ(SayJson("get", {"a", type}).dump(), json);
        if (refused != "unrefused") {
            const std::string before = ReadFileText(Core::PathName(file));
            ExpectError({"set", file, "a", type, refused}, "tivor: ");
            ExpectError({"set", file, "new", type, refused, "--type", type}, "tivor: ");
            EXPECT_EQ(ReadFileText(Core::PathName(file)), before);
        }
        const Json change = SayJson("set", {"a", type, other});
        EXPECT_EQ(change["class"], type);
        EXPECT_EQ(change["before"].dump() + change["after"].dump(), json + otherJson);
        EXPECT_EQ(SayJson("get", {"a", type}).dump(), otherJson);
    }
    EXPECT_EQ(SayJson("get").size(), 2u);
}

TEST_F(ToolTest, TakesAnyKey) {
    const Words keys{"",   " ",  "a/b", "a b", "two\nlines", "\x1B[31m", "[a,b]",
                     "{}", "-5", "-x",  "%%",  "ls",         "\"q\"",    "\xC3\xB6"};
    for (const std::string& key : keys)
        Say("set", {key, key, "-7.5", "--create", "--type", "double"});
    Say("set", {"--", "--json", "--type", "--help"});
    for (const std::string& key : keys) {
        EXPECT_EQ(Say("get", {key, key}), "-7.5\n") << key;
        EXPECT_EQ(SayJson("ls", {key})["entries"][1]["path"], Json({key, key}));
    }
    EXPECT_EQ(Say("get", {"--", "--json", "--type"}), "--help\n");
    const std::string listing = Say("ls");
    EXPECT_EQ(std::count(listing.begin(), listing.end(), '\n'), 2 * std::ptrdiff_t(keys.size()) + 2);
    for (const char* const shown :
         {"\n\"\" ", "\n\" \" ", "\na/b ", "\n\"two\\nlines\" ", "\n\"\\x1b[31m\" ", "\n[a,b] ", "\n\"\\\"q\\\"\" "})
        EXPECT_NE(('\n' + listing).find(shown), std::string::npos) << shown << listing;
    ExpectError({"get", file, "a/b", "c"}, "\"a/b\"/c: no such key; the keys there: a/b");
    ExpectError({"get", file, "c"}, ", -5, -x and 5 more");
}

TEST_F(ToolTest, TellsWhatIsUnread) {
    const std::string good = "01000000 'g' 06 05000000";
    const std::string kept = "01000000 'v' 00 01000000 'V' 03000000 '1.2' 09000000 'Vapid.dll' 01 03 'abc'";
    const std::string unreadable = "01000000 'u' 7C 05000000 'Gizmo' 01 02 'xy'";
    WriteStored(good + kept);
    const std::string before = ReadFileText(Core::PathName(file));
    EXPECT_NE(Say("info").find("Module:      Vapid.dll, 1 entry: a plug-in; without it they are kept unread\n"),
              std::string::npos);
    EXPECT_NE(Say("ls").find("\nv  V      3  version 1.2, module Vapid.dll\n"), std::string::npos) << Say("ls");
    const Outcome shown = Run("get", {"v"});
    EXPECT_EQ(shown.status, 0);
    EXPECT_EQ(shown.out, "unbound data of class V, version 1.2, module Vapid.dll, 3 bytes\n");
    EXPECT_NE(shown.err.find("tivor: warning: The data named v of class V from module Vapid.dll is kept unread: "),
              std::string::npos);
    EXPECT_EQ(Run("set", {"g", "6"}).status, 0);
    std::string after = before;
    after[18] = 6;
    EXPECT_EQ(ReadFileText(Core::PathName(file)), after);

    WriteStored(good + unreadable + kept);
    for (const char* const command : {"info", "ls", "get"}) {
        const Outcome outcome = Run(command);
        EXPECT_EQ(outcome.status, 1) << command;
        EXPECT_FALSE(outcome.out.empty());
        EXPECT_NE((outcome.out + outcome.err).find("Gizmo"), std::string::npos) << command;
    }
    EXPECT_EQ(Json::parse(Run("info", {"--json"}).out)["unreadable"].dump(), R"([{"class":"Gizmo","count":1}])");
    EXPECT_EQ(Run("get", {"g"}).status, 0);
    EXPECT_EQ(Run("get", {"u"}).status, 2);
    const std::string untouched = ReadFileText(Core::PathName(file));
    const Outcome refused = Run("set", {"g", "7"});
    EXPECT_EQ(refused.status, 2);
    EXPECT_NE(refused.err.find("saving drops 1 entry that cannot be read; --drop-unread does so\n       u of class "
                               "Gizmo: type identifier 124 names no built-in class\n"),
              std::string::npos)
        << refused.err;
    EXPECT_EQ(ReadFileText(Core::PathName(file)), untouched);
    const Outcome dropped = Run("set", {"g", "7", "--drop-unread"});
    EXPECT_EQ(dropped.status, 0);
    EXPECT_NE(dropped.err.find("drops 1 entries"), std::string::npos) << dropped.err;
    after[18] = 7;
    EXPECT_EQ(ReadFileText(Core::PathName(file)), after);
}

TEST_F(ToolTest, SaysWhatIsWrong) {
    Say("set", {"a", "b", "1", "--create", "--type", "int32"});
    const std::string before = ReadFileText(Core::PathName(file));
    WriteFileText(directory / "foreign.dataset", "PK\x03\x04 something else");
    WriteFileText(directory / "short.dataset", before.substr(0, before.size() - 9));
    WriteFileText(directory / "empty.xyz", "");
    const std::string foreign = Name("foreign.dataset"), missing = Name("missing.dataset"),
                      small = Name("short.dataset");
    const struct {
        Words words;
        std::string said;
    } rows[] = {
        {{}, "A subcommand is required"},
        {{"dance"}, "Expected one of the commands info, ls, get, set, import, convert, rotate, flip, transpose, "},
        {{"dance"}, ", found dance"},
        {{"ls"}, "FILE is required"},
        {{"ls", file, "--unheard"}, "--unheard"},
        {{"set", file, "a"}, "Expected one key or more and then a value"},
        {{"info", missing}, "missing.dataset: expected a data file, found no file of that name"},
        {{"ls", missing}, "found no file of that name"},
        {{"get", ""}, "\"\": expected a data file"},
        {{"set", missing, "a", "1"}, "--create makes one"},
        {{"set", missing, "a", "x", "--create", "--type", "int32"}, "Expected a whole number in the range of int32"},
        {{"get", foreign}, "QOR Binary Data File: its 19 bytes do not begin with"},
        {{"set", foreign, "a", "1", "--create"}, "QOR Binary Data File: its 19 bytes do not begin with"},
        {{"info", Name("empty.xyz")}, "the file is empty"},
        {{"ls", small}, "Last entry: a/b"},
        {{"get", file, "c"}, "c: no such key; the keys there: a\n"},
        {{"ls", file, "a", "c", "d"}, "a/c: no such key; the keys there: b\n"},
        {{"ls", file, "a", "b", "c"}, "a/b/c: no such key; the keys there: none\n"},
        {{"get", file, "a", "b", "c"}, "a/b: expected a container, found a int32"},
        {{"set", file, "a", "b", "c", "1"}, "a/b: expected a container or a measured array, found a int32"},
        {{"set", file, "a", "1"}, "a: expected a number or a text, found a container"},
        {{"set", file, "a", "b", "1", "--type", "double"}, "a/b: expected an entry of class double, found a int32"},
        {{"set", file, "n", "1", "--type", "Matrix"}, "Expected one of the classes bool, int8, "},
        {{"import", surfaceText.ToString(), file}, "--force replaces it"},
        {{"import", missing, Name("new.dataset")}, "expected a readable file, found none"},
    };
    for (const auto& [words, said] : rows)
        ExpectError(words, said);
    EXPECT_EQ(ReadFileText(Core::PathName(file)), before);
    EXPECT_EQ(directory.GetNames(), Words({"data.dataset", "empty.xyz", "foreign.dataset", "short.dataset"}));
    for (const char* const command : {"info", "ls", "get", "set", "import", "convert", "types", "render", "diff"}) {
        const std::string help = RunWords({command, "--help"}).out;
        EXPECT_NE(help.find("--json"), std::string::npos) << command;
        EXPECT_EQ(RunWords({"help", command}).out, help);
    }
}

TEST_F(ToolTest, ListsTypes) {
    const Outcome outcome = RunWords({"types", "--json"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    const Json types = Json::parse(outcome.out);
    EXPECT_EQ(types["fileTypes"][0]["name"], BinaryDataFile::sFILE_TYPE);
    EXPECT_EQ(types["fileTypes"][0]["isDefault"], true);
    EXPECT_EQ(types["classes"].size(), builtInTypeFacts.size());
    EXPECT_EQ(types["knownPlugIns"].size(), 5u);
    const std::string text = RunWords({"types"}).out;
    EXPECT_NE(text.find("QOR Binary Data File (default): .SRFx .dataset .qordata; "), std::string::npos) << text;
    EXPECT_NE(text.find("\n  125\tDataContainer\tsized\n"), std::string::npos);
}

TEST_F(ToolTest, IsAProgram) {
    Say("set", {"a b", "c", "1.5", "--create", "--type", "double"});
    const auto found = RunProgram(directory.GetPath(), "tivor", {"get", "data.dataset", "a b", "c"});
    EXPECT_EQ(found.status, 0);
    EXPECT_EQ(found.output, "1.5\n");
    EXPECT_EQ(RunProgram(directory.GetPath(), "tivor", {"get", "data.dataset", "d"}).status, 2);
    Say("set", {"\xE9\xAB\x98\xE5\xBA\xA6", "1.5", "--type", "double"});
    EXPECT_EQ(RunProgram(directory.GetPath(), "tivor", {"get", "data.dataset", "\xE9\xAB\x98\xE5\xBA\xA6"}).output,
              "1.5\n");
}

} // namespace Qor::Tivor::Testing
