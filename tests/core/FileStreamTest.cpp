#include "FaultyFileSystem.h"
#include "TemporaryDirectory.h"

#include <QorCore/Alert.h>
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
    const struct {
        const char* path;
        const char* extension;
        const char* fileName;
        const char* directory;
    } rows[] = {{"a/b.c/d.tar.GZ", "GZ", "d.tar.GZ", "a/b.c"},
                {"a.b/c", "", "c", "a.b"},
                {"x/.hidden", "", ".hidden", "x"},
                {".hidden.cfg", "cfg", ".hidden.cfg", ""},
                {"name.", "", "name.", ""},
                {"x/..", "", "..", "x"},
                {"dir.d/", "", "", "dir.d"},
                {"\xC3\xA4/\xE6\xB8\xAC.\xC3\xB6", "\xC3\xB6", "\xE6\xB8\xAC.\xC3\xB6", "\xC3\xA4"},
                {"", "", "", ""}};
    for (const auto& row : rows) {
        const PathName path(row.path);
        EXPECT_EQ(path.GetExtension(), row.extension) << row.path;
        EXPECT_EQ(path.GetFileName(), row.fileName) << row.path;
        EXPECT_EQ(path.GetDirectory().ToString(), row.directory) << row.path;
    }
}

TEST(System, FindsFilesByPattern) {
    const TemporaryDirectory directory;
    for (const char* name : {"b.dll", "a.DLL", "ab.dll.txt", "\xC3\xA4.dll", "dll"})
        WriteFileText(directory / name, "");
    std::vector<PathName> files{PathName("kept")};
    const struct {
        const char* pattern;
        std::vector<std::string> names;
    } rows[] = {{"*.dll", {"a.DLL", "b.dll", "\xC3\xA4.dll"}},
                {"?.dll", {"a.DLL", "b.dll"}},
                {"*b*.*l*t", {"ab.dll.txt"}},
                {"dll", {"dll"}},
                {"", {}}};
    for (const auto& row : rows) {
        files.resize(1);
        System::EnumFiles(directory.GetPath(), row.pattern, files);
        std::vector<std::string> names;
        for (std::size_t n = 1; n < files.size(); ++n)
            names.push_back(files[n].GetFileName());
        EXPECT_EQ(names, row.names) << row.pattern;
    }
    files.clear();
    System::EnumFiles(directory.GetPath(), "a.dll", files);
    ASSERT_EQ(files.size(), 1u);
    EXPECT_TRUE(files[0].IsFile());
    files.clear();
    System::EnumFiles(directory / "missing", "*", files);
    EXPECT_TRUE(files.empty());
    EXPECT_TRUE(System::GetProcessDirectory().Exists());
    EXPECT_FALSE(System::GetProcessDirectory().IsFile());
}

TEST(FileStream, OpensAsTheModeSays) {
    const struct {
        int mode;
        bool readOnly;
        bool exists;
        const char* after; // content of the file when the opening succeeds, null when it fails
    } rows[] = {{0, false, true, "old"},    {0, false, false, nullptr}, {1, false, true, "old"},
                {1, false, false, ""},      {2, false, true, ""},       {2, false, false, ""},
                {3, false, true, nullptr},  {3, false, false, ""},      {4, false, true, nullptr},
                {-1, false, true, nullptr}, {7, false, false, ""},      {0, true, true, "old"},
                {0, true, false, nullptr},  {1, true, true, "old"},     {1, true, false, nullptr},
                {2, true, true, nullptr},   {3, true, false, nullptr}};
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << "mode " << row.mode << (row.readOnly ? " read-only" : "")
                                        << (row.exists ? " existing" : ""));
        const TemporaryDirectory directory;
        const PathName path = directory / "\xC3\xA4 \xE6\xB8\xAC.bin";
        if (row.exists)
            WriteFileText(path, "old");
        {
            BinaryFileStream file;
            EXPECT_EQ(file.Open(path.ToString(), row.readOnly, row.mode), row.after != nullptr);
            EXPECT_EQ(file.IsOpen(), row.after != nullptr);
        }
        EXPECT_EQ(path.IsFile(), row.exists || row.after != nullptr);
        if (path.IsFile()) {
            EXPECT_EQ(ReadFileText(path), row.after != nullptr ? row.after : "old");
        }
    }
    BinaryFileStream file;
    EXPECT_FALSE(file.Open("", false, 1));
    EXPECT_FALSE(file.Open(TemporaryDirectory().GetPath().ToString(), true, 0)) << "a directory is no file";
}

TEST(FileStream, KeepsTwoPositionsOf64Bits) {
    const TemporaryDirectory directory;
    BinaryFileStream file;
    ASSERT_TRUE(file.Open((directory / "f").ToString(), false, 3));
    file.Write("0123456789", 10);
    EXPECT_EQ(ReadRest(file), "0123456789");
    file.SetWritePosition(4);
    file.Write("xy", 2);
    file.SetReadPosition(2);
    EXPECT_EQ(file.Skip(1), 1u);
    EXPECT_EQ(file.BytesLeft(), 7u);
    EXPECT_EQ(ReadRest(file), "3xy6789");
    EXPECT_EQ(file.Skip(5), 0u);
    file.SetEndOfFile();
    EXPECT_EQ(file.GetSize(), 6u);

    const std::uint64_t far = (std::uint64_t{5} << 30) + 1;
    file.SetWritePosition(far);
    file.Write("end", 3);
    file.Sync();
    EXPECT_EQ(file.GetPosition(), far + 3);
    EXPECT_EQ(file.GetSize(), far + 3);
    file.SetReadPosition(6);
    EXPECT_EQ(file.Skip(far - 6), far - 6);
    EXPECT_EQ(ReadRest(file), "end");
}

TEST(FileStream, TransfersLargeBlocksInOneCallAndFinishesShortOnes) {
    const TemporaryDirectory directory;
    FaultyFileSystem faults;
    const std::string block(3'000'000, 'b');
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
    faults.ResetCounts();
    file.Write(block.data(), block.size());
    EXPECT_EQ(faults.CallsMade(), 1);
    for (const auto& row : rows) {
        file.SetWritePosition(0);
        faults.FailCall(1, row.fault, row.forEver, ECall::eWRITE);
        if (row.calls == 0) {
            EXPECT_THROW(file.Write(block.data(), block.size()), IOError);
            EXPECT_EQ(file.GetPosition(), 0u);
        } else {
            file.Write(block.data(), block.size());
            EXPECT_EQ(faults.CallsMade(), row.calls);
            EXPECT_EQ(file.GetPosition(), block.size());
        }
    }
    faults.Heal();
    faults.ResetCounts();
    EXPECT_EQ(ReadRest(file), block);
    EXPECT_EQ(faults.CallsMade(ECall::eREAD), 2) << "the block and the end";
}

TEST(FileStream, FailuresTellWhatWasAttempted) {
    const TemporaryDirectory directory;
    const PathName path = directory / "f";
    WriteFileText(path, "old");
    FaultyFileSystem faults;
    BinaryFileStream file;
    const auto failure = [&](ECall call, auto operation) {
        faults.FailCall(1, EFault::eIO, true, call);
        try {
            operation();
        } catch (const IOError& error) {
            EXPECT_EQ(error.GetVariable("File"), path.ToString());
            EXPECT_NE(error.GetText().find(System::DescribeError(std::stoi(error.GetVariable("System error")))),
                      std::string::npos);
            return error.GetText().substr(0, error.GetText().find(';'));
        }
        return std::string("nothing raised");
    };
    char byte = 0;
    EXPECT_THROW(file.Read(&byte, 1), IOError) << "not open";
    ASSERT_TRUE(file.Open(path.ToString(), false, 0));
    EXPECT_EQ(failure(ECall::eREAD, [&] { file.Read(&byte, 1); }), "Attempt to read 1 bytes at position 0 of a file");
    EXPECT_EQ(failure(ECall::eWRITE, [&] { file.Write(&byte, 1); }),
              "Attempt to write 1 bytes at position 0 of a file");
    EXPECT_EQ(failure(ECall::eSET_SIZE, [&] { file.SetEndOfFile(); }), "Attempt to set the size of a file to 0 bytes");
    EXPECT_EQ(failure(ECall::eSYNC, [&] { file.Sync(); }), "Attempt to bring a file to the medium");
    EXPECT_EQ(faults.CallsMade(ECall::eSYNC), 1) << "never asked twice";
    EXPECT_EQ(failure(ECall::eINFO, [&] { file.GetSize(); }), "Attempt to learn the size of a file");
    EXPECT_EQ(failure(ECall::eCLOSE, [&] { file.Close(); }), "Attempt to close a file");
    EXPECT_FALSE(file.IsOpen());
    faults.Heal();
    ASSERT_TRUE(file.Open(path.ToString(), true, 0));
    EXPECT_THROW(file.Write(&byte, 1), IOError) << "read-only";
    EXPECT_THROW(file.SetEndOfFile(), IOError);
    EXPECT_EQ(ReadFileText(path), "old");
}

} // namespace Qor::Core::Testing
