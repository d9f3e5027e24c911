// A configuration of the data-file types: it is read or refused with its own error, and settings are trimmed.

#include "../src/files/DataFileConfiguration.h"

#include <QorCore/MemoryStreams.h>
#include <Tivor/DataFileTypeManager.h>

#include <cstdlib>
#include <iostream>

using namespace Qor::Tivor;

namespace {

void Require(bool condition, const char* text) {
    if (condition)
        return;
    std::cerr << text << '\n';
    std::abort();
}

bool IsTrimmed(const std::string& text) {
    const std::string blanks = " \t\r\n";
    return text.empty() || (blanks.find(text.front()) == blanks.npos && blanks.find(text.back()) == blanks.npos);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Qor::Core::MemoryInputStream stream(data, size);
    try {
        const DataFileConfiguration configuration = ParseDataFileConfiguration(stream, "configuration");
        Require(IsTrimmed(configuration.defaultFileType), "a default has blanks around it");
        for (const std::string& plugIn : configuration.plugIns)
            Require(IsTrimmed(plugIn), "a name has blanks around it");
    } catch (const DataFileConfigParseError& error) {
        Require(error.GetText().starts_with("Error during parse of configuration:\n"), "the error says nothing");
        Require(error.GetVariable("File") == "configuration", "the error names no file");
    }
    return 0;
}
