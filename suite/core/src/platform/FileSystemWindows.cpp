#include "../NativePath.h"

#include <QorCore/FileSystem.h>

#include <algorithm>
#include <string>
#include <windows.h>

namespace Qor::Core {

namespace {

constexpr std::uint64_t MaxTransfer = 0x7ffff000;
// Some SDKs lack its name.
constexpr DWORD DiskQuotaExceeded = 1295;

FileStatus StatusOf(DWORD number) {
    const auto systemError = static_cast<std::int32_t>(number);
    switch (number) {
    case ERROR_SUCCESS:
        return {};
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
        return {eFILE_MISSING, systemError};
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
        return {eFILE_EXISTS, systemError};
    case ERROR_ACCESS_DENIED:
    case ERROR_WRITE_PROTECT:
        return {eFILE_DENIED, systemError};
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
    case DiskQuotaExceeded:
        return {eFILE_NO_SPACE, systemError};
    case ERROR_IO_DEVICE:
    case ERROR_CRC:
        return {eFILE_IO, systemError};
    case ERROR_NOT_SAME_DEVICE:
        return {eFILE_CANNOT_REPLACE, systemError};
    default:
        return {eFILE_OTHER, systemError};
    }
}

FileStatus StatusIf(BOOL ok) { return StatusOf(ok ? ERROR_SUCCESS : GetLastError()); }

HANDLE Raw(FileHandle handle) { return reinterpret_cast<HANDLE>(handle); }

/// The name for wide calls. Long ones need the prefix that lifts the limit of 260 characters.
std::wstring Wide(const PathName& path) {
    constexpr std::size_t longest = 240; // directories admit fewer characters than files
    std::filesystem::path native = ToNative(path);
    native.make_preferred();
    const std::wstring& text = native.native();
    if (text.size() < longest || !native.is_absolute() || text.starts_with(L"\\\\?\\"))
        return text;
    return text.starts_with(L"\\\\") ? L"\\\\?\\UNC\\" + text.substr(2) : L"\\\\?\\" + text;
}

/// A handle that closes itself, for looking at a name.
class Lookup {
public:
    explicit Lookup(const PathName& path)
        : m_handle(CreateFileW(Wide(path).c_str(), FILE_READ_ATTRIBUTES,
                               FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                               FILE_FLAG_BACKUP_SEMANTICS, nullptr)) {}
    Lookup(const Lookup&) = delete;
    Lookup& operator=(const Lookup&) = delete;
    ~Lookup() {
        if (IsOpen())
            CloseHandle(m_handle);
    }

    bool IsOpen() const { return m_handle != INVALID_HANDLE_VALUE; }
    HANDLE Get() const { return m_handle; }

private:
    HANDLE m_handle;
};

FileStatus Describe(HANDLE handle, FileInfo& info) {
    const auto join = [](DWORD high, DWORD low) { return std::uint64_t{high} << 32 | low; };
    info = {};
    if (GetFileType(handle) != FILE_TYPE_DISK) {
        info.kind = eFILE_SPECIAL;
        info.linkCount = 1;
        return {};
    }
    BY_HANDLE_FILE_INFORMATION raw = {};
    if (!GetFileInformationByHandle(handle, &raw))
        return StatusOf(GetLastError());
    info.device = raw.dwVolumeSerialNumber;
    info.inode = join(raw.nFileIndexHigh, raw.nFileIndexLow);
    info.size = join(raw.nFileSizeHigh, raw.nFileSizeLow);
    info.modificationTime =
        static_cast<std::int64_t>(join(raw.ftLastWriteTime.dwHighDateTime, raw.ftLastWriteTime.dwLowDateTime));
    info.linkCount = raw.nNumberOfLinks;
    info.kind = (raw.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? eFILE_DIRECTORY : eFILE_REGULAR;
    return {};
}

OVERLAPPED At(std::uint64_t position) {
    OVERLAPPED at = {};
    at.Offset = static_cast<DWORD>(position & 0xffffffffu);
    at.OffsetHigh = static_cast<DWORD>(position >> 32);
    return at;
}

bool Exists(const std::wstring& path) { return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES; }

/// One attempt. `ReplaceFileW` keeps access rights, attributes and streams of the file that is replaced; with some of
/// its failures that file stands under the backup's name only, and without a backup's name it would be gone.
DWORD ReplaceOnce(const std::wstring& from, const std::wstring& to) {
    constexpr DWORD ignoreForeignRights =
        0x00000002 | 0x00000004; // REPLACEFILE_IGNORE_MERGE_ERRORS, _IGNORE_ACL_ERRORS
    if (Exists(to)) {
        const std::wstring backup = from + L".old";
        if (ReplaceFileW(to.c_str(), from.c_str(), backup.c_str(), ignoreForeignRights, nullptr, nullptr)) {
            DeleteFileW(backup.c_str());
            return ERROR_SUCCESS;
        }
        const DWORD error = GetLastError();
        if (Exists(backup) && !Exists(to))
            MoveFileExW(backup.c_str(), to.c_str(), MOVEFILE_WRITE_THROUGH);
        if (error != ERROR_NOT_SUPPORTED && error != ERROR_INVALID_FUNCTION && error != ERROR_CALL_NOT_IMPLEMENTED)
            return error;
    }
    const DWORD how = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH;
    return MoveFileExW(from.c_str(), to.c_str(), how) ? ERROR_SUCCESS : GetLastError();
}

class NativeFileSystem final : public FileSystem {
public:
    bool ReplacesOpenFiles() const override { return false; }

    FileStatus Open(const PathName& path, const FileOpening& opening, FileHandle& handle) override {
        const DWORD access = GENERIC_READ | (opening.write ? GENERIC_WRITE : 0);
        // Readers may lose the name under their handle, so that they do not block a save elsewhere.
        const DWORD sharing = opening.write ? 0 : FILE_SHARE_READ | FILE_SHARE_DELETE;
        const DWORD disposition = !opening.create ? OPEN_EXISTING : opening.exclusive ? CREATE_NEW : OPEN_ALWAYS;
        handle = reinterpret_cast<FileHandle>(
            CreateFileW(Wide(path).c_str(), access, sharing, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr));
        const FileStatus status = StatusIf(handle != InvalidFileHandle);
        // CREATE_ALWAYS would refuse hidden files and drop attributes.
        return status.IsOk() && opening.truncate ? Truncate(handle) : status;
    }

    FileStatus Close(FileHandle handle) override { return StatusIf(CloseHandle(Raw(handle))); }

    FileStatus Read(FileHandle handle, std::uint64_t position, void* destination, std::uint64_t size,
                    std::uint64_t& done) override {
        OVERLAPPED at = At(position);
        DWORD transferred = 0;
        const DWORD piece = static_cast<DWORD>(std::min(size, MaxTransfer));
        const FileStatus status = StatusIf(ReadFile(Raw(handle), destination, piece, &transferred, &at));
        done = transferred;
        const bool atEnd = status.systemError == ERROR_HANDLE_EOF || status.systemError == ERROR_BROKEN_PIPE;
        return atEnd ? FileStatus{} : status;
    }

    FileStatus Write(FileHandle handle, std::uint64_t position, const void* source, std::uint64_t size,
                     std::uint64_t& done) override {
        OVERLAPPED at = At(position);
        DWORD transferred = 0;
        const DWORD piece = static_cast<DWORD>(std::min(size, MaxTransfer));
        const FileStatus status = StatusIf(WriteFile(Raw(handle), source, piece, &transferred, &at));
        done = transferred;
        return status;
    }

    FileStatus SetSize(FileHandle handle, std::uint64_t size) override {
        FILE_END_OF_FILE_INFO end = {};
        end.EndOfFile.QuadPart = static_cast<LONGLONG>(size);
        return StatusIf(SetFileInformationByHandle(Raw(handle), FileEndOfFileInfo, &end, sizeof end));
    }

    FileStatus Reserve(FileHandle handle, std::uint64_t size) override {
        FileInfo info;
        // An allocation below the size would cut the file.
        if (!Describe(Raw(handle), info).IsOk() || size <= info.size)
            return {};
        FILE_ALLOCATION_INFO room = {};
        room.AllocationSize.QuadPart = static_cast<LONGLONG>(size);
        const FileStatus status =
            StatusIf(SetFileInformationByHandle(Raw(handle), FileAllocationInfo, &room, sizeof room));
        return status.error == eFILE_NO_SPACE || status.error == eFILE_IO ? status : FileStatus{};
    }

    FileStatus Sync(FileHandle handle) override { return StatusIf(FlushFileBuffers(Raw(handle))); }

    FileStatus GetInfo(FileHandle handle, FileInfo& info) override { return Describe(Raw(handle), info); }

    FileStatus GetInfo(const PathName& path, FileInfo& info) override {
        info = {};
        const Lookup lookup(path);
        return lookup.IsOpen() ? Describe(lookup.Get(), info) : StatusOf(GetLastError());
    }

    // `Replace` keeps those of the file that is replaced.
    FileStatus CopyAttributes(FileHandle, FileHandle) override { return {}; }

    FileStatus ResolveLinks(const PathName& path, PathName& target) override {
        target = path;
        const DWORD attributes = GetFileAttributesW(Wide(path).c_str());
        if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0)
            return {};
        const Lookup lookup(path);
        if (!lookup.IsOpen())
            return StatusOf(GetLastError());
        std::wstring name(GetFinalPathNameByHandleW(lookup.Get(), nullptr, 0, FILE_NAME_NORMALIZED), L'\0');
        const DWORD size =
            GetFinalPathNameByHandleW(lookup.Get(), name.data(), static_cast<DWORD>(name.size()), FILE_NAME_NORMALIZED);
        if (size == 0 || size >= name.size())
            return StatusOf(size == 0 ? GetLastError() : ERROR_INSUFFICIENT_BUFFER);
        name.resize(size);
        target = FromNative(std::filesystem::path(name));
        return {};
    }

    FileStatus Replace(const PathName& from, const PathName& to) override {
        constexpr int attempts = 4;
        constexpr DWORD pauseMilliseconds = 100;
        DWORD error = ERROR_SUCCESS;
        for (int n = 0; n < attempts; ++n) {
            // Virus scanners and indexers hold new files for a moment.
            if (n != 0)
                Sleep(pauseMilliseconds);
            error = ReplaceOnce(Wide(from), Wide(to));
            if (error != ERROR_ACCESS_DENIED && error != ERROR_SHARING_VIOLATION)
                break;
        }
        return StatusOf(error);
    }

    FileStatus Remove(const PathName& path) override { return StatusIf(DeleteFileW(Wide(path).c_str())); }

    // Names are journalled, and `Replace` writes through.
    FileStatus SyncDirectory(const PathName&) override { return {}; }

private:
    FileStatus Truncate(FileHandle handle) {
        const FileStatus status = SetSize(handle, 0);
        if (!status.IsOk())
            Close(handle);
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
