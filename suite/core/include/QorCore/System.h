#pragma once

#include <QorCore/PathName.h>

#include <cstdint>
#include <string>
#include <vector>

namespace Qor::Core {

/// The standard streams of a process.
enum EStandardStream { eSTANDARD_OUTPUT, eSTANDARD_ERROR };

/// Facts about the running system, and what the libraries do with whole files.
///
/// Thread rule: every operation may be called by any thread.
class QOR_CORE_API System {
public:
    System() = delete;

    /// Bytes of a memory page.
    static std::uint64_t GetPageSize();
    /// The directory of the executable file of the running process. Raises `IOError` when the system does not tell.
    static PathName GetProcessDirectory();
    /// The arguments of the running program behind its name, as UTF-8; `count` and `arguments` are those of `main`.
    static std::vector<std::string> GetArguments(int count, char** arguments);
    /// The system's number of the running process.
    static std::uint64_t GetProcessNumber();
    /// Whether a process of that number runs on this machine.
    static bool IsProcessRunning(std::uint64_t processNumber);
    /// Whether somebody sees at once what is written to a standard stream of the process.
    static bool IsTerminal(EStandardStream stream);
    /// The system's own text for one of its error numbers.
    static std::string DescribeError(std::int32_t systemError);

    /// Appends the regular files directly in `directory` whose name fits `pattern`, sorted by name. In the pattern '*'
    /// stands for any characters, '?' for one; ASCII letters match in either case. A directory that cannot be read
    /// has no files.
    static void EnumFiles(const PathName& directory, const std::string& pattern, std::vector<PathName>& files);
    /// Appends the regular files in `directory` and in the directories below it, by their names from there on, with '/'
    /// between the parts, sorted. Symbolic links lead to files, not into directories. Raises `IOError` when one of the
    /// directories cannot be read.
    static void EnumFilesBelow(const PathName& directory, std::vector<PathName>& files);

    /// Makes a directory, and those above it, where they are missing. Raises `IOError`.
    static void MakeDirectories(const PathName& directory);

    /// Gives the file `from` the name `to`; a file that had that name before is gone then, in one step. Raises
    /// `IOError`, and both files are as before.
    static void Replace(const PathName& from, const PathName& to);
};

} // namespace Qor::Core
