#pragma once

#include <QorCore/FileSystem.h>
#include <QorCore/Stream.h>

#include <optional>
#include <string>

namespace Qor::Core {

/// A file that is read and written at two independent positions. Nothing is buffered: every call goes to the system,
/// with the caller's memory, in as few steps as the system allows; put a buffered stream in front for small pieces.
///
/// Every failure is an `IOError` whose text says what was attempted and what the system answered, with the variables
/// "File" (the full path) and "System error" (the number, where the system was asked).
///
/// Thread rule: a stream belongs to one thread at a time.
class QOR_CORE_API BinaryFileStream final : public BinaryInputStream, public BinaryOutputStream {
public:
    BinaryFileStream();
    /// Closes the file; what that may answer is dropped.
    ~BinaryFileStream() override;

    /// Opens a file, with both positions at 0. `openMode` 0: it must exist; 1: it is created when missing; 2: the same,
    /// and its content is discarded; 3 and any other: it is created and must not exist. Read-only opening never creates
    /// or truncates: it fails with 2 and 3, and when the file is missing. Writable opening is exclusive on systems
    /// that know this, read-only opening shares. Closes what was open before. Returns false when the file cannot be
    /// opened, and raises nothing then.
    bool Open(const std::string& fileName, bool readOnly, int openMode);
    /// Closes the file, if one is open. It is closed even when this raises `IOError`.
    void Close();

    bool IsOpen() const { return m_handle != InvalidFileHandle; }
    bool IsReadOnly() const { return m_readOnly; }
    /// The full path of the file that is, or was, open.
    const PathName& GetPath() const { return m_path; }

    /// Bytes of the file, as the system sees it now.
    std::uint64_t GetSize() const;
    /// Where the next byte is read.
    std::uint64_t GetReadPosition() const { return m_readPosition; }
    void SetReadPosition(std::uint64_t position) { m_readPosition = position; }
    /// Where the next byte is written. A position behind the end is allowed; a gap reads as zeros.
    std::uint64_t GetPosition() const { return m_writePosition; }
    void SetWritePosition(std::uint64_t position) { m_writePosition = position; }

    /// Cuts or extends the file to the write position.
    void SetEndOfFile();
    /// Brings everything that was written to the medium. When this fails, what the medium holds is not known: a
    /// second attempt that succeeds proves nothing, the content must be written again.
    void Sync();

protected:
    std::uint64_t DoRead(void* destination, std::uint64_t size) override;
    std::uint64_t DoSkip(std::uint64_t size) override;
    std::optional<std::uint64_t> DoBytesLeft() const override;
    void DoWrite(const void* source, std::uint64_t size) override;

private:
    friend class SafeFileWriter;
    friend class SafeSave;

    FileStatus OpenFile(const PathName& path, const FileOpening& opening);
    FileStatus CloseFile();
    FileStatus Reopen(const PathName& path);
    FileStatus Reserve(std::uint64_t size);
    void RequireOpen(bool forWriting) const;
    std::uint64_t ReadSome(std::uint64_t position, void* destination, std::uint64_t size);
    void WriteAt(std::uint64_t position, const void* source, std::uint64_t size);
    void SetSize(std::uint64_t size);
    void NoteIdentity();
    void MoveToEnd();
    void TakeOver(BinaryFileStream& other);

    PathName m_path;
    FileHandle m_handle = InvalidFileHandle;
    bool m_readOnly = false;
    bool m_isRegular = true;
    std::uint64_t m_readPosition = 0;
    std::uint64_t m_writePosition = 0;
    /// The size when it was last looked at or changed here: readers ask for the bytes left before each string.
    std::uint64_t m_knownSize = 0;
    /// The file at the last opening or saving, empty when that is not known.
    std::optional<FileInfo> m_identity;
    bool m_changedHere = false;
    bool m_hasWarnedInPlace = false;
};

} // namespace Qor::Core
