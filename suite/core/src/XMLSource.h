#pragma once

#include <QorCore/Stream.h>

#include <memory>
#include <optional>
#include <string_view>

namespace Qor::Core {

// How much of a document is read at once, unless what was begun is longer.
inline constexpr std::uint32_t xmlPieceSize = 64 * 1024;

// A document on its way from its stream: the text that was read and is not yet done with.
class XMLSource {
public:
    explicit XMLSource(BinaryInputStream& stream) : m_stream(stream) {}

    std::string_view GetText() const { return {m_buffer.get() + m_begin, m_end - m_begin}; }
    void Drop(std::size_t size) { m_begin += size; }
    // Reads `size` bytes, or all up to the end, behind the text, which then stands elsewhere.
    void ReadOn(std::uint32_t size);
    // Nothing comes behind the text.
    bool IsAtEnd() const { return m_isAtEnd; }
    // The text included.
    std::optional<std::uint64_t> BytesLeft() const;

private:
    BinaryInputStream& m_stream;
    std::unique_ptr<char[]> m_buffer;
    std::size_t m_capacity = 0;
    std::size_t m_begin = 0;
    std::size_t m_end = 0;
    bool m_isAtEnd = false;
};

} // namespace Qor::Core
