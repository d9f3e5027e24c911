#include "Platform.h"
#include "RunProgram.h"
#include "TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

namespace Qor::Tivor::Testing {

namespace {

namespace fs = std::filesystem;
using namespace Core::Testing;
using Lines = std::vector<std::string>;

const std::string binary = "QOR Binary Data File";
const std::string xml = "QOR XML Data File";
const std::string plugIns = "Plugins/DataFiles/";

/// A program that stands with its plug-ins and its configuration in a directory of its own.
class Installation {
public:
    Installation() {
        Add(program, program);
        fs::create_directories(Path("Plugins/DataFiles"));
        fs::create_directories(Path("Config"));
    }

    std::string Path(const std::string& name) const { return (m_directory / name).ToString(); }
    void Add(const std::string& name, const std::string& builtFile) const {
        fs::create_directories(fs::path(Path(name)).parent_path());
        fs::copy_file(TIVOR_TEST_PROGRAMS "/" + builtFile, Path(name));
    }
    void AddBehaving(const std::string& name) const { Add(name, "BehavingPlugIn.dll"); }
    void Write(const std::string& name, const std::string& text) const { WriteFileText(m_directory / name, text); }
    void Configure(const std::string& settings) const {
        Write("Config/DataFileConfig.xml", "<DataFileConfig>" + settings + "</DataFileConfig>");
    }

    /// Runs the program elsewhere, and gives what it prints.
    Lines Run(const std::vector<std::string>& arguments = {}) const {
        const auto [status, all] = Core::Testing::RunProgram(Core::PathName("/"), Path(program), arguments);
        EXPECT_EQ(status, 0) << all;
        Lines lines;
        for (std::size_t begin = 0, newLine = 0; (newLine = all.find('\n', begin)) != all.npos; begin = newLine + 1)
            lines.push_back(all.substr(begin, newLine - begin));
        return lines;
    }

private:
    const std::string program = isWindows ? "FileTypesProgram.exe" : "FileTypesProgram";

    TemporaryDirectory m_directory;
};

/// What follows in the lines that begin so.
Lines After(const std::string& begin, const Lines& lines) {
    Lines found;
    for (const std::string& line : lines)
        if (line.starts_with(begin))
            found.push_back(line.substr(begin.size()));
    return found;
}

struct PlugIn {
    std::string name;
    std::string outcome;
    bool isEntered = true;
};

const PlugIn behaving[] = {
    {"a-plain.dll", "loaded: "},
    {"b-error.dll", "failed: raised"},
    {"c-exception.dll", "failed: thrown"},
    {"d-int.dll", "failed: an exception of unknown type"},
    {"e-null.dll", "failed: Expected a factory of data files, found none"},
    {"f-twice.dll", "loaded: "},
    {"g-open.dll", "loaded: "},
    {"h-enumerate.dll", "loaded: "},
    {"i-load.dll", "loaded: "},
    {"j-configure.dll", "loaded: "},
    {"k-empty.dll", "not loaded: the system's reason", false},
    {"l-text.dll", "not loaded: the system's reason", false},
    {"m-none.dll", "no entry point: it has no function \"RegisterDataFileTypes\"", false},
    {"upper-plain.DLL", "loaded: "},
    {"z-plain.dll", "loaded: "},
};

void AddAll(const Installation& installation, const std::string& directory) {
    for (const PlugIn& plugIn : behaving)
        if (plugIn.isEntered)
            installation.AddBehaving(directory + plugIn.name);
    installation.Write(directory + "k-empty.dll", "");
    installation.Write(directory + "l-text.dll", "no library");
    installation.Add(directory + "m-none.dll", "EmptyPlugIn.dll");
    installation.Write(directory + "own.xml", "<DataFileConfig><PlugIn>" + installation.Path(directory) +
                                                  "a-plain.dll</PlugIn><DefaultFileType>j-configure</DefaultFileType>"
                                                  "</DataFileConfig>");
    // None of these counts.
    installation.AddBehaving(directory + "sub/sub-plain.dll");
    installation.AddBehaving(directory + "bak-plain.dll.bak");
    installation.AddBehaving(directory + "dll");
    fs::create_directory(installation.Path(directory + "directory.dll"));
}

} // namespace

TEST(PlugInDirectory, StandsWhateverPlugInsDo) {
    for (const bool isAtFirstUse : {true, false}) {
        const Installation installation;
        const std::string directory = isAtFirstUse ? plugIns : "More/";
        AddAll(installation, directory);
        const std::string there = installation.Path(directory.substr(0, directory.size() - 1));
        const Lines lines = installation.Run({"load", there, there, installation.Path("absent")});
        Lines types = {binary, xml};
        Lines entered;
        Lines expected;
        Lines failed;
        for (const auto& [name, outcome, isEntered] : behaving) {
            expected.push_back(directory + name + ": " + outcome);
            if (isEntered)
                entered.push_back(name.substr(0, name.find('.')));
            if (outcome.starts_with("failed: "))
                failed.push_back(name + " failed with the error: " + outcome.substr(8));
        }
        types.insert(types.end(), entered.begin(), entered.end());
        EXPECT_EQ(After("type ", lines), types);
        EXPECT_EQ(After("log Test.PlugIn entered ", lines), entered);
        Lines found = After("plug-in ", lines);
        std::sort(found.begin(), found.end());
        EXPECT_EQ(found, expected);
        EXPECT_EQ(After("default ", lines), Lines{"j-configure"});
        EXPECT_EQ(After("log Qor.Tivor.DataFile Registered DataFile type: f-twice", lines).size(), 2u);
        EXPECT_EQ(After("log Qor.Tivor.DataFile ReplacingDataFileFactory: ", lines).size(), 1u);
        // Only those that failed in what they did are worth a line.
        Lines failures = After("log Qor.Tivor.DataFile The data file plug-in ", lines);
        for (std::string& failure : failures)
            failure.erase(0, installation.Path(directory).size());
        EXPECT_EQ(failures, failed);
        for (const std::string& line : lines)
            for (const char* const silent : {"k-empty", "l-text", "m-none", "directory", "absent"})
                EXPECT_FALSE(line.starts_with("log ") && line.find(silent) != line.npos) << line;
    }
}

TEST(PlugInDirectory, MayBeMissing) {
    const Installation installation;
    fs::remove_all(installation.Path("Plugins"));
    fs::remove_all(installation.Path("Config"));
    EXPECT_EQ(installation.Run(), (Lines{"log Qor.Tivor.DataFile Registered DataFile type: " + binary,
                                         "log Qor.Tivor.DataFile Registered DataFile type: " + xml, "type " + binary,
                                         "type " + xml, "default "}));
}

TEST(PlugInConfiguration, IsReadAtFirstUse) {
    struct Row {
        std::string settings;
        std::string plugIn; // the last that is told of, with its outcome
        std::string defaultType;
        std::string log; // part of the last line
    };
    const std::string loaded = ": loaded: ";
    const std::string ofTheSystem = isWindows ? "advapi32.dll" : "libm.so.6";
    const Row rows[] = {
        {"<DefaultFileType>x-plain</DefaultFileType>", plugIns + "x-plain.dll" + loaded, "x-plain", "type: x-plain"},
        {"<DefaultFileType>s-plain</DefaultFileType><PlugIn>sub/s-plain.dll</PlugIn>",
         plugIns + "sub/s-plain.dll" + loaded, "s-plain", "type: s-plain"},
        {"<PlugIn>y-error.dll</PlugIn><DefaultFileType>y-error</DefaultFileType>", "y-error.dll: failed: raised",
         "y-error", "failed with the error: raised"},
        {"<PlugIn>" + ofTheSystem + "</PlugIn>",
         ofTheSystem + ": no entry point: it has no function \"RegisterDataFileTypes\"", "", "type: x-plain"},
        {"<PlugIn>absent.dll</PlugIn><PlugIn>y-plain.dll</PlugIn>", "y-plain.dll" + loaded, "", "type: y-plain"},
        {"<PlugIn></PlugIn>", ": not loaded: the system's reason", "", "type: x-plain"},
        {"<PlugIn>HERE/Far/z-plain.dll</PlugIn><DefaultFileType>z-plain</DefaultFileType>", "Far/z-plain.dll" + loaded,
         "z-plain", "type: z-plain"},
    };
    const Installation installation;
    for (const char* const name : {"x-plain.dll", "sub/s-plain.dll"}) {
        installation.AddBehaving(plugIns + name);
        installation.AddBehaving(name); // not taken, since there is the other
    }
    for (const char* const name : {"y-plain.dll", "y-error.dll", "Far/z-plain.dll"})
        installation.AddBehaving(name);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.settings);
        std::string settings = row.settings;
        if (const std::size_t here = settings.find("HERE/"); here != settings.npos)
            settings.replace(here, 5, installation.Path(""));
        installation.Configure(settings);
        const Lines lines = installation.Run();
        const Lines told = After("plug-in ", lines);
        ASSERT_FALSE(told.empty());
        EXPECT_EQ(told.back(), row.plugIn);
        EXPECT_EQ(told.front(), plugIns + "x-plain.dll" + loaded);
        EXPECT_EQ(After("log Test.PlugIn entered x-plain", lines).size(), 1u);
        EXPECT_EQ(After("default ", lines), Lines{row.defaultType});
        const Lines log = After("log Qor.Tivor.DataFile ", lines);
        ASSERT_FALSE(log.empty());
        EXPECT_NE(log.back().find(row.log), std::string::npos) << log.back();
    }
}

TEST(FirstUseThreads, FindTheManagerComplete) {
    const Installation installation;
    const Lines entered = {"a-plain", "b-enumerate", "c-open", "d-plain", "e-plain"};
    for (const char* const name : {"a-plain", "b-enumerate", "c-open"})
        installation.AddBehaving(plugIns + name + ".dll");
    installation.AddBehaving("d-plain.dll");
    installation.AddBehaving("More/e-plain.dll");
    installation.Configure("<PlugIn>d-plain.dll</PlugIn><DefaultFileType>d-plain</DefaultFileType>");
    for (int round = 0; round < 10 && !HasFailure(); ++round) {
        const Lines lines = installation.Run({"threads"});
        Lines loaded = After("log Test.PlugIn entered ", lines);
        std::sort(loaded.begin(), loaded.end());
        EXPECT_EQ(loaded, entered);
        EXPECT_EQ(After("opened ", lines), Lines{"d-plain"});
        for (const std::string& count : After("count ", lines))
            EXPECT_TRUE(count >= "6" && count <= "8") << "types found: " << count;
        for (const std::string& type : After("default ", lines))
            EXPECT_EQ(type, "d-plain");
        EXPECT_EQ(After("type ", lines).size(), 8u);
        EXPECT_EQ(After("plug-in ", lines).size(), 5u);
    }
}

} // namespace Qor::Tivor::Testing
