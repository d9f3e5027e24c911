// Data files of one type made to files of another one.
#include "ToolFixture.h"

#include <QorCore/System.h>
#include <Tivor/BinaryDataFile.h>
#include <Tivor/DataFileTypeManager.h>
#include <Tivor/XMLDataFile.h>

#include <FaultyFileSystem.h>
#include <filetypes/MarkedFile.h>

namespace Qor::Tivor::Testing {

namespace {

const std::string odd = "01000000 'u' 7C 05000000 'Gizmo' 01 02 'xy'";
const std::string good = "01000000 'g' 06 05000000";

class ConvertTest : public ToolTest {
protected:
    /// All files, with their content.
    std::map<std::string, std::string> Everything() const {
        std::vector<Core::PathName> names;
        Core::System::EnumFilesBelow(directory.GetPath(), names);
        std::map<std::string, std::string> all;
        for (const Core::PathName& name : names)
            all[name.ToString()] = ReadFileText(directory / name.ToString());
        return all;
    }
    void MakeFile(const std::string& notation) const {
        Core::System::MakeDirectories(Core::PathName(file).GetDirectory());
        WriteStored(notation);
    }
    std::string In(const std::string& folder, const std::string& name) const {
        return (directory / folder / name).ToString();
    }
    static Json Converted(const Words& words, int status = 0) {
        Words all{"convert", "--json"};
        all.insert(all.end(), words.begin(), words.end());
        const Outcome outcome = RunWords(all);
        EXPECT_EQ(outcome.status, status) << outcome.err;
        return Json::parse(outcome.out);
    }
};

/// Keeps nothing of an entry "g", and no sign of a zero "sub", "zero".
class ForgetfulFile final : public StreamedDataFile {
public:
    ForgetfulFile() : StreamedDataFile("Test.ForgetfulFile") {}
    ~ForgetfulFile() override { StopChanges(); }
    std::string GetFileType() const override { return "Forgetful"; }
    std::string DescribeFileType() const override { return ""; }

protected:
    void ReadContent(Core::BinaryInputStream& stream, const std::string&, DataContainer& content) override {
        content.InputData(stream);
    }
    void WriteContent(Core::BinaryOutputStream& stream) const override {
        DataContainer kept(*this);
        kept.Remove("g");
        if (const auto below = kept.GetSubData({"sub"}, false)) {
            kept.Put("sub", below->Clone());
            kept.GetSubData({"sub"}, false)->PutValue("zero", 0.0);
        }
        kept.OutputData(stream, true);
    }
};

class ForgetfulFactory final : public MarkedFileFactory {
public:
    ForgetfulFactory() : MarkedFileFactory("Forgetful", "FORGETFUL", {"forgets"}) {}
    std::shared_ptr<DataFile> OpenFile(const std::string& fileName, DataFile::EAccess access,
                                       DataFile::EOpenBehavior behavior,
                                       std::shared_ptr<DataContainer> container) override {
        auto file = std::make_shared<ForgetfulFile>();
        file->Open(fileName, access, behavior, std::move(container));
        return file;
    }
};

} // namespace

TEST_F(ConvertTest, MakesEveryGoldenFileTheOtherAndTheSameAgain) {
    const Core::PathName golden(TIVOR_TEST_DATA "/golden");
    std::vector<Core::PathName> paths;
    Core::System::EnumFiles(golden, "*.qordata", paths);
    ASSERT_GT(paths.size(), 100u);
    const FaultyFileSystem files; // brings nothing to the medium
    const std::string from = Name("from"), texts = Name("texts"), again = Name("a/b/again");
    Core::System::MakeDirectories(Core::PathName(from));
    for (const Core::PathName& path : paths)
        WriteFileText(Core::PathName(from) / path.GetFileName(), ReadFileText(path));
    WriteFileText(directory / "from/notes.txt", "notes");

    const Json there = Converted({from, texts, "--to", XMLDataFile::sFILE_TYPE});
    EXPECT_EQ(there["converted"].size(), paths.size());
    EXPECT_EQ(there["passedOver"].size(), 1u) << there["passedOver"];
    const Json back = Converted({texts, again, "--to", ".qordata"});
    EXPECT_EQ(back["converted"].size(), paths.size());
    EXPECT_EQ(back["bytesAfter"], there["bytesBefore"]);
    EXPECT_EQ(back["bytesBefore"], there["bytesAfter"]);
    for (const Core::PathName& path : paths) {
        const std::string name = path.GetFileName();
        const std::string textName = name.substr(0, name.rfind('.')) + ".qordml";
        EXPECT_EQ(ReadFileText(Core::PathName(texts) / textName), ReadFileText(golden / textName));
        EXPECT_EQ(ReadFileText(Core::PathName(again) / name), ReadFileText(path)) << name;
    }
    EXPECT_EQ(Everything().size(), 3 * paths.size() + 1);

    const Outcome said = RunWords({"convert", from, texts, "--to", "qordml", "--force"});
    EXPECT_EQ(said.status, 0) << said.err;
    const std::string sum = std::to_string(paths.size()) + " files converted, " + there["bytesBefore"].dump() +
                            " bytes -> " + there["bytesAfter"].dump() + " bytes; 1 passed over, 0 not converted\n";
    EXPECT_TRUE(said.out.ends_with(sum)) << said.out;
    EXPECT_NE(said.out.find("notes.txt: passed over: no file type accepts it\n"), std::string::npos) << said.out;
}

TEST_F(ConvertTest, ChoosesTheTypeByOptionOrExtension) {
    MakeFile(good + "02000000 's1' 7D 01 07 00000000 7F FFFF");
    const std::string bytes = ReadFileText(Core::PathName(file));
    const std::string size = std::to_string(bytes.size()) + " bytes";
    const std::string text = Name("data.QORDML");
    const Outcome said = RunWords({"convert", file, text});
    EXPECT_EQ(said.status, 0) << said.err;
    const std::string document = ReadFileText(Core::PathName(text));
    EXPECT_EQ(said.out, file + " (QOR Binary Data File, " + size + ") -> " + text + " (QOR XML Data File, " +
                            std::to_string(document.size()) + " bytes): 2 entries\n");
    EXPECT_EQ(document.substr(0, 6), "<?xml ");
    const std::string other = Name("any.name");
    for (const std::string type : {"dataset", ".SRFx", "QOR Binary Data File"}) {
        EXPECT_EQ(Converted({text, other, "--force", "--to", type})["converted"][0]["targetType"],
                  BinaryDataFile::sFILE_TYPE);
        EXPECT_EQ(ReadFileText(Core::PathName(other)), bytes) << type;
    }
    const Json same = Converted({text, Name("copy"), "--to", "qordml"})["converted"][0];
    EXPECT_EQ(same["sourceType"], same["targetType"]);
    EXPECT_EQ(ReadFileText(directory / "copy"), document);
    WriteFileText(directory / "empty.qordml", "");
    EXPECT_EQ(Converted({Name("empty.qordml"), Name("empty.dataset")})["converted"][0]["entries"], 0);
}

TEST_F(ConvertTest, RefusesWhatWouldHarm) {
    MakeFile(good);
    const std::string taken = Name("taken.qordml"), folder = Name("folder"), there = Name("there");
    WriteFileText(Core::PathName(taken), "old");
    Core::System::MakeDirectories(Core::PathName(Name("folder/a")));
    WriteFileText(directory / "folder/x.dataset", ReadFileText(Core::PathName(file)));
    const auto before = Everything();
    const struct {
        Words words;
        std::string said;
    } rows[] = {
        {{file}, "TO is required"},
        {{file, taken}, "taken.qordml: expected a new file, found one of that name; --force replaces it"},
        {{file, file, "--force"}, "expected another file to write to, found the one that is read"},
        {{file, folder, "--to", "qordml"}, "folder: expected the name of a file, found a folder"},
        {{file, Name("no/x.qordml")}, "no/x.qordml: expected a place where a file can be made"},
        {{file, Name("data.txt")}, "data.txt: expected the extension of a file type, or --to with one, found neither"},
        {{file, Name("data")},
         "the types: QOR Binary Data File (.SRFx .dataset .qordata), QOR XML Data File (.qordml)"},
        {{file, taken, "--force", "--to", "xml"}, "Expected a file type or its extension behind --to, found xml; the"},
        {{folder, there}, "Expected --to TYPE for the files of a folder, found none; the types: QOR B"},
        {{folder, Name("folder/../folder/a"), "--to", "qordml"}, "expected a folder outside of"},
    };
    for (const auto& [words, said] : rows) {
        Words all{"convert"};
        all.insert(all.end(), words.begin(), words.end());
        ExpectError(all, said);
    }
    EXPECT_EQ(Everything(), before);
    EXPECT_EQ(RunWords({"convert", folder, Name("folder/../folder2"), "--to", "qordml"}).status, 0);
}

TEST_F(ConvertTest, LeavesOutWhatCannotBeReadOnlyWhenAllowed) {
    MakeFile(good + odd);
    const std::string text = Name("data.qordml");
    const auto before = Everything();
    ExpectError(
        {"convert", file, text},
        "data.dataset: saving drops 1 entry that cannot be read; --drop-unread does so\n       u of class Gizmo: ");
    EXPECT_EQ(Everything(), before);
    const Outcome dropped = RunWords({"convert", file, text, "--drop-unread"});
    EXPECT_EQ(dropped.status, 1);
    EXPECT_NE(dropped.out.find("): 1 entry, 1 dropped\n  dropped: u: of class Gizmo: "), std::string::npos)
        << dropped.out;
    EXPECT_NE(dropped.err.find("data.dataset: 1 entry could not be read:\n       u of class Gizmo: "),
              std::string::npos)
        << dropped.err;
    // What is kept unread is not dropped, and its warning is not said twice.
    MakeFile(good + "01000000 'v' 00 01000000 'V' 03000000 '1.2' 09000000 'Vapid.dll' 01 03 'abc'");
    const Outcome kept = RunWords({"convert", file, text, "--force"});
    EXPECT_EQ(kept.status, 0);
    EXPECT_EQ(std::count(kept.err.begin(), kept.err.end(), '\n'), 1) << kept.err;
    EXPECT_EQ(RunWords({"convert", text, Name("back.dataset")}).status, 0);
    EXPECT_EQ(ReadFileText(directory / "back.dataset"), ReadFileText(Core::PathName(file)));
}

TEST_F(ConvertTest, GoesOnWithAFolderWhenAFileIsBad) {
    const auto make = [this](const std::string& name, const std::string& notation) {
        file = Name(name);
        MakeFile(notation);
    };
    make("from/sub/deep/z.qordata", good);
    make("from/unread.dataset", good + odd);
    make("from/a.dataset", good);
    make("from/a.qordata", good);
    const std::string whole = ReadFileText(Core::PathName(file));
    WriteFileText(directory / "from/cut.dataset", whole.substr(0, whole.size() - 3));
    WriteFileText(directory / "from/garbage.dataset", "garbage");
    WriteFileText(directory / "from/notes.txt", "notes");
    const Words words{"convert", Name("from"), Name("to"), "--to", "qordml"};
    const Outcome outcome = RunWords(words);
    EXPECT_EQ(outcome.status, 2);
    const std::pair<std::string, std::string> lines[] = {
        {"a.dataset", " (QOR Binary Data File, "},
        {"a.qordata", ": not converted: " + In("to", "a.qordml") + ": expected another name for each file, found it "},
        {"cut.dataset", ": not converted: "},
        {"garbage.dataset", ": passed over: no file type accepts it, though one has its extension\n"},
        {"notes.txt", ": passed over: no file type accepts it\n"},
        {"sub/deep/z.qordata", " (QOR Binary"},
        {"unread.dataset", ": not converted: "}};
    std::istringstream said(outcome.out);
    for (const auto& [name, expected] : lines) {
        std::string line;
        std::getline(said, line);
        EXPECT_TRUE((line + '\n').starts_with(In("from", name) + expected)) << line << "\ninstead of: " << expected;
    }
    EXPECT_TRUE(outcome.out.ends_with("; 2 passed over, 3 not converted\n")) << outcome.out;
    EXPECT_TRUE(outcome.out.find("\n2 files converted, ") != std::string::npos) << outcome.out;
    EXPECT_NE(outcome.err.find("cut.dataset"), std::string::npos) << outcome.err;
    const auto all = Everything();
    EXPECT_EQ(all.size(), 7u + 2u);
    EXPECT_TRUE(all.contains("to/a.qordml") && all.contains("to/sub/deep/z.qordml"));

    const Json json = Converted({Name("from"), Name("to"), "--to", "qordml", "--force", "--drop-unread"}, 2);
    ASSERT_EQ(json["converted"].size(), 3u);
    EXPECT_EQ(json["passedOver"][0]["source"], In("from", "garbage.dataset"));
    EXPECT_EQ(json["notConverted"].size(), 2u);
    EXPECT_EQ(json["converted"][2]["dropped"][0]["path"], Json({"u"}));
}

TEST_F(ConvertTest, LeavesAllAsItWasAfterAnyFault) {
    MakeFile(good);
    const std::string text = Name("data.qordml");
    const Words words{"convert", file, text, "--force"};
    WriteFileText(Core::PathName(text), "old");
    const auto before = Everything();
    FaultyFileSystem files;
    int faults = 0;
    for (const ECall call : {ECall::eOPEN, ECall::eREAD, ECall::eWRITE, ECall::eSYNC, ECall::eREPLACE})
        for (int n = 1; n < 50; ++n) {
            SCOPED_TRACE(testing::Message() << "call " << int(call) << ", number " << n);
            WriteFileText(Core::PathName(text), "old");
            files.FailCall(n, EFault::eNO_SPACE, true, call);
            const Outcome outcome = RunWords(words);
            files.Heal();
            if (files.FaultsMade(call) == 0)
                break;
            ++faults;
            EXPECT_EQ(outcome.status, 2);
            EXPECT_EQ(outcome.out, "");
            EXPECT_EQ(Everything(), before);
            if (HasFailure())
                return;
        }
    EXPECT_GT(faults, 10);
}

TEST_F(ConvertTest, SavesNothingThatDoesNotComeBack) {
    DataFileTypeManager::Instance().SetFactory(std::make_shared<ForgetfulFactory>());
    MakeFile(good);
    const auto before = Everything();
    ExpectError({"convert", file, Name("x.forgets")},
                "x.forgets: expected to read what was written, found g to be different; nothing is saved");
    EXPECT_EQ(Everything(), before);
    MakeFile("03000000 'sub' 7D 01 18 04000000 'zero' 0D 0000000000000080 00000000 7F FFFF");
    ExpectError({"convert", file, Name("x.forgets")}, "found sub/zero to be different");
    MakeFile("01000000 'h' 06 05000000");
    EXPECT_EQ(RunWords({"convert", file, Name("x.forgets")}).status, 0);
}

} // namespace Qor::Tivor::Testing
