#pragma once

#include <QorCore/Export.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>

namespace Qor::Core {

/// Source of bytes. A stream shows a window of bytes that can be copied without a call; behind it stands one virtual
/// operation, `DoRead`, that is asked only when the window is empty. Small reads are therefore inlined copies, and a
/// block larger than any buffer goes straight to its destination.
///
/// Thread rule: a stream belongs to one thread at a time.
class QOR_CORE_API BinaryInputStream {
public:
    BinaryInputStream(const BinaryInputStream&) = delete;
    BinaryInputStream& operator=(const BinaryInputStream&) = delete;
    virtual ~BinaryInputStream();

    /// Copies `size` bytes to `destination` and returns how many there were: fewer only at the end of the stream.
    /// Raises `IOError` when the medium fails.
    std::uint64_t Read(void* destination, std::uint64_t size) {
        if (size <= WindowSize() && size != 0) {
            std::memcpy(destination, m_cursor, static_cast<std::size_t>(size));
            m_cursor += size;
            return size;
        }
        return ReadBeyondWindow(destination, size);
    }

    /// Passes over `size` bytes and returns how many there were: fewer only at the end of the stream.
    std::uint64_t Skip(std::uint64_t size);

    /// No more than this many bytes are left; exact for memory, files and streams bounded over them. Empty where the
    /// stream does not know. Readers check sizes that they find in the data against it before they allocate.
    std::optional<std::uint64_t> BytesLeft() const;

protected:
    BinaryInputStream() = default;

    /// Called with an empty window and `size` > 0. Delivers up to `size` bytes to `destination`, at least one unless
    /// the stream has ended, and may set a new window onto the bytes that follow. When it raises, it has delivered
    /// nothing.
    virtual std::uint64_t DoRead(void* destination, std::uint64_t size) = 0;
    /// Called with an empty window; the default reads and drops.
    virtual std::uint64_t DoSkip(std::uint64_t size);
    /// No more than this many bytes are behind the window; empty where that is not known.
    virtual std::optional<std::uint64_t> DoBytesLeft() const;

    std::uint64_t WindowSize() const { return static_cast<std::uint64_t>(m_windowEnd - m_cursor); }
    void SetWindow(const std::byte* begin, const std::byte* end) {
        m_cursor = begin;
        m_windowEnd = end;
    }
    const std::byte* WindowBegin() const { return m_cursor; }

private:
    friend class Base64DecoderStream;
    friend class BoundedInputStream;
    friend class BufferedInputStream;

    std::uint64_t ReadBeyondWindow(void* destination, std::uint64_t size);
    // The window, or when that is empty whatever one call behind it gives: streams over this one stay exact when the
    // next call raises.
    std::uint64_t ReadSome(void* destination, std::uint64_t size);
    std::uint64_t SkipSome(std::uint64_t size);

    const std::byte* m_cursor = nullptr;
    const std::byte* m_windowEnd = nullptr;
};

/// Sink of bytes, the mirror image of `BinaryInputStream`: what fits the window is an inlined copy, everything else
/// one call of `DoWrite`.
///
/// Thread rule: a stream belongs to one thread at a time.
class QOR_CORE_API BinaryOutputStream {
public:
    BinaryOutputStream(const BinaryOutputStream&) = delete;
    BinaryOutputStream& operator=(const BinaryOutputStream&) = delete;
    virtual ~BinaryOutputStream();

    /// Takes all `size` bytes. Raises `IOError` when the medium fails or has no room.
    void Write(const void* source, std::uint64_t size) {
        if (size <= WindowSize() && size != 0) {
            std::memcpy(m_cursor, source, static_cast<std::size_t>(size));
            m_cursor += size;
        } else if (size != 0) {
            DoWrite(source, size);
        }
    }

    /// Writes `size` zero bytes.
    void WriteZeros(std::uint64_t size);

    /// Hands everything that was written to the medium behind this stream.
    void Flush() { DoFlush(); }

protected:
    BinaryOutputStream() = default;

    /// Called with `size` > 0 when the block does not fit the window: takes what stands in the window, then the block,
    /// and may set a new window.
    virtual void DoWrite(const void* source, std::uint64_t size) = 0;
    virtual void DoFlush();

    std::uint64_t WindowSize() const { return static_cast<std::uint64_t>(m_windowEnd - m_cursor); }
    void SetWindow(std::byte* begin, std::byte* end) {
        m_cursor = begin;
        m_windowEnd = end;
    }
    std::byte* WindowBegin() const { return m_cursor; }

private:
    friend class BoundedOutputStream;

    std::byte* m_cursor = nullptr;
    std::byte* m_windowEnd = nullptr;
};

} // namespace Qor::Core
