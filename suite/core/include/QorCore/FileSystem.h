#pragma once

#include <QorCore/PathName.h>

#include <cstdint>

namespace Qor::Core {

/// What an operation on files may answer, as far as somebody decides by it.
enum EFileError : std::uint32_t {
    eFILE_OK = 0,
    eFILE_MISSING,        ///< no such file or directory
    eFILE_EXISTS,         ///< exclusive creation of what is there already
    eFILE_DENIED,         ///< no permission, or a medium that cannot be written
    eFILE_INTERRUPTED,    ///< a signal came first; to be repeated
    eFILE_NO_SPACE,       ///< medium or quota full
    eFILE_IO,             ///< the medium failed
    eFILE_CANNOT_REPLACE, ///< the name cannot be given to another file: busy, mount point, other device
    eFILE_OTHER
};

/// The answer of an operation on files, with the system's own number.
struct FileStatus {
    EFileError error = eFILE_OK;
    std::int32_t systemError = 0;

    bool IsOk() const { return error == eFILE_OK; }
};

/// An open file, in the system's numbering.
using FileHandle = std::intptr_t;
constexpr FileHandle InvalidFileHandle = -1;

/// How to open a file. Always for reading; the file must exist unless `create` is set.
struct FileOpening {
    bool write = false;
    bool create = false;
    bool exclusive = false; ///< with `create`: fails when the name is taken, even by a symbolic link
    bool truncate = false;
    bool ownerOnly = false; ///< with `create`: nobody else may read or write the new file
};

enum EFileKind : std::uint32_t { eFILE_REGULAR = 0, eFILE_DIRECTORY, eFILE_SPECIAL };

/// What identifies a file and its content.
struct FileInfo {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::uint64_t size = 0;
    std::int64_t modificationTime = 0; ///< in the finest unit that the system has
    std::uint64_t linkCount = 0;
    EFileKind kind = eFILE_REGULAR;

    bool IsSameFile(const FileInfo& other) const { return device == other.device && inode == other.inode; }
    bool operator==(const FileInfo&) const = default;
};

/// The seam between the library and the file operations of the system: one virtual call for each call of the system
/// that streams and saving make. Implementations do what they are asked once: they report interruptions and short
/// transfers instead of hiding them, and they raise nothing.
///
/// Thread rule: all operations may be called by any thread, several at once.
class QOR_CORE_API FileSystem {
public:
    /// The operating system's files.
    static FileSystem& Native();
    /// What all streams of the process use: the native one, unless a test has put another in its place.
    static FileSystem& Current();
    class ScopedReplacement;

    FileSystem(const FileSystem&) = delete;
    FileSystem& operator=(const FileSystem&) = delete;
    virtual ~FileSystem();

    /// Whether `Replace` works while both files are open and leaves them open. Otherwise they are closed before.
    virtual bool ReplacesOpenFiles() const = 0;

    /// A file that is opened for writing is exclusive where the system knows that.
    virtual FileStatus Open(const PathName& path, const FileOpening& opening, FileHandle& handle) = 0;
    /// The handle is gone, whatever the answer.
    virtual FileStatus Close(FileHandle handle) = 0;
    /// Transfers up to `size` bytes at `position` and tells how many; reading 0 means the end of the file.
    virtual FileStatus Read(FileHandle handle, std::uint64_t position, void* destination, std::uint64_t size,
                            std::uint64_t& done) = 0;
    virtual FileStatus Write(FileHandle handle, std::uint64_t position, const void* source, std::uint64_t size,
                             std::uint64_t& done) = 0;
    virtual FileStatus SetSize(FileHandle handle, std::uint64_t size) = 0;
    /// Makes sure that a file of up to `size` bytes finds room, without changing size or content. Succeeds where the
    /// system offers no such thing.
    virtual FileStatus Reserve(FileHandle handle, std::uint64_t size) = 0;
    /// Brings content and attributes to the medium.
    virtual FileStatus Sync(FileHandle handle) = 0;
    virtual FileStatus GetInfo(FileHandle handle, FileInfo& info) = 0;
    /// Follows symbolic links.
    virtual FileStatus GetInfo(const PathName& path, FileInfo& info) = 0;
    /// Gives permission bits to another file, and owner and extended attributes as far as allowed. Whom the owner
    /// did not let in is not let in afterwards.
    virtual FileStatus CopyAttributes(FileHandle from, FileHandle to) = 0;
    /// The name behind symbolic links, which need not exist.
    virtual FileStatus ResolveLinks(const PathName& path, PathName& target) = 0;
    /// Gives `from` the name `to` in one step.
    virtual FileStatus Replace(const PathName& from, const PathName& to) = 0;
    virtual FileStatus Remove(const PathName& path) = 0;
    /// Brings the names in a directory to the medium, where the system can.
    virtual FileStatus SyncDirectory(const PathName& directory) = 0;

protected:
    FileSystem() = default;
};

/// Puts another file system in the place of the current one for the whole process, as long as it lives. Files may be
/// open across the change, so the replacement passes on to the one before. For tests.
class QOR_CORE_API FileSystem::ScopedReplacement {
public:
    explicit ScopedReplacement(FileSystem& substitute);
    ScopedReplacement(const ScopedReplacement&) = delete;
    ScopedReplacement& operator=(const ScopedReplacement&) = delete;
    ~ScopedReplacement();

private:
    FileSystem* m_former;
};

} // namespace Qor::Core
