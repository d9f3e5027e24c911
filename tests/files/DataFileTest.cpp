#include "Alerts.h"
#include "FaultyFileSystem.h"
#include "ForeignObject.h"
#include "StoredBytes.h"
#include "TemporaryDirectory.h"
#include "TestedTypes.h"

#include <Tivor/DataFileTypeManager.h>

#include <gtest/gtest.h>

#include <functional>

namespace Qor::Tivor::Testing {

namespace {

using namespace Core::Testing;
using namespace std::string_literals;
using Names = std::vector<std::string>;

/// Entries at three levels.
std::shared_ptr<DataContainer> Entries() {
    const auto container = DataContainer::Create();
    container->PutValue("n", 7);
    container->GetSubData({"sub", "deep"}, true)->PutValue("t", "text");
    return container;
}

/// A directory with a file of the given content, and an open file object on it.
struct OpenFile {
    OpenFile(const TestedType& type, const std::string& content, std::shared_ptr<DataContainer> container = nullptr,
             DataFile::EAccess access = DataFile::eREAD_WRITE, const std::string& name = "f")
        : path(directory / name), owner(type.make()), file(*owner) {
        WriteFileText(path, content);
        EXPECT_TRUE(file.Open(path.ToString(), access, DataFile::eOPEN_EXISTING, container));
    }
    std::string Content() const { return ReadFileText(path); }

    TemporaryDirectory directory;
    Core::PathName path;
    std::shared_ptr<StreamedDataFile> owner;
    StreamedDataFile& file;
};

struct Content {
    std::string bytes;
    bool isRecognized = false;
    std::string error = {}; ///< what reading it raises; it is read where this is empty
};

std::vector<Content> ContentsOf(const TestedType& type, const std::string& fileName) {
    const std::string good = type.fileOf(*Entries());
    if (type.make == xmlType.make) {
        const std::string fault = "XMLParseError [Qor.Core.XMLParser] line ";
        const std::string tag = "InvalidDataTag [Qor.Tivor.XMLHandler.OnStartTagContent] Invalid Tivor XML data tag ";
        return {{good, true},
                {"something else entirely", false, fault + "1, column 1: syntax error; Line = 1; Column = 1"},
                {good.substr(0, good.size() - 3), true, fault + "9, column 1: unclosed token; Line = 9; Column = 1"},
                {"<Other><DataContainer/></Other>", false,
                 tag + "named Other; Reason = the element of a container was expected"},
                {"<Data typeid='6' encoding='def/hex64'>7</Data>", false,
                 tag + "named Data; Reason = it is of another class than the object to be read; Line = 1; Column = 1"}};
    }
    std::string unicode = good;
    unicode[11] = 'U';
    std::string otherMark = good;
    otherMark.replace(8, 4, "wxyz");
    const std::string header = "InvalidFileHeader [Qor.Tivor.BinaryDataFile] " + fileName +
                               " does not have a valid QOR Binary Data File header";
    return {{good, true},
            {"something else entirely", false, header},
            {good.substr(0, 11), false, header},
            {unicode, true,
             "IncompatibleCharacterSet [Qor.Tivor.BinaryDataFile] " + fileName +
                 " was saved with a Unicode compiled executable, cannot open with the current ASCII compiled "
                 "executable"},
            {otherMark, true}};
}

} // namespace

class DataFiles : public testing::TestWithParam<TestedType> {};

INSTANTIATE_TEST_SUITE_P(, DataFiles, testing::ValuesIn(testedTypes),
                         [](const auto& type) { return std::string(type.param.name); });

// For a missing file, an empty one, and others: - is refused; n is a new, empty file; r is read.
TEST_P(DataFiles, OpenAsAccessAndBehaviorSay) {
    const TestedType& type = GetParam();
    const auto writing = DataFile::eREAD_WRITE;
    const auto reading = DataFile::eREAD_ONLY;
    const std::tuple<DataFile::EAccess, int, const char*> rows[] = {
        {writing, 0, "-nr"},  {writing, 1, "nnr"},  {writing, 2, "nnn"}, {writing, 3, "n--"},
        {writing, 17, "n--"}, {writing, -1, "n--"}, {reading, 0, "-nr"}, {reading, 1, "-nr"},
        {reading, 2, "---"},  {reading, 3, "---"},  {reading, 17, "---"}};
    const std::size_t numContents = 2 + ContentsOf(type, "").size();
    for (const auto& [access, behavior, outcomes] : rows)
        for (std::size_t i = 0; i < numContents; ++i) {
            SCOPED_TRACE(std::to_string(access) + " " + std::to_string(behavior) + " " + std::to_string(i));
            const TemporaryDirectory directory;
            const Core::PathName path = directory / "file";
            const Content content = i < 2 ? Content() : ContentsOf(type, path.ToString())[i - 2];
            if (i > 0)
                WriteFileText(path, content.bytes);
            EXPECT_EQ(type.recognizes(path.ToString()), content.isRecognized);
            const auto container = DataContainer::Create();
            container->PutValue("mine", 1);
            const auto file = type.make();
            EXPECT_TRUE(file->Open((directory / "former").ToString(), writing, DataFile::eCREATE_NEW, nullptr));
            const char outcome = outcomes[std::min<std::size_t>(i, 2)];
            const bool isRead = outcome == 'r' && content.error.empty();
            const bool opens = outcome == 'n' || isRead;
            const auto open = [&, access = access, how = static_cast<DataFile::EOpenBehavior>(behavior)] {
                EXPECT_EQ(file->Open(path.ToString(), access, how, container), opens);
            };
            const bool fails = outcome == 'r' && !isRead;
            EXPECT_EQ(ErrorOf(open), fails ? content.error + "; File = " + path.ToString() : "");
            EXPECT_EQ(file->IsOpen(), opens);
            EXPECT_EQ(file->GetFileName(), opens ? path.ToString() : "");
            EXPECT_EQ(file->IsModified(), outcome == 'n' && access == writing);
            EXPECT_EQ(file->IsWritable(), opens && access == writing);
            EXPECT_EQ(Keys(*container), isRead ? "n sub " : "mine ");
            EXPECT_EQ(Keys(*file), opens ? Keys(*container) : "");
            EXPECT_EQ(path.Exists(), i > 0 || outcome == 'n');
            // An XML file stays till the first save.
            const bool isEmptied = outcome == 'n' && type.make == binaryType.make;
            EXPECT_EQ(path.Exists() ? ReadFileText(path) : "", isEmptied ? "" : content.bytes);
            if (opens && access == writing) {
                file->PutValue("mine", 1);
                file->Flush();
                EXPECT_EQ(ReadFileText(path), type.fileOf(*container));
            }
            file->Close();
            EXPECT_TRUE(file->IsEmpty() && !container->IsEmpty() && file->GetFileName().empty());
        }
}

TEST_P(DataFiles, DoNothingWhileClosed) {
    const auto owner = GetParam().make();
    StreamedDataFile& file = *owner;
    const std::pair<const char*, std::function<void()>> rows[] = {
        {"Flush()", [&] { file.Flush(); }},
        {"Clear()", [&] { file.Clear(); }},
        {"Remove()", [&] { file.Remove("n"); }},
        {"PutDataObject()", [&] { file.PutValue("n", 1); }},
        {"PutDataObject()", [&] { file.GetSubData({"a"}, true); }},
        {"PutDataObject()", [&] { file.Append(*Entries()); }},
        {"Clear()", [&] { file.Assign(*Entries()); }}};
    for (const auto& [name, work] : rows) {
        EXPECT_EQ(RaisedBy<ClosedDataFileError>(work).ToString(), "ClosedDataFileError ["s + GetParam().category +
                                                                      "] " + name + " called on an unopened " +
                                                                      GetParam().fileType);
        EXPECT_TRUE(file.IsEmpty());
    }
    EXPECT_NO_THROW(file.Close());
}

TEST_P(DataFiles, NoticeEveryChange) {
    using Change = std::function<void(DataContainer&)>;
    const auto deep = [](DataContainer& c) { return c.GetSubData({"sub", "deep"}, false); };
    // Whether it marks the file when it is made by the file, and by the container to which the file is bound.
    const std::tuple<const char*, Change, bool, bool> rows[] = {
        {"put", [](auto& c) { c.PutValue("x", 1); }, true, true},
        {"put the same", [](auto& c) { c.Put("n", c.Get("n")); }, true, false},
        {"put nothing", [](auto& c) { c.Put("n", std::shared_ptr<DataObject>()); }, false, false},
        {"remove nothing", [](auto& c) { c.Remove("x"); }, false, false},
        {"clear", [](auto& c) { c.Clear(); }, true, true},
        {"set value", [](auto& c) { At<int>(c, "n").SetValue(8); }, true, true},
        {"deep value", [&](auto& c) { At<std::string>(*deep(c), "t").SetValue("x"); }, true, true},
        {"assign", [](auto& c) { c = *Entries(); }, true, true},
        {"look", [](auto& c) { Stored(*c.Clone()); }, false, false}};
    for (const auto& [name, change, inFile, inContainer] : rows)
        for (const bool bound : {false, true}) {
            SCOPED_TRACE(std::string(name) + (bound ? " in the container" : " in the file"));
            const auto container = DataContainer::Create();
            OpenFile open(GetParam(), GetParam().fileOf(*Entries()), bound ? container : nullptr);
            EXPECT_FALSE(open.file.IsModified());
            DataContainer& changed = bound ? *container : open.file;
            change(changed);
            const bool marks = bound ? inContainer : inFile;
            EXPECT_EQ(open.file.IsModified(), marks);
            FaultyFileSystem files; // counts
            open.file.Flush();
            EXPECT_EQ(files.CallsMade() != 0, marks);
            EXPECT_FALSE(open.file.IsModified());
            EXPECT_EQ(open.Content(), GetParam().fileOf(changed)); // shorter ones too
            open.file.Close();
            if (bound) {
                container->PutValue("later", 1);
                EXPECT_FALSE(open.file.IsModified());
            }
        }
}

TEST_P(DataFiles, AreSavedOnlyWhenTold) {
    const TestedType& type = GetParam();
    const std::string content = type.fileOf(*Entries()) + type.behind;
    // In any language, and longer than what Windows takes without further ado.
    OpenFile open(type, content, nullptr, DataFile::eREAD_WRITE,
                  std::string(225, 'f') + "H\xC3\xB6he \xE6\xB8\xAC \xF0\x9F\x98\x80");
    EXPECT_GT(open.path.ToString().size(), 260u);
    open.file.PutValue("n", 8);
    open.file.Close();
    EXPECT_TRUE(type.recognizes(open.path.ToString()));
    EXPECT_EQ(open.Content(), content);
    const auto reopened = [&] {
        return type.open(open.path.ToString(), DataFile::eREAD_WRITE, DataFile::eOPEN_ALWAYS, nullptr);
    };
    reopened()->PutValue("n", 9);
    EXPECT_EQ(open.Content(), content);
    const auto file = reopened();
    EXPECT_EQ(file->GetValue<int>("n"), 7);
    file->Clear();
    file->Flush();
    EXPECT_EQ(open.Content(), Bytes(type.empty));
    file->Close();
    EXPECT_TRUE(reopened()->IsOpen());
}

TEST_P(DataFiles, KeepChangesInMemoryWhenReadOnly) {
    const std::string content = GetParam().fileOf(*Entries());
    OpenFile open(GetParam(), content, nullptr, DataFile::eREAD_ONLY);
    open.file.Flush();
    open.file.PutValue("n", 8);
    EXPECT_EQ(RaisedBy<ReadOnlyDataFileError>([&] { open.file.Flush(); }).ToString(),
              "ReadOnlyDataFileError ["s + GetParam().category + "] Flush() called on a read-only " +
                  GetParam().fileType + "; File = " + open.path.ToString());
    EXPECT_TRUE(open.file.IsModified());
    EXPECT_EQ(open.file.GetValue<int>("n"), 8);
    EXPECT_EQ(open.Content(), content);
}

TEST_P(DataFiles, StandInMemoryToo) {
    const TestedType& type = GetParam();
    const auto textOf = [](const DataFile& file) {
        const std::vector<std::byte> content = file.GetContent();
        return std::string(reinterpret_cast<const char*>(content.data()), content.size());
    };
    const auto opened = [&](const std::string& content, const std::string& fileType,
                            DataFile::EAccess access = DataFile::eREAD_WRITE) {
        return DataFile::OpenMemory(std::as_bytes(std::span(content)), access, fileType, nullptr);
    };
    const std::string content = type.fileOf(*Entries());
    const auto file = opened(content, "");
    ASSERT_TRUE(file);
    EXPECT_EQ(file->GetFileType() + file->GetFileName(), type.fileType);
    EXPECT_TRUE(*file == *Entries());
    EXPECT_EQ(textOf(*file), content);
    file->PutValue("n", std::string(5000, 'n'));
    file->Flush();
    EXPECT_EQ(textOf(*file), type.fileOf(*file));
    EXPECT_TRUE(*opened(textOf(*file), type.fileType) == *file);
    const auto fresh = opened("", type.fileType);
    EXPECT_TRUE(fresh->IsEmpty());
    fresh->Flush();
    EXPECT_EQ(textOf(*fresh), Bytes(type.empty));
    RaisedBy<Core::IOError>([&] { opened(content.substr(0, content.size() - 3), type.fileType); });
    const auto readOnly = opened(content, "", DataFile::eREAD_ONLY);
    readOnly->PutValue("n", 9);
    EXPECT_EQ(RaisedBy<ReadOnlyDataFileError>([&] { readOnly->Flush(); }).GetVariable("File"), "(in memory)");
}

TEST_P(DataFiles, LeaveTheContainerWhenTheyCannotBeRead) {
    const auto container = DataContainer::Create();
    // It may neither become deeper than containers are where it comes to stand, nor belong to another file.
    const auto place = container->GetSubData(std::vector<std::string>(254, "d"), true);
    place->PutValue("last", 1);
    for (const auto& [bound, keys] : {std::pair(place, "last "), {GetParam().make(), ""}}) {
        OpenFile open(GetParam(), GetParam().fileOf(*Entries()));
        const std::string path = open.path.ToString();
        const auto error = RaisedBy<Core::LogicError>(
            [&, bound = bound] { open.file.Open(path, DataFile::eREAD_WRITE, DataFile::eOPEN_EXISTING, bound); });
        EXPECT_EQ(error.GetVariable("File"), path);
        EXPECT_FALSE(open.file.IsOpen());
        EXPECT_EQ(Keys(*bound), keys);
    }
}

/// An entry and a container, in which are two and a number, and behind that a number; what is odd is of no known class.
std::string OddFileOf(const TestedType& type) {
    if (type.make == xmlType.make) {
        const std::string odd = "<Data key='x' typeid='0' typename='Odd' version='1a' module='absent.dll' size='3' "
                                "encoding='def/base64'><![CDATA[b2Rk]]></Data>";
        return "<DataContainer>" + odd + "<DataContainer key='sub' typeid='125'>" + odd + odd +
               "<Data key='y' typeid='1' encoding='def/hex64'>1</Data></DataContainer>"
               "<Data key='n' typeid='6' encoding='def/hex64'>5</Data></DataContainer>";
    }
    const std::string end = Bytes("00000000 7F FFFF");
    const std::string odd = Bytes("01000000 'x' 00 03000000 'Odd' 02000000 '1a' 0A000000 'absent.dll' 01 03 'odd'");
    const std::string nested = odd + odd + Bytes("01000000 'y' 01 01") + end;
    return Bytes("'QOR DATA' 01 0000 'A'") + odd + Bytes("03000000 'sub' 7D 01") + static_cast<char>(nested.size()) +
           nested + Bytes("01000000 'n' 06 05000000") + end;
}

TEST_P(DataFiles, SayWhatTheyDropBeforeTheyDo) {
    const std::string content = OddFileOf(GetParam());
    {
        const Warnings refusing(true);
        const auto container = DataContainer::Create();
        RaisedBy<Core::Error>([&] { OpenFile(GetParam(), content, container); });
        EXPECT_TRUE(container->IsEmpty());
    }
    OpenFile open(GetParam(), content);
    Names paths;
    for (const UnreadEntry& entry : open.file.GetUnreadEntries()) {
        paths.push_back(entry.path.size() == 1 ? entry.path[0] : entry.path[0] + '/' + entry.path[1]);
        EXPECT_EQ(entry.typeName + '|' + entry.version + '|' + entry.module, "Odd|1a|absent.dll");
        EXPECT_TRUE(entry.reason.starts_with("Call to ::LoadLibrary for absent.dll failed")) << entry.reason;
    }
    open.file.Flush();
    EXPECT_EQ(open.file.NumUnreadEntries(), 3u) << "nothing was saved";
    EXPECT_EQ(paths, (Names{"x", "sub/x", "sub/x"}));
    EXPECT_EQ(Keys(open.file) + Keys(*open.file.GetSubData({"sub"}, false)), "sub n y ");
    open.file.PutValue("n", 6);
    {
        const Warnings refusing(true);
        RaisedBy<Core::Error>([&] { open.file.Flush(); });
        EXPECT_EQ(open.Content(), content);
        EXPECT_TRUE(open.file.IsModified());
    }
    const Warnings warnings;
    open.file.Flush();
    open.file.PutValue("n", 7);
    open.file.Flush();
    EXPECT_EQ(warnings.Tell(), Names{"DroppingUnreadEntries ["s + GetParam().category + "] Saving " +
                                     open.path.ToString() + " drops 3 entries that could not be read"});
    EXPECT_EQ(open.file.NumUnreadEntries(), 0u);
    EXPECT_EQ(open.Content(), GetParam().fileOf(open.file));
}

TEST_P(DataFiles, KeepMetaData) {
    OpenFile open(GetParam(), GetParam().fileOf(*Entries()));
    open.file.SetMetaData("m", nullptr);
    EXPECT_FALSE(open.file.IsModified() || open.file.GetMetaData("m"));
    open.file.SetMetaData("m", Entries());
    EXPECT_TRUE(*open.file.GetSubData({"MetaData", "m"}, false) == *Entries());
    open.file.Flush();
    open.file.GetMetaData("m")->PutValue("x", 1);
    EXPECT_TRUE(open.file.IsModified());
    open.file.SetMetaData("m", nullptr);
    EXPECT_FALSE(open.file.GetMetaData("m"));
}

TEST_P(DataFiles, AreFoundByTheManager) {
    const TestedType& type = GetParam();
    const auto factory = DataFileTypeManager::Instance().FindFactoryByExtension("F." + std::string(type.extension));
    ASSERT_TRUE(factory);
    EXPECT_EQ(factory->GetFileType(), type.fileType);
    EXPECT_EQ(factory->DescribeFileType(), type.make()->DescribeFileType());
}

TEST(XMLFile, OfAContainerComesBackOrSaysWhatFails) {
    const TemporaryDirectory directory;
    const Core::PathName path = directory / "f.xml";
    const std::string name = path.ToString();
    Entries()->ToXMLFile(name);
    const std::string content = ReadFileText(path);
    EXPECT_EQ(content, StoredXML(*Entries()));
    EXPECT_TRUE(*DataContainer::FromXMLFile(name) == *Entries());
    for (const auto& place : {(directory / "absent" / "f.xml").ToString(), directory.GetPath().ToString()}) {
        const std::string text = "OpenDataFileFailed [Qor.Tivor.DataContainer] Failed to open data file named " +
                                 place + "; File = " + place;
        EXPECT_EQ(ErrorOf([&] { Entries()->ToXMLFile(place); }), text);
        EXPECT_EQ(ErrorOf([&] { DataContainer::FromXMLFile(place); }), text);
    }
    const auto odd = std::make_shared<ForeignObject>();
    odd->onSize = [] { throw Core::LogicError("mine"); };
    const auto container = Entries();
    container->Put("odd", odd);
    EXPECT_EQ(RaisedBy<Core::LogicError>([&] { container->ToXMLFile(name); }).GetText(), "mine");
    EXPECT_EQ(ReadFileText(path), content);
    EXPECT_EQ(directory.GetNames(), Names{"f.xml"});
    WriteFileText(path, "<DataContainer>");
    EXPECT_EQ(RaisedBy<Core::IOError>([&] { DataContainer::FromXMLFile(name); }).GetVariable("File"), name);
}

TEST(XMLDataFile, IsKnownByItsFirstElement) {
    const std::string element = "<DataContainer typeid='125'/>";
    const std::string comment = "<!--" + std::string(70 * 1024, 'c') + "-->";
    const std::pair<std::string, bool> rows[] = {
        {element, true},
        {"\xEF\xBB\xBF<?xml version='1.0' encoding='UTF-8' standalone='yes'?>\n<!-- < -->\n<?pi <?>\n"
         "<!DOCTYPE DataContainer>\n<?pi?><!---->" +
             element,
         true},
        {"<!--" + std::string(60 * 1024, 'c') + "-->" + element, true},
        {"<DataContainer><no end", true},
        {comment + element, false},
        {"<Data typeid='125'/>", false},
        {"<Other><DataContainer/></Other>", false},
        {"<q:DataContainer xmlns:q='q'/>", false},
        {"x" + element, false},
        {"<!-- " + element, false},
        {"", false},
        {"<DataContainer", false},
    };
    const TemporaryDirectory directory;
    const Core::PathName path = directory / "f";
    for (const auto& [content, isKnown] : rows) {
        WriteFileText(path, content);
        EXPECT_EQ(XMLDataFile::IsXMLDataFile(path.ToString()), isKnown) << content.substr(0, 100);
        EXPECT_EQ(XMLDataFile::IsXMLDataFile(std::as_bytes(std::span(content))), isKnown) << content.substr(0, 100);
    }
    EXPECT_FALSE(XMLDataFile::IsXMLDataFile((directory / "missing").ToString()));
    EXPECT_FALSE(XMLDataFile::IsXMLDataFile(directory.GetPath().ToString()));
}

} // namespace Qor::Tivor::Testing
