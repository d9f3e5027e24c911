#include "XMLSource.h"

#include <algorithm>
#include <cstring>

namespace Qor::Core {

void XMLSource::ReadOn(std::uint32_t size) {
    const std::string_view text = GetText();
    const std::size_t kept = text.size();
    std::unique_ptr<char[]> larger;
    if (const std::size_t needed = kept + size; needed > m_capacity) {
        const std::size_t capacity = std::max(needed, 2 * m_capacity);
        larger = std::make_unique_for_overwrite<char[]>(capacity);
        m_capacity = capacity;
    }
    char* const begin = larger ? larger.get() : m_buffer.get();
    if (kept != 0)
        std::memmove(begin, text.data(), kept);
    if (larger)
        m_buffer = std::move(larger);
    m_begin = 0;
    m_end = kept;
    const auto read = static_cast<std::size_t>(m_stream.Read(begin + kept, size));
    m_end += read;
    m_isAtEnd = read < size;
}

std::optional<std::uint64_t> XMLSource::BytesLeft() const {
    const std::optional<std::uint64_t> behind = m_stream.BytesLeft();
    return behind ? std::optional(*behind + GetText().size()) : std::nullopt;
}

} // namespace Qor::Core
