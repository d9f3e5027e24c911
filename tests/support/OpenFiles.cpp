#include "OpenFiles.h"

namespace Qor::Core::Testing {

namespace {

OpenFiles* installed = nullptr;

std::string ReadAll(FileSystem& files, FileHandle handle) {
    FileInfo info;
    std::string content;
    if (!files.GetInfo(handle, info).IsOk())
        return content;
    content.resize(static_cast<std::size_t>(info.size));
    std::uint64_t done = 0;
    files.Read(handle, 0, content.data(), content.size(), done);
    content.resize(static_cast<std::size_t>(done));
    return content;
}

} // namespace

OpenFiles::OpenFiles() { installed = this; }

OpenFiles::~OpenFiles() { installed = nullptr; }

std::optional<std::string> OpenFiles::ReadWritten(const PathName& path) {
    if (installed == nullptr)
        return std::nullopt;
    const std::lock_guard guard(installed->m_mutex);
    for (const auto& [handle, name] : installed->m_written)
        if (name.GetAbsolute() == path.GetAbsolute())
            return ReadAll(installed->m_next, handle);
    return std::nullopt;
}

FileStatus OpenFiles::Open(const PathName& path, const FileOpening& opening, FileHandle& handle) {
    const FileStatus status = m_next.Open(path, opening, handle);
    const std::lock_guard guard(m_mutex);
    if (status.IsOk() && opening.write)
        m_written.insert_or_assign(handle, path);
    return status;
}

FileStatus OpenFiles::Close(FileHandle handle) {
    const std::lock_guard guard(m_mutex);
    m_written.erase(handle);
    return m_next.Close(handle);
}

} // namespace Qor::Core::Testing
