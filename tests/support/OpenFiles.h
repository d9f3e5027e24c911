#pragma once

#include "FileSystemInFront.h"

#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace Qor::Core::Testing {

/// Stands in front of the native files where these are exclusive while they are written, and lets tests read them all
/// the same, by the handle that has them open.
class OpenFiles final : public FileSystemInFront {
public:
    OpenFiles();
    ~OpenFiles() override;

    /// The content of a file that is open for writing; empty when there is no such file.
    static std::optional<std::string> ReadWritten(const PathName& path);

    FileStatus Open(const PathName& path, const FileOpening& opening, FileHandle& handle) override;
    FileStatus Close(FileHandle handle) override;

private:
    std::mutex m_mutex;
    std::map<FileHandle, PathName> m_written;
};

} // namespace Qor::Core::Testing
