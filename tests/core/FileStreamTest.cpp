#include "Alerts.h"
#include "FaultyFileSystem.h"
#include "TemporaryDirectory.h"

#include <QorCore/BinaryFileStream.h>
#include <QorCore/System.h>

#include <gtest/gtest.h>

namespace Qor::Core::Testing {

namespace {

std::string ReadRest(BinaryFileStream& file) {
    std::string content(static_cast<std::size_t>(file.BytesLeft().value()), '\0');
    content.resize(static_cast<std::size_t>(file.Read(content.data(), content.size() + 1)));
    return content;
}

} // namespace

TEST(PathName, TakesNamesApart) {
    const char* const rows[][4] = {{"a/b.c/d.tar.GZ", "GZ", "d.tar.GZ", "a/b.c"},
                                   {"a.b/c", "", "c", "a.b"},
                                   {"x/.hidden", "", ".hidden", "x"},
                                   {".hidden.cfg", "cfg", ".hidden.cfg", ""},
                                   {"name.", "", "name.", ""},
                                   {"x/..", "", "..", "x"},
                                   {"dir.d/", "", "", "dir.d"},
                                   {"\xC3\xA4/\xE6\xB8\xAC.\xC3\xB6", "\xC3\xB6", "\xE6\xB8\xAC.\xC3\xB6", "\xC3\xA4"}};
    for (const auto& [text, extension, fileName, directory] : rows) {
        const PathName path(text);
        EXPECT_EQ(path.GetExtension(), extension) << text;
        EXPECT_EQ(path.GetFileName(), fileName) << text;
        EXPECT_EQ(path.GetDirectory().ToString(), directory) << text;
    }
}

TEST(System, FindsFilesByPattern) {
    const TemporaryDirectory directory;
    for (const char* name : {"b.dll", "a.DLL", "ab.dll.txt", "\xC3\xA4.dll", "dll"})
        WriteFileText(directory / name, "");
    const std::pair<const char*, std::vector<std::string>> rows[] = {{"*.dll", {"a.DLL", "b.dll", "\xC3\xA4.dll"}},
                                                                     {"?.dll", {"a.DLL", "b.dll"}},
                                                                     {"*b*.*l*t", {"ab.dll.txt"}},
                                                                     {"dll", {"dll"}},
                                                                     {"", {}}};
    for (const auto& [pattern, names] : rows) {
        std::vector<PathName> files{PathName("kept")};
        System::EnumFiles(directory.GetPath(), pattern, files);
        System::EnumFiles(directory / "missing", pattern, files);
        ASSERT_EQ(files.size(), names.size() + 1) << pattern;
        for (std::size_t n = 0; n < names.size(); ++n)
            EXPECT_EQ(files[n + 1].ToString(), (directory / names[n]).ToString());
    }
}

TEST(System, SaysWhichDirectoryCannotBeReadOrMade) {
    const TemporaryDirectory directory;
    WriteFileText(directory / "file", "");
    std::vector<PathName> files;
    for (const PathName& path : {directory / "missing", directory / "file"})
        EXPECT_EQ(RaisedBy<IOError>([&] { System::EnumFilesBelow(path, files); }).GetVariable("File"), path.ToString());
    const PathName below = directory / "file" / "below";
    EXPECT_EQ(RaisedBy<IOError>([&] { System::MakeDirectories(below); }).GetVariable("File"), below.ToString());
}

TEST(FileStream, KeepsTwoPositionsOf64Bits) {
    const TemporaryDirectory directory;
    BinaryFileStream file;
    ASSERT_TRUE(file.Open((directory / "f").ToString(), false, 3));
    file.Write("0123456789", 10);
    file.SetWritePosition(4);
    file.Write("xy", 2);
    EXPECT_EQ(file.Skip(3), 3u);
    EXPECT_EQ(ReadRest(file), "3xy6789");
    EXPECT_EQ(file.Skip(5), 0u);
    file.SetEndOfFile();
    EXPECT_EQ(file.GetSize(), 6u);

    const std::uint64_t far = (std::uint64_t{5} << 30) + 1;
    file.SetWritePosition(far);
    file.Write("end", 3);
    EXPECT_EQ(file.GetPosition(), far + 3);
    EXPECT_EQ(file.GetSize(), far + 3);
    file.SetReadPosition(6);
    EXPECT_EQ(file.Skip(far - 6), far - 6);
    EXPECT_EQ(ReadRest(file), "end");
}

TEST(FileStream, TransfersLargeBlocksInOneCallAndFinishesShortOnes) {
    const TemporaryDirectory directory;
    FaultyFileSystem faults;
    const std::string block = std::string(1'400'000, 'a') + std::string(1'600'000, 'b');
    const struct {
        EFault fault;
        bool forEver;
        int calls; // 0: fails
    } rows[] = {{EFault::eSHORT_WRITE, false, 2},
                {EFault::eSHORT_WRITE, true, 22},
                {EFault::eINTERRUPTED, false, 2},
                {EFault::eINTERRUPTED, true, 0},
                {EFault::eNO_SPACE, false, 0}};
    BinaryFileStream file;
    ASSERT_TRUE(file.Open((directory / "f").ToString(), false, 2));
    for (const auto& row : rows) {
        file.SetWritePosition(0);
        faults.FailCall(1, row.fault, row.forEver, ECall::eWRITE);
        if (row.calls == 0) {
            EXPECT_THROW(file.Write(block.data(), block.size()), IOError);
        } else {
            file.Write(block.data(), block.size());
            EXPECT_EQ(faults.CallsMade(), row.calls);
            faults.Heal();
            faults.ResetCounts();
            file.SetReadPosition(0);
            EXPECT_TRUE(ReadRest(file) == block);
            EXPECT_EQ(faults.CallsMade(ECall::eREAD), 2) << "the block and the end";
        }
        EXPECT_EQ(file.GetPosition(), row.calls == 0 ? 0 : block.size());
    }
}

TEST(FileStream, FailuresTellWhatWasAttempted) {
    const TemporaryDirectory directory;
    const PathName path = directory / "f";
    WriteFileText(path, "old");
    FaultyFileSystem faults;
    BinaryFileStream file;
    char byte = 0;
    const struct {
        ECall call;
        const char* attempt;
        std::function<void()> operation;
    } rows[] = {{ECall::eREAD, "read 1 bytes at position 0 of a file", [&] { file.Read(&byte, 1); }},
                {ECall::eWRITE, "write 1 bytes at position 0 of a file", [&] { file.Write(&byte, 1); }},
                {ECall::eSET_SIZE, "set the size of a file to 0 bytes", [&] { file.SetEndOfFile(); }},
                {ECall::eSYNC, "bring a file to the medium", [&] { file.Sync(); }},
                {ECall::eINFO, "learn the size of a file", [&] { file.GetSize(); }},
                {ECall::eCLOSE, "close a file", [&] { file.Close(); }}};
    RaisedBy<IOError>(rows[0].operation);
    ASSERT_TRUE(file.Open(path.ToString(), false, 0));
    for (const auto& row : rows) {
        faults.FailCall(1, EFault::eIO, true, row.call);
        const IOError error = RaisedBy<IOError>(row.operation);
        EXPECT_TRUE(error.GetText().starts_with(std::string("Attempt to ") + row.attempt + ";")) << error.GetText();
        EXPECT_EQ(error.GetVariable("File"), path.ToString());
        const std::string reason = System::DescribeError(std::stoi(error.GetVariable("System error")));
        EXPECT_NE(error.GetText().find(reason), std::string::npos);
        EXPECT_EQ(faults.CallsMade(row.call), 1) << "never asked twice";
    }
    EXPECT_FALSE(file.IsOpen());
    faults.Heal();
    ASSERT_TRUE(file.Open(path.ToString(), true, 0));
    EXPECT_THROW(file.Write(&byte, 1), IOError) << "read-only";
    EXPECT_THROW(file.SetEndOfFile(), IOError);
    EXPECT_EQ(ReadFileText(path), "old");
}

} // namespace Qor::Core::Testing
