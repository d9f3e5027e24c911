#pragma once

#include <QorCore/FileSystem.h>

#include <optional>

namespace Qor::Core::Testing {

/// The calls of the seam.
enum class ECall {
    eOPEN,
    eCLOSE,
    eREAD,
    eWRITE,
    eSET_SIZE,
    eRESERVE,
    eSYNC,
    eINFO,
    eCOPY_ATTRIBUTES,
    eRESOLVE,
    eREPLACE,
    eREMOVE,
    eSYNC_DIRECTORY
};

/// Stands in front of the current file system while it lives, and passes on the calls that it does not answer itself.
class FileSystemInFront : public FileSystem {
public:
    bool ReplacesOpenFiles() const override { return m_next.ReplacesOpenFiles(); }
    FileStatus Open(const PathName& path, const FileOpening& opening, FileHandle& handle) override {
        return Pass(ECall::eOPEN, [&] { return m_next.Open(path, opening, handle); });
    }
    FileStatus Close(FileHandle handle) override {
        const FileStatus status = m_next.Close(handle);
        return Answer(ECall::eCLOSE).value_or(status);
    }
    FileStatus Read(FileHandle handle, std::uint64_t position, void* destination, std::uint64_t size,
                    std::uint64_t& done) override {
        return Pass(ECall::eREAD, [&] { return m_next.Read(handle, position, destination, size, done); });
    }
    FileStatus Write(FileHandle handle, std::uint64_t position, const void* source, std::uint64_t size,
                     std::uint64_t& done) override {
        return Pass(ECall::eWRITE, [&] { return m_next.Write(handle, position, source, size, done); });
    }
    FileStatus SetSize(FileHandle handle, std::uint64_t size) override {
        return Pass(ECall::eSET_SIZE, [&] { return m_next.SetSize(handle, size); });
    }
    FileStatus Reserve(FileHandle handle, std::uint64_t size) override {
        return Pass(ECall::eRESERVE, [&] { return m_next.Reserve(handle, size); });
    }
    FileStatus Sync(FileHandle handle) override {
        return Pass(ECall::eSYNC, [&] { return m_next.Sync(handle); });
    }
    FileStatus GetInfo(FileHandle handle, FileInfo& info) override {
        return Pass(ECall::eINFO, [&] { return m_next.GetInfo(handle, info); });
    }
    FileStatus GetInfo(const PathName& path, FileInfo& info) override {
        return Pass(ECall::eINFO, [&] { return m_next.GetInfo(path, info); });
    }
    FileStatus CopyAttributes(FileHandle from, FileHandle to) override {
        return Pass(ECall::eCOPY_ATTRIBUTES, [&] { return m_next.CopyAttributes(from, to); });
    }
    FileStatus ResolveLinks(const PathName& path, PathName& target) override {
        return Pass(ECall::eRESOLVE, [&] { return m_next.ResolveLinks(path, target); });
    }
    FileStatus Replace(const PathName& from, const PathName& to) override {
        return Pass(ECall::eREPLACE, [&] { return m_next.Replace(from, to); });
    }
    FileStatus Remove(const PathName& path) override {
        return Pass(ECall::eREMOVE, [&] { return m_next.Remove(path); });
    }
    FileStatus SyncDirectory(const PathName& directory) override {
        return Pass(ECall::eSYNC_DIRECTORY, [&] { return m_next.SyncDirectory(directory); });
    }

protected:
    FileSystemInFront() : m_next(Current()), m_replacement(*this) {}
    /// The answer of a call that is not passed on; that of `Close` comes after it all the same.
    virtual std::optional<FileStatus> Answer(ECall) { return std::nullopt; }

    FileSystem& m_next;

private:
    template <class Call>
    FileStatus Pass(ECall call, Call next) {
        const std::optional<FileStatus> answer = Answer(call);
        return answer ? *answer : next();
    }

    ScopedReplacement m_replacement;
};

} // namespace Qor::Core::Testing
