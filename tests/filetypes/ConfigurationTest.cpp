#include "Alerts.h"
#include "TemporaryDirectory.h"

#include <Tivor/DataFileTypeManager.h>

#include <gtest/gtest.h>

namespace Qor::Tivor::Testing {

namespace {

using namespace Core::Testing;
using Names = std::vector<std::string>;

const std::string binary = "QOR Binary Data File";

DataFileTypeManager& Manager() { return DataFileTypeManager::Instance(); }

/// A configuration in a file, read from the default "" on.
class Configuration {
public:
    explicit Configuration(const std::string& content) : m_before(Manager().GetPlugIns().size()) {
        Manager().SetDefault("");
        WriteFileText(m_directory / "c.xml", content);
    }
    ~Configuration() { Manager().SetDefault(""); }
    Configuration(const Configuration&) = delete;
    Configuration& operator=(const Configuration&) = delete;

    std::string GetFileName() const { return (m_directory / "c.xml").ToString(); }
    void Read() const { Manager().ReadConfiguration(GetFileName()); }
    /// The libraries, none of which there is, that were to be loaded since.
    Names GetPlugIns() const {
        Names names;
        const auto plugIns = Manager().GetPlugIns();
        for (std::size_t i = m_before; i < plugIns.size(); ++i) {
            EXPECT_EQ(plugIns[i].outcome, DataFilePlugIn::eNOT_LOADED);
            EXPECT_NE(plugIns[i].reason, "");
            names.push_back(plugIns[i].fileName);
        }
        return names;
    }

private:
    TemporaryDirectory m_directory;
    std::size_t m_before;
};

} // namespace

TEST(Configuration, NamesPlugInsAndADefault) {
    const std::string defaultTag = "<DefaultFileType>" + binary + "</DefaultFileType>";
    const std::tuple<std::string, Names, std::string> rows[] = {
        {"", {}, ""},
        {"text<!-- no setting -->&lt;<PlugIns>1z</PlugIns><Other><a/></Other>", {}, ""},
        {"<DefaultFileType>None</DefaultFileType>" + defaultTag, {}, binary},
        {"<DefaultFileType a='None'>\n\t QOR Binary<!-- c --> <![CDATA[Data ]]>File \r\n</DefaultFileType>",
         {},
         binary},
        {"<PlugIn>2a</PlugIn><Plugin a='b'> \t\r\n2b c </Plugin><plugin>2c</plugin><PLUGIN>2d</PLUGIN><pLugIn>2e"
         "</pLugIn>",
         {"2a", "2b c", "2c"},
         ""},
        {"<PlugIn>3<![CDATA[a<b]]>&amp;<!-- c -->c<?pi d?>e</PlugIn>", {"3a<b&ce"}, ""},
        {"<Group><PlugIn>4a</PlugIn>" + defaultTag + "</Group><PlugIn>4b</PlugIn>", {"4b"}, ""},
        {"<PlugIn>/6/a\xC3\xA4.dll</PlugIn>", {"/6/a\xC3\xA4.dll"}, ""},
    };
    for (const auto& [settings, plugIns, defaultType] : rows) {
        SCOPED_TRACE(settings);
        const Configuration configuration("<DataFileConfig>" + settings + "</DataFileConfig>");
        configuration.Read();
        EXPECT_EQ(configuration.GetPlugIns(), plugIns);
        EXPECT_EQ(Manager().GetDefaultFileType(), defaultType);
    }
}

TEST(Configuration, IsReadInWholeBeforeItCounts) {
    const std::string settings = "<PlugIn>w</PlugIn><DefaultFileType>QOR Binary Data File</DefaultFileType>";
    const std::tuple<std::string, std::string, std::string> rows[] = {
        {"<Config>" + settings + "</Config>", "Root element is <Config> but should be <DataFileConfig>", ""},
        {"<a><DataFileConfig>" + settings + "</DataFileConfig></a>",
         "Root element is <a> but should be <DataFileConfig>", ""},
        {"<DataFileConfig>\n" + settings + "</PlugIn></DataFileConfig>", "line 2, column ", "mismatched tag"},
        {"<DataFileConfig>" + settings + "</DataFileConfig>\n\nmore", "line 3, column 1: ", ""},
        {std::string(3, '\0'), "line 1, column ", ""},
    };
    for (const auto& [content, begin, ending] : rows) {
        SCOPED_TRACE(content);
        const Configuration configuration(content);
        const std::string error = RaisedBy<DataFileConfigParseError>([&] { configuration.Read(); }).ToString();
        const std::string name = configuration.GetFileName();
        EXPECT_TRUE(error.starts_with("DataFileConfigParseError [Qor.Tivor.DataFile] Error during parse of " + name +
                                      ":\n" + begin) &&
                    error.ends_with(ending + "; File = " + name))
            << error;
        EXPECT_EQ(configuration.GetPlugIns(), Names());
        EXPECT_EQ(Manager().GetDefaultFileType(), "");
    }
    const TemporaryDirectory directory;
    for (const std::string& fileName : {(directory / "absent").ToString(), directory.GetPath().ToString()})
        EXPECT_EQ(RaisedBy<DataFileConfigParseError>([&] { Manager().ReadConfiguration(fileName); }).GetText(),
                  "Error during parse of " + fileName + ":\nthe file cannot be opened for reading");
}

TEST(Configuration, SetsTheDefaultLast) {
    const Configuration configuration("<DataFileConfig><DefaultFileType>None</DefaultFileType><PlugIn>late</PlugIn>"
                                      "</DataFileConfig>");
    EXPECT_EQ(RaisedBy<InvalidDataFileType>([&] { configuration.Read(); }).GetText(),
              "Missing installed data file type: None");
    EXPECT_EQ(configuration.GetPlugIns(), Names{"late"});
    EXPECT_EQ(Manager().GetDefaultFileType(), "");
}

} // namespace Qor::Tivor::Testing
