#include "FaultyFileSystem.h"
#include "TemporaryDirectory.h"

#include <QorCore/SafeFileWriter.h>
#include <QorCore/System.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <tuple>

namespace Qor::Core::Testing {

namespace {

namespace fs = std::filesystem;

SafeFileWriter::WriteContent Content(const std::string& text) {
    return [text](BinaryOutputStream& stream) { stream.Write(text.data(), text.size()); };
}

/// Content of that many bytes, larger than the buffer in front of the file when there are many.
std::string Text(char letter, std::size_t size) {
    return std::string(size, letter) + ".";
}

std::string ReadAll(BinaryFileStream& file) {
    std::string text(static_cast<std::size_t>(file.GetSize()), '\0');
    file.SetReadPosition(0);
    file.Read(text.data(), text.size());
    return text;
}

class Warnings final : public AlertHandler {
public:
    void OnWarning(const Warning& warning) override {
        names.push_back(warning.GetTypeName());
        if (refuse)
            throw Error("refused");
    }

    std::vector<std::string> names;
    bool refuse = false;
};

std::vector<std::string> Temporaries(const TemporaryDirectory& directory) {
    std::vector<std::string> names = directory.GetNames();
    std::erase_if(names, [](const std::string& name) { return !name.ends_with(".tivortmp"); });
    return names;
}

/// How the file that is saved is found and opened.
enum class EWay { eNEW, eEXISTING, eOPEN, eOPEN_CLOSED_FIRST, eHARD_LINK, eOPEN_HARD_LINK, eCANNOT_REPLACE };

bool IsOpenIn(EWay way) {
    return way == EWay::eOPEN || way == EWay::eOPEN_CLOSED_FIRST || way == EWay::eOPEN_HARD_LINK;
}

bool EndsInPlace(EWay way) {
    return way == EWay::eHARD_LINK || way == EWay::eOPEN_HARD_LINK || way == EWay::eCANNOT_REPLACE;
}

/// Refuses every replacement, below the faults.
struct Immovable {
    explicit Immovable(bool active) {
        if (active)
            faults.emplace().FailCall(1, EFault::eCANNOT_REPLACE, true, ECall::eREPLACE);
    }
    std::optional<FaultyFileSystem> faults;
};

} // namespace

using Sweep = std::tuple<EWay, EFault, bool, std::size_t>;

class SafeSaveSweep : public testing::TestWithParam<Sweep> {
protected:
    /// One save whose n-th call fails. Returns whether a call failed at all.
    bool FailAt(int n);
    void CheckOldOrNew(const FaultyFileSystem& faults, bool failed, bool restored);

    TemporaryDirectory m_directory;
    PathName m_path = m_directory / "data.bin";
    const std::string m_old = Text('o', 80'000);
    const std::string m_new = Text('n', std::get<3>(GetParam()));
    BinaryFileStream m_file;
};

void SafeSaveSweep::CheckOldOrNew(const FaultyFileSystem& faults, bool failed, bool restored) {
    const EWay way = std::get<EWay>(GetParam());
    // These come after the replacement.
    const bool saved = !failed || faults.FaultsMade(ECall::eSYNC_DIRECTORY) != 0 ||
                       (way == EWay::eOPEN_CLOSED_FIRST && !m_file.IsOpen() && faults.CallsMade(ECall::eREPLACE) != 0 &&
                        faults.FaultsMade(ECall::eREPLACE) == 0);
    if (saved) {
        EXPECT_EQ(ReadFileText(m_path), m_new);
    } else if (way == EWay::eNEW) {
        EXPECT_FALSE(m_path.Exists());
    } else if (restored) {
        EXPECT_EQ(ReadFileText(m_path), m_old);
    } else {
        // A cut that fails for ever after the last byte was written in place.
        EXPECT_TRUE(EndsInPlace(way) && std::get<bool>(GetParam()));
    }
    if (faults.FaultsMade(ECall::eREMOVE) == 0) {
        EXPECT_EQ(Temporaries(m_directory), std::vector<std::string>());
    }
    if (m_file.IsOpen() && restored) {
        EXPECT_EQ(m_file.GetSize(), saved ? m_new.size() : m_old.size());
        EXPECT_EQ(m_file.GetPosition(), saved ? m_new.size() : 3u);
    }
}

bool SafeSaveSweep::FailAt(int n) {
    const EWay way = std::get<EWay>(GetParam());
    for (const std::string& name : m_directory.GetNames())
        fs::remove(fs::path((m_directory / name).ToString()));
    if (way != EWay::eNEW)
        WriteFileText(m_path, m_old);
    if (way == EWay::eHARD_LINK || way == EWay::eOPEN_HARD_LINK)
        fs::create_hard_link(m_path.ToString(), (m_directory / "link.bin").ToString());
    const Immovable immovable(way == EWay::eCANNOT_REPLACE);
    FaultyFileSystem faults;
    if (way == EWay::eOPEN_CLOSED_FIRST)
        faults.SetReplacesOpenFiles(false);
    if (IsOpenIn(way)) {
        EXPECT_TRUE(m_file.Open(m_path.ToString(), false, 0));
        m_file.SetWritePosition(3);
    }
    const auto save = [&](const std::string& text) {
        if (IsOpenIn(way))
            SafeFileWriter::Save(m_file, Content(text));
        else
            SafeFileWriter::Save(m_path, Content(text));
    };

    Warnings warnings;
    faults.FailCall(n, std::get<EFault>(GetParam()), std::get<bool>(GetParam()));
    bool failed = false;
    bool restored = true;
    try {
        save(m_new);
    } catch (const IOError& error) {
        failed = true;
        restored = error.GetVariable("Old content").empty();
        EXPECT_FALSE(error.GetVariable("File").empty());
    }
    faults.Heal();
    const bool met = faults.FaultsMade() != 0;
    if (!EndsInPlace(way)) {
        EXPECT_TRUE(warnings.names.empty()) << warnings.names[0];
    } else if (!failed) {
        EXPECT_EQ(warnings.names, std::vector<std::string>{"FileSavedInPlace"});
    }
    CheckOldOrNew(faults, failed, restored);

    warnings.names.clear();
    if (IsOpenIn(way) && !m_file.IsOpen()) {
        EXPECT_EQ(way, EWay::eOPEN_CLOSED_FIRST);
        EXPECT_TRUE(m_file.Open(m_path.ToString(), false, 0));
    }
    save("third");
    EXPECT_EQ(ReadFileText(m_path), "third");
    EXPECT_EQ(std::count(warnings.names.begin(), warnings.names.end(), "FileChangedOnDisk"), 0);
    if (IsOpenIn(way)) {
        EXPECT_EQ(ReadAll(m_file), "third");
    }
    return met;
}

TEST_P(SafeSaveSweep, LeavesOldOrNewWhicheverCallFails) {
    int n = 1;
    while (FailAt(n) && !HasFailure())
        ++n;
    EXPECT_GT(n, 5) << "the save made hardly any call";
}

INSTANTIATE_TEST_SUITE_P(
    Ways, SafeSaveSweep,
    testing::Combine(testing::Values(EWay::eNEW, EWay::eEXISTING, EWay::eOPEN, EWay::eOPEN_CLOSED_FIRST,
                                     EWay::eHARD_LINK, EWay::eOPEN_HARD_LINK, EWay::eCANNOT_REPLACE),
                     testing::Values(EFault::eIO, EFault::eNO_SPACE, EFault::eSHORT_WRITE, EFault::eINTERRUPTED),
                     testing::Bool(), testing::Values<std::size_t>(100'000, 10)));

class SafeSave : public testing::Test {
protected:
    SafeSave() { WriteFileText(m_path, "old"); }

    bool IsRefused(const SafeFileWriter::WriteContent& content) {
        try {
            SafeFileWriter::Save(m_file, content);
        } catch (...) {
            return true;
        }
        return false;
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
    ASSERT_TRUE(m_file.Open(m_path.ToString(), true, 0));
    EXPECT_THROW(SafeFileWriter::Save(m_file, Content("new")), IOError) << "read-only";
    ASSERT_TRUE(m_file.Open(m_path.ToString(), false, 0));
    EXPECT_TRUE(IsRefused(half));
    EXPECT_EQ(ReadAll(m_file), "old");
    EXPECT_EQ(m_directory.GetNames().size(), 1u);
    m_file.SetWritePosition(3);
    m_file.Write("er", 2);
    SafeFileWriter::Save(m_file, Content("new"));
    EXPECT_EQ(ReadFileText(m_path), "new");
    EXPECT_TRUE(m_warnings.names.empty()) << "the stream's own change is nobody else's";
}

TEST_F(SafeSave, WarnsOfForeignChangesBeforeTheyAreLost) {
    const auto replace = [this] {
        System::Replace((WriteFileText(m_directory / "x", "foreign"), m_directory / "x"), m_path);
    };
    const auto remove = [this] {
        fs::remove(fs::path(std::u8string(m_path.ToString().begin(), m_path.ToString().end())));
    };
    const std::function<void()> changes[] = {[this] { WriteFileText(m_path, "foreign"); }, replace, remove};
    for (const auto& change : changes) {
        for (const bool ownChange : {false, true}) {
            if (ownChange && &change == &changes[0])
                continue; // cannot be told from the own one
            ASSERT_TRUE(m_file.Open(m_path.ToString(), false, 1));
            if (ownChange)
                m_file.Write("own", 3);
            change();
            m_warnings.names.clear();
            m_warnings.refuse = true;
            EXPECT_TRUE(IsRefused(Content("new")));
            EXPECT_TRUE(!m_path.Exists() || ReadFileText(m_path) == "foreign");
            EXPECT_TRUE(Temporaries(m_directory).empty());
            m_warnings.refuse = false;
            SafeFileWriter::Save(m_file, Content("new"));
            EXPECT_EQ(ReadFileText(m_path), "new");
            EXPECT_EQ(m_warnings.names, std::vector<std::string>(2, "FileChangedOnDisk"));
            SafeFileWriter::Save(m_file, Content("newer"));
            EXPECT_EQ(m_warnings.names.size(), 2u);
            EXPECT_EQ(ReadAll(m_file), "newer");
        }
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
    for (const auto& row : rows) {
        FaultyFileSystem faults;
        ASSERT_TRUE(m_file.Open(m_path.ToString(), false, 2));
        m_file.Write("old", 3);
        m_warnings.names.clear();
        m_warnings.refuse = true;
        faults.FailCall(1, row.fault, false, row.call);
        EXPECT_TRUE(IsRefused(Content("new")));
        EXPECT_EQ(ReadFileText(m_path), "old");
        EXPECT_EQ(m_directory.GetNames().size(), 1u);
        EXPECT_EQ(m_warnings.names, std::vector<std::string>(row.inPlace ? 1 : 0, "FileSavedInPlace"));
        m_warnings.refuse = false;
        // The second attempt goes through, with one warning however often it is repeated.
        for (const char* text : {"newer", "n"}) {
            faults.FailCall(1, row.fault, false, row.call);
            EXPECT_EQ(IsRefused(Content(text)), !row.inPlace);
            EXPECT_EQ(ReadFileText(m_path), row.inPlace ? text : "old");
        }
        EXPECT_EQ(m_warnings.names.size(), row.inPlace ? 2u : 0u);
    }
    FaultyFileSystem faults;
    faults.FailCall(1, EFault::eDENIED, false, ECall::eOPEN);
    EXPECT_THROW(SafeFileWriter::Save(m_directory / "new", Content("new")), IOError) << "there is no place yet";
    EXPECT_FALSE((m_directory / "new").Exists());
}

TEST_F(SafeSave, AsksTheMediumOnceAndFailsWithIt) {
    FaultyFileSystem faults;
    for (const bool inPlace : {false, true}) {
        if (inPlace)
            fs::create_hard_link(fs::path(std::u8string(m_path.ToString().begin(), m_path.ToString().end())),
                                 (m_directory / "link").ToString());
        ASSERT_TRUE(m_file.Open(m_path.ToString(), false, 0));
        for (const EFault fault : {EFault::eIO, EFault::eINTERRUPTED}) {
            faults.FailCall(1, fault, false, ECall::eSYNC);
            EXPECT_TRUE(IsRefused(Content("new")));
            EXPECT_EQ(faults.CallsMade(ECall::eSYNC), 1);
            EXPECT_EQ(faults.CallsMade(ECall::eREPLACE), 0);
            EXPECT_EQ(ReadFileText(m_path), "old");
        }
        faults.ResetCounts();
        SafeFileWriter::Save(m_file, Content("old"));
        EXPECT_EQ(faults.CallsMade(ECall::eSYNC), 1);
        EXPECT_EQ(faults.CallsMade(ECall::eSYNC_DIRECTORY), inPlace ? 0 : 1);
    }
}

TEST_F(SafeSave, KeepsLinksModesAndOtherNames) {
    const fs::path directory(m_directory.GetPath().ToString());
    WriteFileText(m_directory / "f", "old");
    std::error_code error;
    fs::create_symlink("f", directory / "link", error);
    fs::create_symlink("nothing", directory / "dangling", error);
    if (error)
        GTEST_SKIP() << "no symbolic links here: " << error.message();
    const fs::perms mode = fs::perms::owner_all | fs::perms::group_read;
    fs::permissions(directory / "f", mode);
    for (const char* text : {"by name", "by stream"}) {
        ASSERT_TRUE(m_file.Open((m_directory / "link").ToString(), false, 0));
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
    EXPECT_EQ(m_warnings.names, std::vector<std::string>{"FileSavedInPlace"});
    EXPECT_THROW(SafeFileWriter::Save(m_directory.GetPath(), Content("x")), IOError) << "a directory";
    EXPECT_THROW(SafeFileWriter::Save(m_directory / "missing/f", Content("x")), IOError);
}

TEST_F(SafeSave, TidiesUpAfterDeadProcessesOnly) {
    const std::string running =
        "." + m_path.GetFileName() + "." + std::to_string(System::GetProcessNumber()) + "-9.tivortmp";
    const std::string stale = "." + m_path.GetFileName() + ".4100000000-1.tivortmp";
    const std::string foreign = ".other.4100000000-1.tivortmp";
    for (const std::string& name : {running, stale, foreign})
        WriteFileText(m_directory / name, "x");
    EXPECT_THROW(SafeFileWriter::Save(m_path, [](BinaryOutputStream&) { throw Error("no"); }), Error);
    EXPECT_EQ(Temporaries(m_directory).size(), 3u) << "not before something was saved";
    SafeFileWriter::Save(m_path, Content("new"));
    EXPECT_EQ(Temporaries(m_directory), (std::vector<std::string>{foreign, running}));
    SafeFileWriter::Save(m_directory / std::string(250, 'l'), Content("a long name"));
}

TEST_F(SafeSave, DirectoryThatAdmitsNoFile) {
    const fs::path directory(m_directory.GetPath().ToString());
    ASSERT_TRUE(m_file.Open(m_path.ToString(), false, 0));
    fs::permissions(directory, fs::perms::owner_read | fs::perms::owner_exec);
    BinaryFileStream probe;
    const bool admits = probe.Open((m_directory / "probe").ToString(), false, 3);
    if (!admits)
        SafeFileWriter::Save(m_file, Content("new"));
    fs::permissions(directory, fs::perms::owner_all);
    if (admits)
        GTEST_SKIP() << "this user may write everywhere: run the tests as another user to see this one";
    EXPECT_EQ(ReadFileText(m_path), "new");
    EXPECT_EQ(m_warnings.names, std::vector<std::string>{"FileSavedInPlace"});
}

TEST_F(SafeSave, FullDiskLeavesTheOldContent) {
    struct SmallDisk {
        explicit SmallDisk(const std::string& path)
            : where(path),
              mounted(std::system(("mount -t tmpfs -o size=256k none " + path + " 2>/dev/null").c_str()) == 0) {}
        ~SmallDisk() { EXPECT_TRUE(!mounted || std::system(("umount -l " + where).c_str()) == 0); }
        std::string where;
        bool mounted;
    };
    const SmallDisk disk(m_directory.GetPath().ToString());
    if (!disk.mounted)
        GTEST_SKIP() << "no right to mount a small disk: the full disk is not tested";
    const std::string old = Text('o', 60'000);
    int refused = 0;
    for (std::size_t size = 20'000; size <= 320'000; size += 20'000) {
        WriteFileText(m_path, old);
        m_file.Open(m_path.ToString(), false, 0);
        const std::string text = Text('n', size);
        const bool failed = IsRefused(Content(text));
        refused += failed ? 1 : 0;
        EXPECT_EQ(ReadFileText(m_path), failed ? old : text) << size;
        EXPECT_EQ(m_directory.GetNames().size(), 1u);
        SafeFileWriter::Save(m_file, Content("small"));
    }
    m_file.Close();
    EXPECT_GT(refused, 3);
    EXPECT_LT(refused, 12);
    EXPECT_TRUE(m_warnings.names.empty());
}

} // namespace Qor::Core::Testing
