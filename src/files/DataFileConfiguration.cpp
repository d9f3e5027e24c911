#include "DataFileConfiguration.h"

#include <QorCore/Message.h>
#include <QorCore/XMLParser.h>
#include <Tivor/DataFileTypeManager.h>

#include <algorithm>

namespace Qor::Tivor {

namespace {

const char* const category = "Qor.Tivor.DataFile";

class ConfigurationHandler final : public Core::XMLParseHandler {
public:
    void OnStartTag(const std::string& tag) override {
        if (m_depth++ == 0 && tag != "DataFileConfig")
            Core::Error::RaiseError(
                DataFileConfigParseError("Root element is <" + tag + "> but should be <DataFileConfig>"),
                QOR_CODE_CONTEXT("DataFile"), category);
        if (m_depth == settingDepth)
            m_text.clear();
    }
    void OnTextContent(const std::string& text) override {
        if (m_depth == settingDepth)
            m_text += text;
    }
    void OnCDataSection(Core::BinaryInputStream& stream) override {
        char c = 0;
        while (m_depth == settingDepth && stream.Read(&c, 1) == 1)
            m_text += c;
    }
    void OnEndTag(const std::string& tag, bool) override {
        if (m_depth-- == settingDepth)
            Keep(tag);
    }

    DataFileConfiguration configuration;

private:
    static constexpr int settingDepth = 2;

    void Keep(const std::string& tag) {
        static const char* const blanks = " \t\r\n";
        const auto begin = std::min(m_text.find_first_not_of(blanks), m_text.size());
        const std::string text = m_text.substr(begin, m_text.find_last_not_of(blanks) + 1 - begin);
        if (tag == "DefaultFileType")
            configuration.defaultFileType = text;
        else if (tag == "PlugIn" || tag == "Plugin" || tag == "plugin")
            configuration.plugIns.push_back(text);
    }

    int m_depth = 0;
    std::string m_text;
};

[[noreturn]] void RaiseParseError(const std::string& fileName, const std::string& reason) {
    DataFileConfigParseError error(Core::FormatText("Error during parse of %1%:\n%2%", {fileName, reason}));
    error.AddVariable("File", fileName);
    Core::Error::RaiseError(std::move(error), QOR_CODE_CONTEXT("DataFile"), category);
}

} // namespace

DataFileConfiguration ParseDataFileConfiguration(const std::string& fileName) {
    Core::BinaryFileStream stream;
    if (!stream.Open(fileName, true, DataFile::eOPEN_EXISTING))
        RaiseParseError(fileName, "the file cannot be opened for reading");
    return ParseDataFileConfiguration(stream, fileName);
}

DataFileConfiguration ParseDataFileConfiguration(Core::BinaryInputStream& stream, const std::string& fileName) {
    try {
        ConfigurationHandler handler;
        Core::XMLParser<ConfigurationHandler>().Parse(stream, handler);
        return std::move(handler.configuration);
    } catch (const Core::Error& error) {
        RaiseParseError(fileName, error.GetText());
    }
}

} // namespace Qor::Tivor
