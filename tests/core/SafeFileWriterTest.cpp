#include "Alerts.h"
#include "FaultyFileSystem.h"
#include "Platform.h"
#include "TemporaryDirectory.h"

#include <QorCore/SafeFileWriter.h>
#include <QorCore/System.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <tuple>

namespace Qor::Core::Testing {

namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

SafeFileWriter::WriteContent Content(const std::string& text) {
    return [text](BinaryOutputStream& stream) { stream.Write(text.data(), text.size()); };
}

std::string ReadAll(BinaryFileStream& file) {
    std::string text(static_cast<std::size_t>(file.GetSize()), '\0');
    file.SetReadPosition(0);
    file.Read(text.data(), text.size());
    return text;
}

/// How the file that is saved is found and opened.
struct Way {
    bool exists = true;
    bool isOpen = false;
    bool hasHardLink = false;
    bool closesFirst = false;
    bool cannotReplace = false;

    bool EndsInPlace() const { return hasHardLink || cannotReplace; }
};
const Way ways[] = {{.exists = false},      {},
                    {.isOpen = true},       {.isOpen = true, .closesFirst = true},
                    {.hasHardLink = true},  {.isOpen = true, .hasHardLink = true},
                    {.cannotReplace = true}};

} // namespace

class SafeSaveSweep : public testing::TestWithParam<std::tuple<Way, EFault, bool, std::size_t>> {
protected:
    SafeSaveSweep() {
        m_way.closesFirst = m_way.closesFirst || (m_way.isOpen && !m_faults.ReplacesOpenFiles());
        m_faults.SetReplacesOpenFiles(!m_way.closesFirst);
    }

    void Save(const std::string& text);
    /// One save whose n-th call fails. Returns whether a call failed at all.
    bool FailAt(int n);
    void CheckOldOrNew(bool failed, bool restored);

    Way m_way = std::get<Way>(GetParam());
    const bool m_forEver = std::get<bool>(GetParam());
    const std::string m_old = std::string(80'000, 'o');
    const std::string m_new = std::string(std::get<std::size_t>(GetParam()), 'n');
    const TemporaryDirectory m_directory;
    const PathName m_path = m_directory / "data.bin";
    FaultyFileSystem m_below;
    FaultyFileSystem m_faults;
    BinaryFileStream m_file;
};

void SafeSaveSweep::Save(const std::string& text) {
    if (m_way.isOpen)
        SafeFileWriter::Save(m_file, Content(text));
    else
        SafeFileWriter::Save(m_path, Content(text));
}

void SafeSaveSweep::CheckOldOrNew(bool failed, bool restored) {
    // These come after the replacement.
    const bool saved = !failed || m_faults.FaultsMade(ECall::eSYNC_DIRECTORY) != 0 ||
                       (m_way.closesFirst && !m_file.IsOpen() && m_faults.CallsMade(ECall::eREPLACE) != 0 &&
                        m_faults.FaultsMade(ECall::eREPLACE) == 0);
    if (!saved && !restored) {
        // A cut that fails for ever after the last byte was written in place.
        EXPECT_TRUE(m_way.EndsInPlace() && m_forEver);
    } else if (saved || m_way.exists) {
        EXPECT_EQ(ReadFileText(m_path), saved ? m_new : m_old);
    }
    if (m_faults.FaultsMade(ECall::eREMOVE) == 0) {
        EXPECT_EQ(m_directory.GetNames().size(), (saved || m_way.exists ? 1u : 0u) + (m_way.hasHardLink ? 1u : 0u));
    }
    if (m_file.IsOpen() && restored) {
        EXPECT_EQ(m_file.GetSize(), saved ? m_new.size() : m_old.size());
        EXPECT_EQ(m_file.GetPosition(), saved ? m_new.size() : 3u);
    }
}

bool SafeSaveSweep::FailAt(int n) {
    m_file.Close();
    for (const std::string& name : m_directory.GetNames())
        fs::remove((m_directory / name).ToString());
    if (m_way.exists)
        WriteFileText(m_path, m_old);
    if (m_way.hasHardLink)
        fs::create_hard_link(m_path.ToString(), (m_directory / "link.bin").ToString());
    if (m_way.cannotReplace)
        m_below.FailCall(1, EFault::eCANNOT_REPLACE, true, ECall::eREPLACE);
    EXPECT_TRUE(!m_way.isOpen || m_file.Open(m_path.ToString(), false, 0));
    m_file.SetWritePosition(3);

    const Warnings warnings;
    m_faults.FailCall(n, std::get<EFault>(GetParam()), m_forEver);
    bool failed = false;
    bool restored = true;
    try {
        Save(m_new);
    } catch (const IOError& error) {
        failed = true;
        restored = error.GetVariable("Old content").empty();
        EXPECT_FALSE(error.GetVariable("File").empty());
    }
    m_faults.Heal();
    const bool met = m_faults.FaultsMade() != 0;
    EXPECT_TRUE((failed && m_way.EndsInPlace()) ||
                warnings.GetNames() == Names(m_way.EndsInPlace() ? 1 : 0, "FileSavedInPlace"));
    CheckOldOrNew(failed, restored);

    if (m_way.isOpen && !m_file.IsOpen()) {
        EXPECT_TRUE(m_way.closesFirst && m_file.Open(m_path.ToString(), false, 0));
    }
    Save("third");
    EXPECT_EQ(ReadFileText(m_path), "third");
    EXPECT_TRUE(!m_way.isOpen || ReadAll(m_file) == "third");
    for (const std::string& name : warnings.GetNames())
        EXPECT_EQ(name, "FileSavedInPlace");
    return met;
}

TEST_P(SafeSaveSweep, LeavesOldOrNewWhicheverCallFails) {
    int n = 1;
    while (FailAt(n) && !HasFailure())
        ++n;
    EXPECT_GT(n, 5) << "the save made hardly any call";
}

// New content larger than the buffer in front of the file, and smaller than the old content.
INSTANTIATE_TEST_SUITE_P(Ways, SafeSaveSweep,
                         testing::Combine(testing::ValuesIn(ways),
                                          testing::Values(EFault::eIO, EFault::eNO_SPACE, EFault::eSHORT_WRITE,
                                                          EFault::eINTERRUPTED),
                                          testing::Bool(), testing::Values<std::size_t>(100'001, 10)));

class SafeSave : public testing::Test {
protected:
    SafeSave() {
        WriteFileText(m_path, "old");
        m_file.Open(m_path.ToString(), false, 0);
    }

    bool IsRefused(const std::string& text) {
        return !ErrorOf([&] { SafeFileWriter::Save(m_file, Content(text)); }).empty();
    }

    TemporaryDirectory m_directory;
    PathName m_path = m_directory / "\xC3\xA4 data.bin";
    BinaryFileStream m_file;
    Warnings m_warnings;
};

TEST_F(SafeSave, ContentThatCannotBeMadeChangesNothing) {
    const auto half = [](BinaryOutputStream& stream) {
        stream.WriteZeros(1'000'000);
        throw 1;
    };
    EXPECT_THROW(SafeFileWriter::Save(m_file, half), int);
    EXPECT_EQ(ReadAll(m_file), "old");
    EXPECT_EQ(m_directory.GetNames().size(), 1u);
    m_file.SetWritePosition(3);
    m_file.Write("er", 2);
    SafeFileWriter::Save(m_file, Content("new"));
    EXPECT_EQ(ReadFileText(m_path), "new");
    EXPECT_TRUE(m_warnings.seen.empty()) << "the stream's own change is nobody else's";
    ASSERT_TRUE(m_file.Open(m_path.ToString(), true, 0));
    EXPECT_TRUE(IsRefused("newer")) << "read-only";
}

TEST_F(SafeSave, WarnsOfForeignChangesBeforeTheyAreLost) {
    if (isWindows)
        GTEST_SKIP() << "there, nobody else can change a file that is open for writing";
    const auto write = [this] { WriteFileText(m_path, "foreign"); };
    const auto replace = [this] {
        WriteFileText(m_directory / "x", "foreign");
        System::Replace(m_directory / "x", m_path);
    };
    const auto remove = [this] { fs::remove(m_path.ToString()); };
    // Foreign bytes cannot be told from own ones in the same file.
    const std::pair<bool, std::function<void()>> rows[] = {
        {false, write}, {false, replace}, {true, replace}, {false, remove}, {true, remove}};
    for (const auto& [ownChange, change] : rows) {
        ASSERT_TRUE(m_file.Open(m_path.ToString(), false, 1));
        if (ownChange)
            m_file.Write("own", 3);
        change();
        m_warnings.seen.clear();
        {
            const Warnings refusing(true);
            EXPECT_TRUE(IsRefused("new"));
            EXPECT_EQ(refusing.GetNames(), Names{"FileChangedOnDisk"});
        }
        EXPECT_TRUE(!m_path.Exists() || ReadFileText(m_path) == "foreign");
        for (const char* text : {"new", "newer"}) {
            EXPECT_FALSE(IsRefused(text));
            EXPECT_EQ(ReadFileText(m_path), text);
            EXPECT_EQ(ReadAll(m_file), text);
        }
        EXPECT_EQ(m_warnings.GetNames(), Names{"FileChangedOnDisk"});
        EXPECT_EQ(m_directory.GetNames().size(), 1u);
    }
}

TEST_F(SafeSave, GoesInPlaceOnlyWhereNothingElseIsPossible) {
    const struct {
        ECall call;
        EFault fault;
        bool inPlace;
    } rows[] = {{ECall::eOPEN, EFault::eDENIED, true},           {ECall::eREPLACE, EFault::eCANNOT_REPLACE, true},
                {ECall::eOPEN, EFault::eNO_SPACE, false},        {ECall::eOPEN, EFault::eIO, false},
                {ECall::eREPLACE, EFault::eNO_SPACE, false},     {ECall::eREPLACE, EFault::eIO, false},
                {ECall::eWRITE, EFault::eCANNOT_REPLACE, false}, {ECall::eWRITE, EFault::eDENIED, false}};
    FaultyFileSystem faults;
    for (const auto& row : rows) {
        faults.Heal();
        ASSERT_TRUE(m_file.Open(m_path.ToString(), false, 2));
        m_file.Write("old", 3);
        m_warnings.seen.clear();
        {
            const Warnings refusing(true);
            faults.FailCall(1, row.fault, false, row.call);
            EXPECT_TRUE(IsRefused("new"));
            EXPECT_EQ(refusing.GetNames(), Names(row.inPlace ? 1 : 0, "FileSavedInPlace"));
            EXPECT_EQ(ReadFileText(m_path), "old");
        }
        // The second attempt goes through, with one warning however often it is repeated.
        for (const char* text : {"newer", "n"}) {
            faults.FailCall(1, row.fault, false, row.call);
            EXPECT_EQ(IsRefused(text), !row.inPlace);
            EXPECT_EQ(ReadFileText(m_path), row.inPlace ? text : "old");
        }
        EXPECT_EQ(m_warnings.seen.size(), row.inPlace ? 1u : 0u);
    }
    faults.FailCall(1, EFault::eDENIED, false, ECall::eOPEN);
    EXPECT_THROW(SafeFileWriter::Save(m_directory / "new", Content("new")), IOError) << "there is no place yet";
    EXPECT_EQ(m_directory.GetNames().size(), 1u);
}

TEST_F(SafeSave, AsksTheMediumOnceAndFailsWithIt) {
    FaultyFileSystem faults;
    for (const bool inPlace : {false, true}) {
        if (inPlace)
            fs::create_hard_link(Native(m_path), Native(m_directory / "link"));
        for (const EFault fault : {EFault::eIO, EFault::eINTERRUPTED}) {
            faults.FailCall(1, fault, false, ECall::eSYNC);
            EXPECT_TRUE(IsRefused("new"));
            EXPECT_EQ(faults.CallsMade(ECall::eSYNC), 1);
            EXPECT_EQ(faults.CallsMade(ECall::eREPLACE), 0);
            EXPECT_EQ(ReadFileText(m_path), "old");
        }
        faults.ResetCounts();
        EXPECT_FALSE(IsRefused("old"));
        EXPECT_EQ(faults.CallsMade(ECall::eSYNC), 1);
        EXPECT_EQ(faults.CallsMade(ECall::eSYNC_DIRECTORY), inPlace ? 0 : 1);
    }
}

TEST_F(SafeSave, FilesThatOthersHoldStayAsTheyAre) {
    if (!isWindows)
        GTEST_SKIP() << "here, nobody's handle keeps a file from being replaced";
    m_file.Close();
    BinaryFileStream reader;
    ASSERT_TRUE(reader.Open(m_path.ToString(), true, 0));
    const auto error = RaisedBy<IOError>([this] { SafeFileWriter::Save(m_path, Content("new")); });
    EXPECT_EQ(error.GetVariable("File"), m_path.ToString());
    EXPECT_NE(error.GetText().find(System::DescribeError(32)), std::string::npos) << error.GetText();
    EXPECT_EQ(ReadAll(reader), "old");
    EXPECT_EQ(m_directory.GetNames().size(), 1u);
    reader.Close();
    SafeFileWriter::Save(m_path, Content("new"));
    EXPECT_EQ(ReadFileText(m_path), "new");
}

TEST_F(SafeSave, KeepsLinksModesAndOtherNames) {
    if (isWindows)
        GTEST_SKIP() << "there, this compiler's library makes no symbolic links";
    const fs::path directory(m_directory.GetPath().ToString());
    WriteFileText(m_directory / "f", "old");
    fs::create_symlink("f", directory / "link");
    fs::create_symlink("nothing", directory / "dangling");
    const fs::perms mode = fs::perms::owner_all | fs::perms::group_read;
    fs::permissions(directory / "f", mode);
    ASSERT_TRUE(m_file.Open((m_directory / "link").ToString(), false, 0));
    for (const char* text : {"by stream", "by name"}) {
        if (text == std::string("by name"))
            SafeFileWriter::Save(m_directory / "link", Content(text));
        else
            SafeFileWriter::Save(m_file, Content(text));
        EXPECT_TRUE(fs::is_symlink(directory / "link"));
        EXPECT_EQ(ReadFileText(m_directory / "f"), text);
        EXPECT_EQ(fs::status(directory / "f").permissions(), mode);
    }
    SafeFileWriter::Save(m_directory / "dangling", Content("made"));
    EXPECT_TRUE(fs::is_symlink(directory / "dangling"));
    EXPECT_EQ(fs::status(directory / "nothing").permissions(), fs::status(m_path.ToString()).permissions());
    fs::create_hard_link(directory / "f", directory / "second");
    SafeFileWriter::Save(m_directory / "f", Content("both"));
    EXPECT_EQ(ReadFileText(m_directory / "second"), "both");
    EXPECT_EQ(m_warnings.GetNames(), Names{"FileSavedInPlace"});
    for (const char* name : {"", "missing/f"})
        EXPECT_THROW(SafeFileWriter::Save(m_directory / name, Content("x")), IOError);
}

TEST_F(SafeSave, TidiesUpAfterDeadProcessesOnly) {
    const std::string start = "." + m_path.GetFileName() + ".";
    const std::string running = start + std::to_string(System::GetProcessNumber()) + "-9.tivortmp";
    const std::string foreign = ".other.4100000000-1.tivortmp";
    for (const std::string& name : {running, start + "4100000000-1.tivortmp", foreign})
        WriteFileText(m_directory / name, "x");
    EXPECT_THROW(SafeFileWriter::Save(m_path, [](BinaryOutputStream&) { throw Error("no"); }), Error);
    EXPECT_EQ(m_directory.GetNames().size(), 4u) << "not before something was saved";
    EXPECT_FALSE(IsRefused("new"));
    EXPECT_EQ(m_directory.GetNames(), (Names{foreign, running, m_path.GetFileName()}));
    SafeFileWriter::Save(m_directory / std::string(250, 'l'), Content("a long name"));
}

} // namespace Qor::Core::Testing
