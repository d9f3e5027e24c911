#include <QorCore/BufferedStreams.h>

#include <algorithm>

namespace Qor::Core {

namespace {

// Not cleared: every byte is written before it is read.
std::unique_ptr<std::byte[]> AllocateBuffer(std::uint64_t size) {
    return std::make_unique_for_overwrite<std::byte[]>(static_cast<std::size_t>(size));
}

} // namespace

BufferedInputStream::BufferedInputStream(BinaryInputStream& source, std::uint64_t bufferSize)
    : m_source(source), m_bufferSize(std::max<std::uint64_t>(bufferSize, 1)), m_buffer(AllocateBuffer(m_bufferSize)) {}

BufferedInputStream::~BufferedInputStream() = default;

std::uint64_t BufferedInputStream::DoRead(void* destination, std::uint64_t size) {
    SetWindow(nullptr, nullptr);
    if (size >= m_bufferSize)
        return m_source.ReadSome(destination, size);
    const std::uint64_t filled = m_source.ReadSome(m_buffer.get(), m_bufferSize);
    const std::uint64_t taken = std::min(size, filled);
    std::memcpy(destination, m_buffer.get(), static_cast<std::size_t>(taken));
    SetWindow(m_buffer.get() + taken, m_buffer.get() + filled);
    return taken;
}

std::uint64_t BufferedInputStream::DoSkip(std::uint64_t size) { return m_source.SkipSome(size); }

std::optional<std::uint64_t> BufferedInputStream::DoBytesLeft() const { return m_source.BytesLeft(); }

BufferedOutputStream::BufferedOutputStream(BinaryOutputStream& target, std::uint64_t bufferSize)
    : m_target(target), m_bufferSize(std::max<std::uint64_t>(bufferSize, 1)), m_buffer(AllocateBuffer(m_bufferSize)) {
    SetWindow(m_buffer.get(), m_buffer.get() + m_bufferSize);
}

BufferedOutputStream::~BufferedOutputStream() = default;

void BufferedOutputStream::Drain() {
    const auto gathered = static_cast<std::uint64_t>(WindowBegin() - m_buffer.get());
    SetWindow(m_buffer.get(), m_buffer.get() + m_bufferSize);
    m_target.Write(m_buffer.get(), gathered);
}

void BufferedOutputStream::DoWrite(const void* source, std::uint64_t size) {
    Drain();
    if (size >= m_bufferSize)
        m_target.Write(source, size);
    else
        Write(source, size);
}

void BufferedOutputStream::DoFlush() {
    Drain();
    m_target.Flush();
}

} // namespace Qor::Core
