#include "FileError.h"

#include <QorCore/BufferedStreams.h>
#include <QorCore/MemoryStreams.h>
#include <QorCore/SafeFileWriter.h>
#include <QorCore/System.h>

#include <algorithm>
#include <atomic>
#include <charconv>
#include <span>
#include <string_view>
#include <vector>

namespace Qor::Core {

FileChangedOnDisk::~FileChangedOnDisk() = default;
FileSavedInPlace::~FileSavedInPlace() = default;

namespace {

constexpr std::string_view TemporarySuffix = ".tivortmp";
constexpr const char* Category = "Qor.Core.SafeFileWriter";

std::atomic<std::uint64_t> nextTemporary{1};

/// ".<name>."; a long name is cut, because the system limits the whole.
std::string TemporaryPrefix(const PathName& target) {
    constexpr std::size_t longest = 200;
    std::string name = target.GetFileName();
    if (name.size() > longest) {
        std::size_t end = longest;
        while (end > 0 && (static_cast<unsigned char>(name[end]) & 0xC0u) == 0x80u)
            --end;
        name.resize(end);
    }
    return "." + name + ".";
}

/// The number of the process that made the temporary file of that name for a file with that prefix, or 0.
std::uint64_t ProcessOfTemporary(std::string_view name, std::string_view prefix) {
    if (!name.starts_with(prefix))
        return 0;
    name.remove_prefix(prefix.size());
    std::uint64_t process = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), process);
    return error == std::errc() && end != name.data() + name.size() && *end == '-' ? process : 0;
}

template <class W>
void Warn(W warning, const PathName& path, CodeContext context) {
    warning.AddVariable("File", path.ToString());
    Warning::RaiseWarning(std::move(warning), std::move(context), Category);
}

} // namespace

/// One save: the steps share the target and what stands there now.
class SafeSave {
public:
    /// `stream` has the file of that name open for writing; it is null when the file is not open here.
    SafeSave(PathName path, BinaryFileStream* stream) : m_path(std::move(path)), m_stream(stream) {}
    SafeSave(const SafeSave&) = delete;
    SafeSave& operator=(const SafeSave&) = delete;
    ~SafeSave();

    void Run(const SafeFileWriter::WriteContent& writeContent) {
        FindTarget();
        std::string obstacle = FindObstacle();
        if (obstacle.empty())
            obstacle = CreateTemporary();
        if (obstacle.empty()) {
            SaveBeside(writeContent);
        } else {
            MemoryOutputStream image;
            writeContent(image);
            SaveInPlace(image.GetBytes(), obstacle);
        }
        RemoveStaleTemporaries();
    }

private:
    void FindTarget();
    std::string FindObstacle() const;
    std::string CreateTemporary();
    void SaveBeside(const SafeFileWriter::WriteContent& writeContent);
    FileStatus TakePlace();
    FileStatus TakePlaceOfClosed();
    void SaveInPlace(std::span<const std::byte> image, const std::string& obstacle);
    void WarnIfChanged() const;
    void RemoveStaleTemporaries() const noexcept;

    static std::vector<std::byte> ReadWhole(BinaryFileStream& stream);
    static void ReserveRoom(BinaryFileStream& stream, std::uint64_t size, std::uint64_t formerSize);
    static void Overwrite(BinaryFileStream& stream, std::span<const std::byte> image);
    static bool Restore(BinaryFileStream& stream, std::span<const std::byte> content) noexcept;

    PathName m_path;
    BinaryFileStream* m_stream;
    PathName m_target;
    bool m_exists = false;
    FileInfo m_info;
    BinaryFileStream m_opened;
    /// Has what the name means now open for writing: the caller's stream, or `m_opened`, or null when nothing is there.
    BinaryFileStream* m_current = nullptr;
    BinaryFileStream m_temporary;
    /// Empty as soon as the temporary file has taken the target's place.
    PathName m_temporaryPath;
};

SafeSave::~SafeSave() {
    m_temporary.CloseFile();
    if (!m_temporaryPath.IsEmpty())
        FileSystem::Current().Remove(m_temporaryPath);
}

void SafeSave::FindTarget() {
    FileSystem& files = FileSystem::Current();
    FileStatus status = files.ResolveLinks(m_path, m_target);
    if (status.IsOk())
        status = files.GetInfo(m_target, m_info);
    m_exists = status.IsOk();
    if (!m_exists && status.error != eFILE_MISSING)
        RaiseFileError("look up a file to be saved", m_path, status, QOR_CODE_CONTEXT("SafeFileWriter"));
    FileInfo open;
    if (m_stream != nullptr &&
        (!m_exists || (files.GetInfo(m_stream->m_handle, open).IsOk() && open.IsSameFile(m_info))))
        m_current = m_stream;
    if (!m_exists || m_current != nullptr)
        return;
    // Replacing needs no right to write the file itself, so that right is asked for here.
    FileOpening opening;
    opening.write = true;
    status = m_opened.OpenFile(m_target, opening);
    if (!status.IsOk())
        RaiseFileError("open a file to be saved", m_path, status, QOR_CODE_CONTEXT("SafeFileWriter"));
    m_current = &m_opened;
}

std::string SafeSave::FindObstacle() const {
    if (m_exists && m_info.kind != eFILE_REGULAR)
        return "it is not a regular file";
    if (m_exists && m_info.linkCount > 1)
        return "it has several hard links";
    return {};
}

std::string SafeSave::CreateTemporary() {
    constexpr int maxAttempts = 100;
    FileOpening opening;
    opening.write = opening.create = opening.exclusive = true;
    opening.ownerOnly = m_current != nullptr;
    const std::string prefix = TemporaryPrefix(m_target) + std::to_string(System::GetProcessNumber()) + "-";
    FileStatus status{eFILE_EXISTS, 0};
    for (int n = 0; status.error == eFILE_EXISTS && n < maxAttempts; ++n) {
        const std::string number = std::to_string(nextTemporary.fetch_add(1, std::memory_order_relaxed));
        const PathName path = m_target.GetDirectory() / (prefix + number + std::string(TemporarySuffix));
        status = m_temporary.OpenFile(path, opening);
        if (status.IsOk())
            m_temporaryPath = path;
    }
    if (status.error == eFILE_DENIED && m_exists)
        return "no file can be created beside it: " + System::DescribeError(status.systemError);
    if (!status.IsOk())
        RaiseFileError("create a temporary file beside a file to be saved", m_path, status,
                       QOR_CODE_CONTEXT("SafeFileWriter"));
    return {};
}

void SafeSave::SaveBeside(const SafeFileWriter::WriteContent& writeContent) {
    constexpr std::uint64_t pages = 16;
    constexpr std::uint64_t leastBuffer = 64 * 1024;
    BufferedOutputStream buffer(m_temporary, std::max(pages * System::GetPageSize(), leastBuffer));
    writeContent(buffer);
    buffer.Flush();
    FileSystem& files = FileSystem::Current();
    FileStatus status;
    if (m_current != nullptr)
        status = files.CopyAttributes(m_current->m_handle, m_temporary.m_handle);
    if (!status.IsOk())
        RaiseFileError("copy the attributes of a file to be saved", m_path, status, QOR_CODE_CONTEXT("SafeFileWriter"));
    m_temporary.Sync();
    WarnIfChanged();
    status = m_stream != nullptr && files.ReplacesOpenFiles() ? TakePlace() : TakePlaceOfClosed();
    if (status.error == eFILE_CANNOT_REPLACE && m_exists)
        return SaveInPlace(ReadWhole(m_temporary),
                           "its name cannot be given to another file: " + System::DescribeError(status.systemError));
    if (!status.IsOk())
        RaiseFileError("give a saved file its name", m_path, status, QOR_CODE_CONTEXT("SafeFileWriter"));
    status = files.SyncDirectory(m_target.GetDirectory());
    if (!status.IsOk())
        RaiseFileError("bring the name of a saved file to the medium", m_path, status,
                       QOR_CODE_CONTEXT("SafeFileWriter"));
}

/// The temporary file's handle becomes the caller's.
FileStatus SafeSave::TakePlace() {
    const FileStatus status = FileSystem::Current().Replace(m_temporaryPath, m_target);
    if (status.IsOk()) {
        m_temporaryPath = PathName();
        m_stream->TakeOver(m_temporary);
    }
    return status;
}

/// Nothing is open while the names change; what the caller had open is opened again.
FileStatus SafeSave::TakePlaceOfClosed() {
    m_temporary.Close();
    if (m_current != nullptr)
        m_current->CloseFile();
    const FileStatus status = FileSystem::Current().Replace(m_temporaryPath, m_target);
    if (status.IsOk())
        m_temporaryPath = PathName();
    else if (status.error == eFILE_CANNOT_REPLACE)
        m_temporary.Reopen(m_temporaryPath);
    if (m_current == nullptr || (status.IsOk() && m_stream == nullptr))
        return status;
    BinaryFileStream& again = status.IsOk() ? *m_stream : *m_current;
    const FileStatus reopened = again.Reopen(m_target);
    if (status.IsOk() && !reopened.IsOk())
        RaiseFileError("open a file again after it was saved completely", m_path, reopened,
                       QOR_CODE_CONTEXT("SafeFileWriter"));
    if (status.IsOk()) {
        again.m_knownSize = m_temporary.m_knownSize;
        again.NoteIdentity();
        again.MoveToEnd();
    }
    return status;
}

std::vector<std::byte> SafeSave::ReadWhole(BinaryFileStream& stream) {
    std::vector<std::byte> content(static_cast<std::size_t>(stream.GetSize()));
    std::size_t done = 0;
    while (done < content.size()) {
        const std::uint64_t more = stream.ReadSome(done, content.data() + done, content.size() - done);
        if (more == 0)
            break;
        done += static_cast<std::size_t>(more);
    }
    content.resize(done);
    return content;
}

void SafeSave::SaveInPlace(std::span<const std::byte> image, const std::string& obstacle) {
    BinaryFileStream& file = *m_current;
    const std::vector<std::byte> former = file.m_isRegular ? ReadWhole(file) : std::vector<std::byte>();
    WarnIfChanged();
    if (m_stream == nullptr || !m_stream->m_hasWarnedInPlace)
        Warn(FileSavedInPlace("The file is written in place, where a crash would damage it, because " + obstacle),
             m_path, QOR_CODE_CONTEXT("SafeFileWriter"));
    if (m_stream != nullptr)
        m_stream->m_hasWarnedInPlace = true;
    if (file.m_isRegular)
        ReserveRoom(file, image.size(), former.size());
    try {
        Overwrite(file, image);
    } catch (IOError& error) {
        if (file.m_isRegular && !Restore(file, former))
            error.AddVariable("Old content", "not restored");
        throw;
    }
    if (m_stream == nullptr)
        return;
    if (m_stream != m_current)
        m_stream->TakeOver(*m_current);
    m_stream->NoteIdentity();
    m_stream->MoveToEnd();
}

/// Makes sure of the room while nothing is written yet.
void SafeSave::ReserveRoom(BinaryFileStream& stream, std::uint64_t size, std::uint64_t formerSize) {
    const FileStatus status = stream.Reserve(size);
    if (status.IsOk())
        return;
    FileSystem::Current().SetSize(stream.m_handle, formerSize); // gives back what was reserved in part
    stream.m_changedHere = true;
    RaiseFileError("reserve room for a file to be saved", stream.GetPath(), status, QOR_CODE_CONTEXT("SafeFileWriter"));
}

void SafeSave::Overwrite(BinaryFileStream& stream, std::span<const std::byte> image) {
    stream.WriteAt(0, image.data(), image.size());
    if (stream.m_isRegular && stream.m_knownSize != image.size())
        stream.SetSize(image.size());
    stream.Sync();
}

bool SafeSave::Restore(BinaryFileStream& stream, std::span<const std::byte> content) noexcept {
    try {
        stream.WriteAt(0, content.data(), content.size());
        stream.SetSize(content.size());
        return true;
    } catch (...) {
        return false;
    }
}

void SafeSave::WarnIfChanged() const {
    if (m_stream == nullptr || !m_stream->m_isRegular || !m_stream->m_identity)
        return;
    FileInfo now;
    const FileStatus status = FileSystem::Current().GetInfo(m_target, now);
    if (!status.IsOk() && status.error != eFILE_MISSING)
        RaiseFileError("look up a file to be saved", m_path, status, QOR_CODE_CONTEXT("SafeFileWriter"));
    FileInfo known = *m_stream->m_identity;
    known.linkCount = now.linkCount; // another name is no other content
    // What was written through the stream itself changed size and time as well.
    const bool same = m_stream->m_changedHere ? known.IsSameFile(now) : known == now;
    if (!status.IsOk() || !same)
        Warn(FileChangedOnDisk("The file was changed, replaced or removed by another program since it was opened or "
                               "saved here; that change is lost now"),
             m_path, QOR_CODE_CONTEXT("SafeFileWriter"));
}

void SafeSave::RemoveStaleTemporaries() const noexcept {
    try {
        const std::string prefix = TemporaryPrefix(m_target);
        std::vector<PathName> candidates;
        System::EnumFiles(m_target.GetDirectory(), "*" + std::string(TemporarySuffix), candidates);
        for (const PathName& candidate : candidates) {
            const std::uint64_t process = ProcessOfTemporary(candidate.GetFileName(), prefix);
            if (process != 0 && !System::IsProcessRunning(process))
                FileSystem::Current().Remove(candidate);
        }
    } catch (...) {
        // The save has succeeded; what cannot be tidied up now is left to the next one.
    }
}

void SafeFileWriter::Save(BinaryFileStream& file, const WriteContent& writeContent) {
    file.RequireOpen(true);
    SafeSave(file.m_path, &file).Run(writeContent);
}

void SafeFileWriter::Save(const PathName& path, const WriteContent& writeContent) {
    SafeSave(path.GetAbsolute(), nullptr).Run(writeContent);
}

} // namespace Qor::Core
