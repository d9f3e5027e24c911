#include "../NativePath.h"

#include <QorCore/FileSystem.h>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <vector>

namespace Qor::Core {

namespace {

// One call of the system transfers at most this much on Linux, and fails beyond it elsewhere.
constexpr std::uint64_t MaxTransfer = 0x7ffff000;
constexpr mode_t PermissionBits = 07777;

FileStatus StatusOf(int number) {
    switch (number) {
    case 0:
        return {};
    case ENOENT:
    case ENOTDIR:
        return {eFILE_MISSING, number};
    case EEXIST:
        return {eFILE_EXISTS, number};
    case EACCES:
    case EPERM:
    case EROFS:
        return {eFILE_DENIED, number};
    case EINTR:
        return {eFILE_INTERRUPTED, number};
    case ENOSPC:
    case EDQUOT:
        return {eFILE_NO_SPACE, number};
    case EIO:
        return {eFILE_IO, number};
    case EXDEV:
    case EBUSY:
    case ETXTBSY:
        return {eFILE_CANNOT_REPLACE, number};
    default:
        return {eFILE_OTHER, number};
    }
}

FileStatus StatusIf(bool ok) { return StatusOf(ok ? 0 : errno); }

int Descriptor(FileHandle handle) { return static_cast<int>(handle); }

void Translate(const struct stat& raw, FileInfo& info) {
    info.device = static_cast<std::uint64_t>(raw.st_dev);
    info.inode = static_cast<std::uint64_t>(raw.st_ino);
    info.size = S_ISREG(raw.st_mode) ? static_cast<std::uint64_t>(raw.st_size) : 0;
    info.modificationTime = std::int64_t{raw.st_mtim.tv_sec} * 1'000'000'000 + raw.st_mtim.tv_nsec;
    info.linkCount = static_cast<std::uint64_t>(raw.st_nlink);
    info.kind = S_ISREG(raw.st_mode) ? eFILE_REGULAR : S_ISDIR(raw.st_mode) ? eFILE_DIRECTORY : eFILE_SPECIAL;
}

// Access control lists are among them. What the file system does not know or allow stays behind.
void CopyExtendedAttributes(int from, int to) {
    const ssize_t listSize = flistxattr(from, nullptr, 0);
    if (listSize <= 0)
        return;
    std::vector<char> names(static_cast<std::size_t>(listSize) + 1);
    const ssize_t used = flistxattr(from, names.data(), names.size() - 1);
    std::vector<char> value;
    for (const char* name = names.data(); name < names.data() + used;
         name += std::char_traits<char>::length(name) + 1) {
        const ssize_t size = fgetxattr(from, name, nullptr, 0);
        if (size < 0)
            continue;
        value.resize(static_cast<std::size_t>(size));
        if (fgetxattr(from, name, value.data(), value.size()) == size)
            static_cast<void>(fsetxattr(to, name, value.data(), value.size(), 0));
    }
}

class NativeFileSystem final : public FileSystem {
public:
    bool ReplacesOpenFiles() const override { return true; }

    FileStatus Open(const PathName& path, const FileOpening& opening, FileHandle& handle) override {
        int flags = O_CLOEXEC | (opening.write ? O_RDWR : O_RDONLY);
        if (opening.create)
            flags |= O_CREAT | (opening.exclusive ? O_EXCL : 0);
        if (opening.truncate)
            flags |= O_TRUNC;
        handle = ::open(path.ToString().c_str(), flags, opening.ownerOnly ? 0600 : 0666);
        return StatusIf(handle >= 0);
    }

    FileStatus Close(FileHandle handle) override { return StatusIf(::close(Descriptor(handle)) == 0); }

    FileStatus Read(FileHandle handle, std::uint64_t position, void* destination, std::uint64_t size,
                    std::uint64_t& done) override {
        const auto piece = static_cast<std::size_t>(std::min(size, MaxTransfer));
        ssize_t result = ::pread(Descriptor(handle), destination, piece, static_cast<off_t>(position));
        if (result < 0 && errno == ESPIPE)
            result = ::read(Descriptor(handle), destination, piece);
        done = result > 0 ? static_cast<std::uint64_t>(result) : 0;
        return StatusIf(result >= 0);
    }

    FileStatus Write(FileHandle handle, std::uint64_t position, const void* source, std::uint64_t size,
                     std::uint64_t& done) override {
        const auto piece = static_cast<std::size_t>(std::min(size, MaxTransfer));
        ssize_t result = ::pwrite(Descriptor(handle), source, piece, static_cast<off_t>(position));
        if (result < 0 && errno == ESPIPE)
            result = ::write(Descriptor(handle), source, piece);
        done = result > 0 ? static_cast<std::uint64_t>(result) : 0;
        return StatusIf(result >= 0);
    }

    FileStatus SetSize(FileHandle handle, std::uint64_t size) override {
        return StatusIf(::ftruncate(Descriptor(handle), static_cast<off_t>(size)) == 0);
    }

    FileStatus Reserve(FileHandle handle, std::uint64_t size) override {
#if defined(FALLOC_FL_KEEP_SIZE)
        if (size != 0 && ::fallocate(Descriptor(handle), FALLOC_FL_KEEP_SIZE, 0, static_cast<off_t>(size)) != 0)
            return StatusOf(errno == EOPNOTSUPP || errno == ENOSYS || errno == EINVAL ? 0 : errno);
#else
        static_cast<void>(handle);
        static_cast<void>(size);
#endif
        return {};
    }

    FileStatus Sync(FileHandle handle) override {
        // Pipes and terminals answer EINVAL: they have no medium.
        return StatusIf(::fsync(Descriptor(handle)) == 0 || errno == EINVAL);
    }

    FileStatus GetInfo(FileHandle handle, FileInfo& info) override {
        struct stat raw = {};
        const FileStatus status = StatusIf(::fstat(Descriptor(handle), &raw) == 0);
        Translate(raw, info);
        return status;
    }

    FileStatus GetInfo(const PathName& path, FileInfo& info) override {
        struct stat raw = {};
        const FileStatus status = StatusIf(::stat(path.ToString().c_str(), &raw) == 0);
        Translate(raw, info);
        return status;
    }

    FileStatus CopyAttributes(FileHandle from, FileHandle to) override {
        struct stat source = {};
        if (::fstat(Descriptor(from), &source) != 0)
            return StatusOf(errno);
        mode_t mode = source.st_mode & PermissionBits;
        const bool ownerKept = ::fchown(Descriptor(to), source.st_uid, static_cast<gid_t>(-1)) == 0;
        const bool groupKept = ::fchown(Descriptor(to), static_cast<uid_t>(-1), source.st_gid) == 0;
        CopyExtendedAttributes(Descriptor(from), Descriptor(to));
        // Another group must not gain what the former group was allowed, nor another owner run it as himself.
        if (!groupKept)
            mode = (mode & ~static_cast<mode_t>(S_IRWXG | S_ISGID)) | ((mode & S_IRWXO) << 3);
        if (!ownerKept)
            mode &= ~static_cast<mode_t>(S_ISUID);
        // File systems without permission bits refuse to set them.
        return StatusIf(::fchmod(Descriptor(to), mode) == 0 || errno == EPERM || errno == EOPNOTSUPP);
    }

    FileStatus ResolveLinks(const PathName& path, PathName& target) override {
        constexpr int maxLinks = 40;
        std::filesystem::path current = ToNative(path);
        for (int n = 0; n < maxLinks; ++n) {
            std::error_code error;
            const auto link = std::filesystem::read_symlink(current, error);
            // EINVAL: not a link.
            if (error.value() == EINVAL || error.value() == ENOENT) {
                target = FromNative(current);
                return {};
            }
            if (error)
                return StatusOf(error.value());
            current = current.parent_path() / link;
        }
        return StatusOf(ELOOP);
    }

    FileStatus Replace(const PathName& from, const PathName& to) override {
        return StatusIf(::rename(from.ToString().c_str(), to.ToString().c_str()) == 0);
    }

    FileStatus Remove(const PathName& path) override { return StatusIf(::unlink(path.ToString().c_str()) == 0); }

    FileStatus SyncDirectory(const PathName& directory) override {
        const int descriptor = ::open(directory.ToString().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        // A directory may admit new names and still not be read; then there is nothing to be done.
        if (descriptor < 0)
            return StatusOf(errno == EACCES || errno == EPERM ? 0 : errno);
        const FileStatus status = StatusIf(::fsync(descriptor) == 0 || errno == EINVAL);
        ::close(descriptor);
        return status;
    }
};

} // namespace

FileSystem& FileSystem::Native() {
    // Never destroyed: streams in static objects outlive main().
    static auto* const native = new NativeFileSystem;
    return *native;
}

} // namespace Qor::Core
