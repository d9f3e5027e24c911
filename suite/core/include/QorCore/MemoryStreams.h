#pragma once

#include <QorCore/Stream.h>

#include <memory>
#include <span>

namespace Qor::Core {

/// Reads bytes that stand in memory. The bytes are not copied: they must outlive the stream.
class QOR_CORE_API MemoryInputStream final : public BinaryInputStream {
public:
    explicit MemoryInputStream(std::span<const std::byte> bytes);
    MemoryInputStream(const void* bytes, std::uint64_t size);
    ~MemoryInputStream() override;

protected:
    std::uint64_t DoRead(void* destination, std::uint64_t size) override;
    std::optional<std::uint64_t> DoBytesLeft() const override;
};

/// Writes to memory that grows by doubling.
class QOR_CORE_API MemoryOutputStream final : public BinaryOutputStream {
public:
    MemoryOutputStream();
    /// Makes room for `capacity` bytes at once.
    explicit MemoryOutputStream(std::uint64_t capacity);
    ~MemoryOutputStream() override;

    /// What was written so far; valid until the next write.
    std::span<const std::byte> GetBytes() const { return {m_storage.get(), GetSize()}; }
    std::size_t GetSize() const { return static_cast<std::size_t>(WindowBegin() - m_storage.get()); }
    /// Forgets what was written and keeps the memory.
    void Clear() { SetWindow(m_storage.get(), m_storage.get() + m_capacity); }

protected:
    void DoWrite(const void* source, std::uint64_t size) override;

private:
    void Grow(std::uint64_t needed);

    std::unique_ptr<std::byte[]> m_storage;
    std::uint64_t m_capacity = 0;
};

} // namespace Qor::Core
