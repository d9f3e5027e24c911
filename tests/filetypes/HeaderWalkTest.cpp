#include "Alerts.h"
#include "FaultyFileSystem.h"
#include "MarkedFile.h"
#include "StoredBytes.h"
#include "TemporaryDirectory.h"

#include <Tivor/DataFileTypeManager.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace Qor::Tivor::Testing {

namespace {

using namespace Core::Testing;
using Names = std::vector<std::string>;

const std::string fileHeader = Bytes("'QOR DATA' 01 0000 'A'");
const std::string end = Bytes("00000000 7F FFFF");

std::string Line(const Names& path, const DataObjectHeader& header) {
    std::string line;
    for (const std::string& key : path)
        line += '/' + key;
    for (const std::string& part : {std::to_string(header.typeCode & 0x7F), header.typeName, header.version,
                                    header.module, std::to_string(header.dataSize)})
        line += '|' + part;
    return line;
}

/// What there is below an opened container.
void Walk(DataContainer& container, Names& path, Names& lines) {
    Names keys;
    container.EnumData(keys);
    for (const std::string& key : keys) {
        path.push_back(key);
        const auto object = container.Get(key);
        DataObjectHeader header(*object);
        if (WithoutFlag(header.typeCode) != eNO_TYPE)
            header.module = "*"; // the object may have another, which is not stored
        lines.push_back(Line(path, header));
        if (const auto below = container.GetPtr<DataContainer>(key))
            Walk(*below, path, lines);
        path.pop_back();
    }
}

struct Seen {
    std::string fileType;
    Names lines;
    std::string error;
};

Seen Visit(const std::string& fileName, const std::string& fileType, const std::string& closedKey = "") {
    Seen seen;
    seen.error = ErrorOf([&] {
        seen.fileType = DataFile::ForEachHeader(fileName, fileType, [&](const Names& path, const auto& header) {
            seen.lines.push_back(Line(path, header));
            return path.back() != closedKey;
        });
    });
    return seen;
}

std::string NestedContent() {
    const auto container = DataContainer::Create();
    container->PutValue("n", 7);
    container->GetSubData({"empty"}, true);
    container->GetSubData({"sub", "deep"}, true)->PutValue("t", std::string("text"));
    container->GetSubData({"sub"}, true)->PutValue("more", 1.5);
    container->PutValue("last", true);
    return Stored(*container);
}

} // namespace

TEST(HeaderWalk, SeesWhatTheOpenedFileHolds) {
    DataFileTypeManager::Instance().SetFactory(std::make_shared<MarkedFileFactory>("Marked", "WALK"));
    const TemporaryDirectory directory;
    WriteFileText(directory / "nested", fileHeader + NestedContent());
    WriteFileText(directory / "marked", "WALK" + NestedContent());
    WriteFileText(directory / "trailing.dataset", fileHeader + end + "more");
    WriteFileText(directory / "empty.dataset", "");
    std::vector<std::filesystem::path> files;
    for (const char* const from : {TIVOR_TEST_DATA "/golden", directory.GetPath().ToString().c_str()})
        for (const auto& entry : std::filesystem::directory_iterator(from))
            if (entry.path().extension() != ".txt" && entry.path().extension() != ".py" && entry.is_regular_file())
                files.push_back(entry.path());
    ASSERT_GT(files.size(), 50u);
    for (const auto& path : files) {
        SCOPED_TRACE(path.string());
        const auto file = DataFile::Open(path.string(), DataFile::eREAD_ONLY, DataFile::eOPEN_EXISTING, "", nullptr);
        ASSERT_TRUE(file);
        ASSERT_EQ(file->NumUnreadEntries(), 0u);
        Names place;
        Names expected;
        Walk(*file, place, expected);
        const Seen seen = Visit(path.string(), "");
        EXPECT_EQ(seen.lines, expected);
        EXPECT_EQ(seen.error, "");
        EXPECT_EQ(seen.fileType, file->GetFileType());
    }
}

TEST(HeaderWalk, SeesWhatCannotBeReadLastInItsContainer) {
    DataFileTypeManager::Instance().SetFactory(std::make_shared<MarkedFileFactory>("Marked", "WALK"));
    const TemporaryDirectory directory;
    const std::string odd = Bytes("03000000 'odd' 7C 05000000 'Gizmo' 01 02 'xy'");
    const std::string number = Bytes("01000000 'n' 06 05000000");
    const std::string foreign = Bytes("01000000 'f' 00 01000000 'C' 01000000 '2' 0A000000 'absent.dll' 01 03 'abc'");
    const std::string below = odd + number + end;
    const std::string nested = Bytes("03000000 'sub' 7D 01") + static_cast<char>(below.size()) + below;
    WriteFileText(directory / "marked", "WALK" + foreign + nested + odd + number + end);
    const std::string name = (directory / "marked").ToString();
    const std::string sub = "/sub|125|DataContainer||*|" + std::to_string(end.size() + number.size());
    const std::string after[] = {"/n|6|int32||*|4", "/f|0|C|2|absent.dll|3", "/odd|124|Gizmo||*|2"};
    EXPECT_EQ(Visit(name, "").lines,
              Names({sub, "/sub/n|6|int32||*|4", "/sub/odd|124|Gizmo||*|2", after[0], after[1], after[2]}));
    EXPECT_EQ(Visit(name, "", "sub").lines, Names({sub, after[0], after[1], after[2]}));

    // The sizes of containers aside, a format that need not open the file sees the same, in the file's order.
    WriteFileText(directory / "binary", fileHeader + foreign + nested + odd + number + end);
    const Names lines = Visit((directory / "binary").ToString(), "").lines;
    EXPECT_EQ(Names({lines[0], lines[2], lines[3], lines[4], lines[5]}),
              Names({after[1], "/sub" + after[2], "/sub/n|6|int32||*|4", after[2], after[0]}));
    EXPECT_EQ(Visit((directory / "binary").ToString(), "", "sub").lines,
              Names({lines[0], lines[1], lines[4], lines[5]}));
}

TEST(HeaderWalk, StopsWhereTheFileIsDamaged) {
    const TemporaryDirectory directory;
    const Core::PathName path = directory / "f";
    const std::string content = fileHeader + NestedContent();
    WriteFileText(path, content);
    const Names whole = Visit(path.ToString(), "").lines;
    for (std::size_t size = 1; size < content.size(); ++size) {
        SCOPED_TRACE(size);
        WriteFileText(path, content.substr(0, size));
        const Seen seen = Visit(path.ToString(), "QOR Binary Data File");
        EXPECT_TRUE(seen.error.ends_with("; File = " + path.ToString())) << seen.error;
        ASSERT_LE(seen.lines.size(), whole.size());
        EXPECT_TRUE(std::equal(seen.lines.begin(), seen.lines.end(), whole.begin()));
    }
    const std::tuple<std::string, std::string, std::size_t> rows[] = {
        {Bytes("01000000 'a' 06 01000000 01000000 'b' 7F 0000"), "InputInvalidTypeID ", 1},
        {Bytes("01000000 'a' 13 08 FFFFFFFFFFFFFFFF 'b' "),
         "EndOfStreamOnInput [Qor.Tivor.DataContainer.ForEachHeader] Expected 18446744073709551615 bytes of data, "
         "found the end of the stream after 1; Key = a; File = " +
             path.ToString(),
         1},
        {Bytes("01000000 'a' 7D 01 0A 01000000 'b' 06 01000000") + end, "EndOfStreamOnInput ", 2},
    };
    for (const auto& [entries, error, count] : rows) {
        WriteFileText(path, fileHeader + entries);
        const Seen seen = Visit(path.ToString(), "");
        EXPECT_TRUE(seen.error.starts_with(error)) << seen.error;
        EXPECT_EQ(seen.lines.size(), count);
    }
    const std::string absent = (directory / "absent").ToString();
    for (const char* const fileType : {"", "QOR Binary Data File"})
        EXPECT_TRUE(Visit(absent, fileType).error.ends_with("; File = " + absent));
    // The visitor's own exceptions are not swallowed.
    WriteFileText(path, content);
    EXPECT_THROW(DataFile::ForEachHeader(path.ToString(), "", [](const auto&, const auto&) -> bool { throw 7; }), int);
}

TEST(HeaderWalk, PassesOverDataWithoutReadingIt) {
    const TemporaryDirectory directory;
    const Core::PathName path = directory / "f";
    constexpr std::uint64_t hole = std::uint64_t{5} << 30;
    const std::string size = Bytes("08 0000004001000000"); // 5 GB
    WriteFileText(path, fileHeader + Bytes("04000000 'huge' 13") + size);
    const std::string last = Bytes("04000000 'last' 06 05000000") + end;
    {
        std::fstream file(path.ToString(), std::ios::in | std::ios::out | std::ios::binary | std::ios::ate);
        file.seekp(static_cast<std::streamoff>(hole), std::ios::cur);
        ASSERT_TRUE(file.write(last.data(), static_cast<std::streamsize>(last.size())).flush());
    }
    const FaultyFileSystem files; // counts
    const Seen seen = Visit(path.ToString(), "");
    EXPECT_EQ(seen.error, "");
    EXPECT_EQ(seen.lines, (Names{"/huge|19|||*|" + std::to_string(hole), "/last|6|int32||*|4"}));
    EXPECT_LT(files.CallsMade(ECall::eREAD), 20);
}

} // namespace Qor::Tivor::Testing
