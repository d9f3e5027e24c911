#include "RunProgram.h"

#include "Platform.h"

#include <QorCore/Utf8.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <stdexcept>

namespace Qor::Core::Testing {

namespace {

std::string Quote(std::string text) {
    if (isWindows)
        std::replace(text.begin(), text.end(), '/', '\\');
    const char quote = isWindows ? '"' : '\'';
    return quote + text + quote;
}

FILE* Start(const std::string& command) {
#ifdef TIVOR_TEST_ON_WINDOWS
    return _wpopen(WideFromUtf8(command).c_str(), L"r"); // the other one takes the system's code page
#else
    return popen(command.c_str(), "r");
#endif
}

} // namespace

ProgramOutcome RunProgram(const PathName& directory, const std::string& program,
                          const std::vector<std::string>& arguments) {
    const PathName programs(TIVOR_TEST_PROGRAMS);
    std::string command = (isWindows ? "cd /d " : "cd ") + Quote(directory.ToString()) + " && ";
    if (isWindows)
        command += "set PATH=" + Quote(programs.ToString()).substr(1, programs.ToString().size()) + ";%PATH%&& ";
    command += Quote((programs / program).ToString());
    for (const std::string& argument : arguments)
        command += ' ' + Quote(argument);
    FILE* const pipe = Start(command + " 2>&1");
    if (pipe == nullptr)
        throw std::runtime_error("cannot run " + program);
    ProgramOutcome outcome;
    std::array<char, 4096> piece;
    while (const std::size_t size = std::fread(piece.data(), 1, piece.size(), pipe))
        outcome.output.append(piece.data(), size);
    const int status = pclose(pipe);
    outcome.status = isWindows ? status : status / 256;
    return outcome;
}

} // namespace Qor::Core::Testing
