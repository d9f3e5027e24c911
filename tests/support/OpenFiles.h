#pragma once

#include <QorCore/FileSystem.h>

#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace Qor::Core::Testing {

/// Stands in front of the native files where these are exclusive while they are written, and lets tests read them all
/// the same, by the handle that has them open.
class OpenFiles final : public FileSystem {
public:
    OpenFiles();
    ~OpenFiles() override;

    /// The content of a file that is open for writing; empty when there is no such file.
    static std::optional<std::string> Read(const PathName& path);

    bool ReplacesOpenFiles() const override { return m_next.ReplacesOpenFiles(); }
    FileStatus Open(const PathName& path, const FileOpening& opening, FileHandle& handle) override;
    FileStatus Close(FileHandle handle) override;
    FileStatus Read(FileHandle handle, std::uint64_t position, void* destination, std::uint64_t size,
                    std::uint64_t& done) override {
        return m_next.Read(handle, position, destination, size, done);
    }
    FileStatus Write(FileHandle handle, std::uint64_t position, const void* source, std::uint64_t size,
                     std::uint64_t& done) override {
        return m_next.Write(handle, position, source, size, done);
    }
    FileStatus SetSize(FileHandle handle, std::uint64_t size) override { return m_next.SetSize(handle, size); }
    FileStatus Reserve(FileHandle handle, std::uint64_t size) override { return m_next.Reserve(handle, size); }
    FileStatus Sync(FileHandle handle) override { return m_next.Sync(handle); }
    FileStatus GetInfo(FileHandle handle, FileInfo& info) override { return m_next.GetInfo(handle, info); }
    FileStatus GetInfo(const PathName& path, FileInfo& info) override { return m_next.GetInfo(path, info); }
    FileStatus CopyAttributes(FileHandle from, FileHandle to) override { return m_next.CopyAttributes(from, to); }
    FileStatus ResolveLinks(const PathName& path, PathName& target) override {
        return m_next.ResolveLinks(path, target);
    }
    FileStatus Replace(const PathName& from, const PathName& to) override { return m_next.Replace(from, to); }
    FileStatus Remove(const PathName& path) override { return m_next.Remove(path); }
    FileStatus SyncDirectory(const PathName& directory) override { return m_next.SyncDirectory(directory); }

private:
    FileSystem& m_next;
    std::mutex m_mutex;
    std::map<FileHandle, PathName> m_written;
    ScopedReplacement m_replacement;
};

} // namespace Qor::Core::Testing
