#include "Alerts.h"
#include "FaultyFileSystem.h"
#include "StoredBytes.h"
#include "TemporaryDirectory.h"

#include <Tivor/BinaryDataFile.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

namespace Qor::Tivor::Testing {

namespace {

using Core::Testing::FaultyFileSystem;
using Core::Testing::RaisedBy;
using Core::Testing::ReadFileText;
using Core::Testing::TemporaryDirectory;
using Core::Testing::Warnings;
using Core::Testing::WriteFileText;

const std::string endMarker = Bytes("00000000 7F FFFF");
const std::string header = Bytes("'QOR DATA' 01 0000 'A'");

std::string FileOf(const DataContainer& container) { return header + Stored(container); }

/// Entries at three levels.
std::shared_ptr<DataContainer> Entries() {
    const auto container = DataContainer::Create();
    container->PutValue("n", 7);
    container->GetSubData({"sub", "deep"}, true)->PutValue("t", "text");
    return container;
}

/// A directory with a file of the given content, and an open file object on it.
struct OpenFile {
    explicit OpenFile(const std::string& content, std::shared_ptr<DataContainer> container = nullptr,
                      DataFile::EAccess access = DataFile::eREAD_WRITE, const std::string& name = "f") {
        path = directory / name;
        WriteFileText(path, content);
        EXPECT_TRUE(file.Open(path.ToString(), access, DataFile::eOPEN_EXISTING, container));
    }
    std::string Content() const { return ReadFileText(path); }

    TemporaryDirectory directory;
    Core::PathName path;
    BinaryDataFile file;
};

template <class T>
Data<T>& At(DataContainer& container, const std::string& key) {
    return dynamic_cast<Data<T>&>(*container.Get(key));
}

} // namespace

// Letters: - is refused; n is a new, empty file; r is read; h and u are the errors of header and character set.
TEST(BinaryDataFile, OpensAsAccessAndBehaviorSay) {
    const std::string good = FileOf(*Entries());
    std::string unicode = good;
    unicode[11] = 'U';
    std::string otherMark = good;
    otherMark.replace(8, 4, "wxyz");
    const std::optional<std::string> contents[] = {std::nullopt,       "",      good,     "something else entirely",
                                                   good.substr(0, 11), unicode, otherMark};
    const char* const isBinary = "--r--rr";
    const auto writing = DataFile::eREAD_WRITE;
    const auto reading = DataFile::eREAD_ONLY;
    const std::tuple<DataFile::EAccess, int, const char*> rows[] = {
        {writing, 0, "-nrhhur"},  {writing, 1, "nnrhhur"},  {writing, 2, "nnnnnnn"}, {writing, 3, "n------"},
        {writing, 17, "n------"}, {writing, -1, "n------"}, {reading, 0, "-nrhhur"}, {reading, 1, "-nrhhur"},
        {reading, 2, "-------"},  {reading, 3, "-------"},  {reading, 17, "-------"}};
    for (const auto& [access, behavior, outcomes] : rows)
        for (std::size_t i = 0; i < std::size(contents); ++i) {
            SCOPED_TRACE(std::to_string(access) + " " + std::to_string(behavior) + " " + std::to_string(i));
            const TemporaryDirectory directory;
            const Core::PathName path = directory / "file";
            if (contents[i])
                WriteFileText(path, *contents[i]);
            EXPECT_EQ(BinaryDataFile::IsBinaryDataFile(path.ToString()), isBinary[i] == 'r');
            const auto container = DataContainer::Create();
            container->PutValue("mine", 1);
            BinaryDataFile file;
            EXPECT_TRUE(file.Open((directory / "former").ToString(), writing, DataFile::eCREATE_NEW, nullptr));
            const auto open = [&, access = access, behavior = behavior] {
                return file.Open(path.ToString(), access, static_cast<DataFile::EOpenBehavior>(behavior), container);
            };
            const char outcome = outcomes[i];
            const bool opens = outcome == 'n' || outcome == 'r';
            if (outcome == 'h') {
                const auto error = RaisedBy<InvalidFileHeader>(open);
                EXPECT_EQ(error.GetText(), path.ToString() + " does not have a valid QOR Binary Data File header");
                EXPECT_EQ(error.GetCategory(), "Qor.Tivor.BinaryDataFile");
                EXPECT_EQ(error.GetSeverity(), 2u);
                EXPECT_EQ(error.GetVariable("File"), path.ToString());
            } else if (outcome == 'u') {
                EXPECT_EQ(RaisedBy<IncompatibleCharacterSet>(open).GetText(),
                          path.ToString() + " was saved with a Unicode compiled executable, cannot open with the "
                                            "current ASCII compiled executable");
            } else {
                EXPECT_EQ(open(), opens);
            }
            EXPECT_EQ(file.IsOpen(), opens);
            EXPECT_EQ(file.GetFileName(), opens ? path.ToString() : "");
            EXPECT_EQ(file.IsModified(), outcome == 'n' && access == writing);
            EXPECT_EQ(file.IsWritable(), opens && access == writing);
            EXPECT_EQ(Keys(*container), outcome == 'r' ? "n sub " : "mine ");
            EXPECT_EQ(Keys(file), opens ? Keys(*container) : "");
            EXPECT_EQ(path.Exists(), contents[i] || outcome == 'n');
            EXPECT_EQ(path.Exists() ? ReadFileText(path) : "", outcome == 'n' ? "" : contents[i].value_or(""));
            if (opens && access == writing) {
                file.PutValue("mine", 1);
                file.Flush();
                EXPECT_EQ(ReadFileText(path), FileOf(*container));
            }
            file.Close();
            EXPECT_TRUE(file.IsEmpty() && !container->IsEmpty() && file.GetFileName().empty());
        }
}

TEST(BinaryDataFile, DoesNothingWhileClosed) {
    BinaryDataFile file;
    const std::pair<const char*, std::function<void()>> rows[] = {
        {"Flush()", [&] { file.Flush(); }},
        {"Clear()", [&] { file.Clear(); }},
        {"Remove()", [&] { file.Remove("n"); }},
        {"PutDataObject()", [&] { file.PutValue("n", 1); }},
        {"PutDataObject()", [&] { file.GetSubData({"a"}, true); }},
        {"PutDataObject()", [&] { file.Append(*Entries()); }},
        {"Clear()", [&] { file.Assign(*Entries()); }}};
    for (const auto& [name, work] : rows) {
        EXPECT_EQ(RaisedBy<ClosedDataFileError>(work).GetText(),
                  std::string(name) + " called on an unopened QOR Binary Data File");
        EXPECT_TRUE(file.IsEmpty());
    }
    file.Close();
    EXPECT_EQ(file.GetFileType(), "QOR Binary Data File");
    EXPECT_EQ(file.DescribeFileType(), "Stores binary data serialized by the QOR Binary Data File");
}

TEST(BinaryDataFile, NoticesEveryChange) {
    using Change = std::function<void(DataContainer&)>;
    const auto sub = [](DataContainer& c) { return c.GetSubData({"sub"}, false); };
    const auto deep = [](DataContainer& c) { return c.GetSubData({"sub", "deep"}, false); };
    // Whether it marks the file when it is made by the file, and by the container to which the file is bound.
    const std::tuple<const char*, Change, bool, bool> rows[] = {
        {"put", [](auto& c) { c.PutValue("x", 1); }, true, true},
        {"put the same", [](auto& c) { c.Put("n", c.Get("n")); }, true, false},
        {"put nothing", [](auto& c) { c.Put("n", std::shared_ptr<DataObject>()); }, false, false},
        {"remove", [](auto& c) { c.Remove("n"); }, true, true},
        {"remove nothing", [](auto& c) { c.Remove("x"); }, false, false},
        {"clear", [](auto& c) { c.Clear(); }, true, true},
        {"set value", [](auto& c) { At<int>(c, "n").SetValue(8); }, true, true},
        {"set data", [](auto& c) { At<int>(c, "n").SetData(nullptr); }, true, true},
        {"switch off", [](auto& c) { c.Get("n")->EnableSerialization(false); }, true, true},
        {"nested put", [&](auto& c) { sub(c)->PutValue("x", 1); }, true, true},
        {"deep value", [&](auto& c) { At<std::string>(*deep(c), "t").SetValue("x"); }, true, true},
        {"deep clear", [&](auto& c) { deep(c)->Clear(); }, true, true},
        {"new path",
         [](auto& c) {
             c.GetSubData({"sub", "x"}, true);
         },
         true, true},
        {"append", [](auto& c) { c.Append(*Entries()); }, true, true},
        {"assign", [](auto& c) { c = *Entries(); }, true, true},
        {"clone contents", [](auto& c) { c.CloneContents(*Entries()); }, true, true},
        {"look", [](auto& c) { Stored(*c.Clone()); }, false, false}};
    for (const auto& [name, change, inFile, inContainer] : rows)
        for (const bool bound : {false, true}) {
            SCOPED_TRACE(std::string(name) + (bound ? " in the container" : " in the file"));
            const auto container = DataContainer::Create();
            OpenFile open(FileOf(*Entries()), bound ? container : nullptr);
            EXPECT_FALSE(open.file.IsModified());
            DataContainer& changed = bound ? *container : open.file;
            change(changed);
            const bool marks = bound ? inContainer : inFile;
            EXPECT_EQ(open.file.IsModified(), marks);
            FaultyFileSystem files; // counts
            open.file.Flush();
            EXPECT_EQ(files.CallsMade() != 0, marks);
            EXPECT_FALSE(open.file.IsModified());
            EXPECT_EQ(open.Content(), FileOf(changed)); // shorter ones too
            open.file.Close();
            if (bound) {
                container->PutValue("later", 1);
                EXPECT_FALSE(open.file.IsModified());
            }
        }
}

TEST(BinaryDataFile, SavesOnlyWhenTold) {
    const std::string content = FileOf(*Entries()) + "trailing bytes";
    OpenFile open(content, nullptr, DataFile::eREAD_WRITE, "H\xC3\xB6he \xE6\xB8\xAC \xF0\x9F\x98\x80.qor");
    open.file.PutValue("n", 8);
    open.file.Close();
    EXPECT_EQ(open.Content(), content);
    BinaryDataFile(open.path.ToString(), DataFile::eREAD_WRITE, DataFile::eOPEN_ALWAYS, nullptr).PutValue("n", 9);
    EXPECT_EQ(open.Content(), content);
    BinaryDataFile file(open.path.ToString(), DataFile::eREAD_WRITE, DataFile::eOPEN_ALWAYS, nullptr);
    EXPECT_EQ(file.GetValue<int>("n"), 7);
    file.Clear();
    file.Flush();
    EXPECT_EQ(open.Content(), header + endMarker);
}

TEST(BinaryDataFile, KeepsChangesOfAReadOnlyFileInMemory) {
    const std::string content = FileOf(*Entries());
    OpenFile open(content, nullptr, DataFile::eREAD_ONLY);
    open.file.Flush();
    open.file.PutValue("n", 8);
    const auto error = RaisedBy<ReadOnlyDataFileError>([&] { open.file.Flush(); });
    EXPECT_EQ(error.GetText(), "Flush() called on a read-only QOR Binary Data File");
    EXPECT_EQ(error.GetVariable("File"), open.path.ToString());
    EXPECT_TRUE(open.file.IsModified());
    EXPECT_EQ(open.file.GetValue<int>("n"), 8);
    EXPECT_EQ(open.Content(), content);
}

TEST(BinaryDataFile, LeavesTheContainerWhenItCannotBeRead) {
    const std::string content = FileOf(*Entries());
    const TemporaryDirectory directory;
    const Core::PathName path = directory / "f";
    BinaryDataFile file;
    const auto leaves = [&]<class E>(std::type_identity<E>, std::shared_ptr<DataContainer> container) {
        const std::string keys = Keys(*container);
        const auto error = RaisedBy<E>(
            [&] { file.Open(path.ToString(), DataFile::eREAD_WRITE, DataFile::eOPEN_EXISTING, container); });
        EXPECT_EQ(error.GetVariable("File"), path.ToString());
        EXPECT_FALSE(file.IsOpen());
        EXPECT_EQ(Keys(*container), keys);
    };
    const auto container = DataContainer::Create();
    WriteFileText(path, content.substr(0, content.size() - 1));
    leaves(std::type_identity<EndOfStreamOnInput>(), container);
    // Neither may it become deeper than containers are where it comes to stand, nor belong to another file.
    WriteFileText(path, content);
    std::shared_ptr<DataContainer> place = container;
    for (int level = 2; level < 256; ++level)
        place = place->GetSubData({"d"}, true);
    place->PutValue("last", 1);
    leaves(std::type_identity<Core::LogicError>(), place);
    leaves(std::type_identity<Core::LogicError>(), std::make_shared<BinaryDataFile>());
    EXPECT_EQ(ReadFileText(path), content);
}

TEST(BinaryDataFile, SaysWhatItDropsBeforeItDoes) {
    const std::string odd = Bytes("01 000000 'x' 13 01 03 'odd'");
    const std::string nested = odd + odd + Bytes("01 000000 'y' 01 01") + endMarker;
    const std::string content = header + odd + Bytes("03 000000 'sub' 7D 01") + static_cast<char>(nested.size()) +
                                nested + Bytes("01 000000 'n' 06 05000000") + endMarker;
    {
        const Warnings refusing(true);
        const TemporaryDirectory directory;
        WriteFileText(directory / "f", content);
        const auto container = DataContainer::Create();
        RaisedBy<Core::Error>([&] {
            BinaryDataFile((directory / "f").ToString(), DataFile::eREAD_ONLY, DataFile::eOPEN_EXISTING, container);
        });
        EXPECT_TRUE(container->IsEmpty());
    }
    OpenFile open(content);
    EXPECT_EQ(open.file.NumUnreadEntries(), 3u);
    EXPECT_EQ(Keys(open.file), "sub n ");
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
    ASSERT_EQ(warnings.GetNames(), std::vector<std::string>{"DroppingUnreadEntries"});
    EXPECT_EQ(warnings.seen[0].GetText(), "Saving " + open.path.ToString() + " drops 3 entries that could not be read");
    EXPECT_EQ(open.file.NumUnreadEntries(), 0u);
    EXPECT_EQ(open.Content(), FileOf(open.file));
}

TEST(BinaryDataFile, KeepsMetaData) {
    OpenFile open(FileOf(*Entries()));
    EXPECT_FALSE(open.file.GetMetaData("m"));
    open.file.SetMetaData("m", nullptr);
    EXPECT_FALSE(open.file.IsModified());
    open.file.SetMetaData("m", Entries());
    EXPECT_TRUE(open.file.IsModified());
    open.file.Flush();
    EXPECT_TRUE(open.file.Open(open.path.ToString(), DataFile::eREAD_WRITE, DataFile::eOPEN_EXISTING, nullptr));
    EXPECT_TRUE(*open.file.GetSubData({"MetaData", "m"}, false) == *Entries());
    open.file.GetMetaData("m")->PutValue("x", 1);
    EXPECT_TRUE(open.file.IsModified());
    open.file.Flush();
    open.file.SetMetaData("m", nullptr);
    EXPECT_TRUE(open.file.IsModified() && !open.file.GetMetaData("m"));
}

// Longer than what Windows takes without further ado.
TEST(BinaryDataFile, HasANameInAnyLanguageAndOfAnyLength) {
    const Core::Testing::TemporaryDirectory directory;
    const auto folder = directory / (std::string(140, 'd') + " \xC3\xA4\xE9\xAB\x98");
    std::filesystem::create_directory(Core::Testing::Native(folder));
    const auto path = folder / (std::string(140, 'f') + " \xE5\xBA\xA6.dataset");
    ASSERT_GT(path.ToString().size(), 290u);
    for (const int value : {1, 2}) {
        BinaryDataFile file(path.ToString(), DataFile::eREAD_WRITE, DataFile::eOPEN_ALWAYS, nullptr);
        ASSERT_TRUE(file.IsOpen());
        EXPECT_EQ(file.GetValue<int>("value").value_or(1), 1);
        file.PutValue("value", value);
        file.Flush();
        EXPECT_TRUE(path.IsFile());
        EXPECT_EQ(Core::Testing::ReadFileText(path).size(), 12u + 14u + 7u) << value;
    }
    EXPECT_TRUE(BinaryDataFile::IsBinaryDataFile(path.ToString()));
}

} // namespace Qor::Tivor::Testing
