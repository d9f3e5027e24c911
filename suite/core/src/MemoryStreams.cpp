#include <QorCore/MemoryStreams.h>

#include <algorithm>

namespace Qor::Core {

MemoryInputStream::MemoryInputStream(std::span<const std::byte> bytes) {
    SetWindow(bytes.data(), bytes.data() + bytes.size());
}

MemoryInputStream::MemoryInputStream(const void* bytes, std::uint64_t size)
    : MemoryInputStream(std::span(static_cast<const std::byte*>(bytes), static_cast<std::size_t>(size))) {}

MemoryInputStream::~MemoryInputStream() = default;

// All bytes stand in the window: whoever comes here has read them.
std::uint64_t MemoryInputStream::DoRead(void*, std::uint64_t) { return 0; }

std::optional<std::uint64_t> MemoryInputStream::DoBytesLeft() const { return 0; }

MemoryOutputStream::MemoryOutputStream() = default;

MemoryOutputStream::MemoryOutputStream(std::uint64_t capacity) { Grow(capacity); }

MemoryOutputStream::~MemoryOutputStream() = default;

void MemoryOutputStream::Grow(std::uint64_t needed) {
    const std::size_t written = GetSize();
    const std::uint64_t capacity = std::max({needed, m_capacity * 2, std::uint64_t{256}});
    auto storage = std::make_unique_for_overwrite<std::byte[]>(static_cast<std::size_t>(capacity));
    if (written != 0)
        std::memcpy(storage.get(), m_storage.get(), written);
    m_storage = std::move(storage);
    m_capacity = capacity;
    SetWindow(m_storage.get() + written, m_storage.get() + capacity);
}

void MemoryOutputStream::DoWrite(const void* source, std::uint64_t size) {
    Grow(GetSize() + size);
    Write(source, size);
}

} // namespace Qor::Core
