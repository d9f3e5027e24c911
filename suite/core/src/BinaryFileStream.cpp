#include "FileError.h"

#include <QorCore/BinaryFileStream.h>
#include <QorCore/Message.h>

#include <algorithm>

namespace Qor::Core {

namespace {

// A signal now and then is normal; one before every attempt is not, and must not hang the program.
constexpr int MaxInterruptions = 100;

template <class Call>
FileStatus Insist(Call call) {
    FileStatus status = call();
    for (int n = 0; status.error == eFILE_INTERRUPTED && n < MaxInterruptions; ++n)
        status = call();
    return status;
}

FileOpening OpeningOf(bool readOnly, int openMode) {
    FileOpening opening;
    if (readOnly)
        return opening;
    opening.write = true;
    opening.create = openMode != 0;
    opening.truncate = openMode == 2;
    opening.exclusive = openMode < 0 || openMode > 2;
    return opening;
}

} // namespace

BinaryFileStream::BinaryFileStream() = default;

BinaryFileStream::~BinaryFileStream() { CloseFile(); }

bool BinaryFileStream::Open(const std::string& fileName, bool readOnly, int openMode) {
    CloseFile();
    if (fileName.empty() || (readOnly && openMode != 0 && openMode != 1))
        return false;
    return OpenFile(PathName(fileName).GetAbsolute(), OpeningOf(readOnly, openMode)).IsOk();
}

FileStatus BinaryFileStream::OpenFile(const PathName& path, const FileOpening& opening) {
    FileSystem& files = FileSystem::Current();
    FileStatus status = Insist([&] { return files.Open(path, opening, m_handle); });
    if (!status.IsOk()) {
        m_handle = InvalidFileHandle;
        return status;
    }
    FileInfo info;
    status = files.GetInfo(m_handle, info);
    // Some systems open a directory for reading.
    if (status.IsOk() && info.kind == eFILE_DIRECTORY)
        status.error = eFILE_OTHER;
    if (!status.IsOk()) {
        CloseFile();
        if (opening.exclusive)
            files.Remove(path); // it was made here, a moment ago
        return status;
    }
    m_path = path;
    m_readOnly = !opening.write;
    m_isRegular = info.kind == eFILE_REGULAR;
    m_readPosition = m_writePosition = 0;
    m_knownSize = info.size;
    m_identity = info;
    m_changedHere = m_hasWarnedInPlace = false;
    return status;
}

FileStatus BinaryFileStream::CloseFile() {
    if (!IsOpen())
        return {};
    return FileSystem::Current().Close(std::exchange(m_handle, InvalidFileHandle));
}

/// Opens a file in the place of the one that was just closed; positions stay.
FileStatus BinaryFileStream::Reopen(const PathName& path) {
    FileOpening opening;
    opening.write = true;
    const FileStatus status = Insist([&] { return FileSystem::Current().Open(path, opening, m_handle); });
    if (!status.IsOk())
        m_handle = InvalidFileHandle;
    return status;
}

FileStatus BinaryFileStream::Reserve(std::uint64_t size) {
    return Insist([&] { return FileSystem::Current().Reserve(m_handle, size); });
}

void BinaryFileStream::Close() {
    const FileStatus status = CloseFile();
    if (!status.IsOk())
        RaiseFileError("close a file", m_path, status, QOR_CODE_CONTEXT("BinaryFileStream"));
}

void BinaryFileStream::RequireOpen(bool forWriting) const {
    if (IsOpen() && !(forWriting && m_readOnly))
        return;
    IOError error(IsOpen() ? "Attempt to change a file that was opened for reading only"
                           : "Attempt to use a file that is not open");
    error.AddVariable("File", m_path.ToString());
    Error::RaiseError(std::move(error), QOR_CODE_CONTEXT("BinaryFileStream"), "Qor.Core.File");
}

std::uint64_t BinaryFileStream::GetSize() const {
    RequireOpen(false);
    FileInfo info;
    const FileStatus status = FileSystem::Current().GetInfo(m_handle, info);
    if (!status.IsOk())
        RaiseFileError("learn the size of a file", m_path, status, QOR_CODE_CONTEXT("BinaryFileStream"));
    return info.size;
}

/// One transfer: whoever reads through the base class asks again for the rest.
std::uint64_t BinaryFileStream::ReadSome(std::uint64_t position, void* destination, std::uint64_t size) {
    RequireOpen(false);
    std::uint64_t done = 0;
    const FileStatus status =
        Insist([&] { return FileSystem::Current().Read(m_handle, position, destination, size, done); });
    if (!status.IsOk())
        RaiseFileError(FormatText("read %1% bytes at position %2% of a file", {size, position}), m_path, status,
                       QOR_CODE_CONTEXT("BinaryFileStream"));
    return done;
}

std::uint64_t BinaryFileStream::DoRead(void* destination, std::uint64_t size) {
    const std::uint64_t done = ReadSome(m_readPosition, destination, size);
    m_readPosition += done;
    return done;
}

std::uint64_t BinaryFileStream::DoSkip(std::uint64_t size) {
    if (!m_isRegular)
        return BinaryInputStream::DoSkip(size);
    const std::uint64_t end = GetSize();
    const std::uint64_t done = std::min(size, end - std::min(end, m_readPosition));
    m_readPosition += done;
    return done;
}

std::optional<std::uint64_t> BinaryFileStream::DoBytesLeft() const {
    if (!IsOpen() || !m_isRegular)
        return std::nullopt;
    return m_knownSize - std::min(m_knownSize, m_readPosition);
}

void BinaryFileStream::WriteAt(std::uint64_t position, const void* source, std::uint64_t size) {
    RequireOpen(true);
    FileSystem& files = FileSystem::Current();
    m_changedHere = true;
    for (std::uint64_t total = 0; total < size;) {
        std::uint64_t done = 0;
        const auto* const rest = static_cast<const std::byte*>(source) + total;
        FileStatus status = Insist([&] { return files.Write(m_handle, position + total, rest, size - total, done); });
        if (status.IsOk() && done == 0)
            status.error = eFILE_IO; // nothing taken and nothing said: trying again could last for ever
        if (!status.IsOk())
            RaiseFileError(FormatText("write %1% bytes at position %2% of a file", {size - total, position + total}),
                           m_path, status, QOR_CODE_CONTEXT("BinaryFileStream"));
        total += done;
        m_knownSize = std::max(m_knownSize, position + total);
    }
}

void BinaryFileStream::DoWrite(const void* source, std::uint64_t size) {
    WriteAt(m_writePosition, source, size);
    m_writePosition += size;
}

void BinaryFileStream::SetSize(std::uint64_t size) {
    RequireOpen(true);
    m_changedHere = true;
    const FileStatus status = Insist([&] { return FileSystem::Current().SetSize(m_handle, size); });
    if (!status.IsOk())
        RaiseFileError(FormatText("set the size of a file to %1% bytes", {size}), m_path, status,
                       QOR_CODE_CONTEXT("BinaryFileStream"));
    m_knownSize = size;
}

void BinaryFileStream::SetEndOfFile() { SetSize(m_writePosition); }

void BinaryFileStream::Sync() {
    RequireOpen(false);
    // Asked once, even when interrupted: after a failed attempt the system may forget what it could not write.
    const FileStatus status = FileSystem::Current().Sync(m_handle);
    if (!status.IsOk())
        RaiseFileError("bring a file to the medium", m_path, status, QOR_CODE_CONTEXT("BinaryFileStream"));
}

void BinaryFileStream::NoteIdentity() {
    FileInfo info;
    m_identity = FileSystem::Current().GetInfo(m_handle, info).IsOk() ? std::optional(info) : std::nullopt;
    m_changedHere = false;
}

void BinaryFileStream::MoveToEnd() { m_readPosition = m_writePosition = m_knownSize; }

void BinaryFileStream::TakeOver(BinaryFileStream& other) {
    std::swap(m_handle, other.m_handle);
    m_isRegular = other.m_isRegular;
    m_knownSize = other.m_knownSize;
    NoteIdentity();
    MoveToEnd();
}

} // namespace Qor::Core
