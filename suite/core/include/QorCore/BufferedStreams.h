#pragma once

#include <QorCore/Stream.h>

#include <memory>

namespace Qor::Core {

/// Reads another stream ahead in pieces of `bufferSize` bytes; larger reads pass the buffer by.
class QOR_CORE_API BufferedInputStream final : public BinaryInputStream {
public:
    BufferedInputStream(BinaryInputStream& source, std::uint64_t bufferSize);
    ~BufferedInputStream() override;

protected:
    std::uint64_t DoRead(void* destination, std::uint64_t size) override;
    std::uint64_t DoSkip(std::uint64_t size) override;
    std::optional<std::uint64_t> DoBytesLeft() const override;

private:
    BinaryInputStream& m_source;
    std::uint64_t m_bufferSize;
    std::unique_ptr<std::byte[]> m_buffer;
};

/// Gathers small writes to another stream in a buffer of `bufferSize` bytes; larger blocks pass the buffer by.
/// What was gathered reaches the target at `Flush` only: a buffered stream that is dropped drops its buffer, because a
/// destructor could not report a failing target.
class QOR_CORE_API BufferedOutputStream final : public BinaryOutputStream {
public:
    BufferedOutputStream(BinaryOutputStream& target, std::uint64_t bufferSize);
    ~BufferedOutputStream() override;

protected:
    void DoWrite(const void* source, std::uint64_t size) override;
    void DoFlush() override;

private:
    void Drain();

    BinaryOutputStream& m_target;
    std::uint64_t m_bufferSize;
    std::unique_ptr<std::byte[]> m_buffer;
};

} // namespace Qor::Core
