#include "../FileError.h"
#include "../NativePath.h"

#include <QorCore/System.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <dirent.h>
#include <limits>
#include <memory>
#include <string_view>
#include <system_error>
#include <unistd.h>

namespace Qor::Core {

std::uint64_t System::GetPageSize() { return static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE)); }

PathName System::GetProcessDirectory() {
    const std::filesystem::path self("/proc/self/exe");
    std::error_code error;
    const auto executable = std::filesystem::read_symlink(self, error);
    if (error)
        RaiseFileError("learn the executable file of the process", FromNative(self), {eFILE_OTHER, error.value()},
                       QOR_CODE_CONTEXT("System"));
    return FromNative(executable.parent_path());
}

std::vector<std::string> System::GetArguments(int count, char** arguments) {
    return count > 0 ? std::vector<std::string>(arguments + 1, arguments + count) : std::vector<std::string>();
}

std::uint64_t System::GetProcessNumber() { return static_cast<std::uint64_t>(::getpid()); }

bool System::IsProcessRunning(std::uint64_t processNumber) {
    if (processNumber == 0 || processNumber > static_cast<std::uint64_t>(std::numeric_limits<pid_t>::max()))
        return false;
    return ::kill(static_cast<pid_t>(processNumber), 0) == 0 || errno == EPERM;
}

bool System::IsTerminal(EStandardStream stream) {
    return ::isatty(stream == eSTANDARD_OUTPUT ? STDOUT_FILENO : STDERR_FILENO) == 1;
}

std::string System::DescribeError(std::int32_t systemError) { return std::generic_category().message(systemError); }

// The standard's iterator ends the program where memory is short.
std::int32_t GetNamesIn(const PathName& directory, std::vector<std::string>& names) {
    const std::unique_ptr<DIR, int (*)(DIR*)> open(::opendir(directory.ToString().c_str()), &::closedir);
    if (!open)
        return errno;
    for (;;) {
        errno = 0; // the end is no error
        const dirent* const entry = ::readdir(open.get());
        if (entry == nullptr)
            return errno;
        if (const std::string_view name = entry->d_name; name != "." && name != "..")
            names.emplace_back(name);
    }
}

} // namespace Qor::Core
