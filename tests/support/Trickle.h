#pragma once

#include <QorCore/Alert.h>
#include <QorCore/Stream.h>

#include <algorithm>
#include <limits>
#include <span>

namespace Qor::Core::Testing {

/// A medium that gives a few bytes at a time, does not know how many it has, and may fail on its way, once or for
/// good.
class Trickle final : public BinaryInputStream {
public:
    static constexpr std::uint64_t never = std::numeric_limits<std::uint64_t>::max();

    Trickle(std::span<const std::byte> bytes, std::uint64_t piece, std::uint64_t failAt = never,
            bool failsForGood = false)
        : m_bytes(bytes), m_piece(piece), m_failAt(failAt), m_failsForGood(failsForGood) {}

protected:
    std::uint64_t DoRead(void* destination, std::uint64_t size) override {
        if (m_position == m_failAt) {
            if (!m_failsForGood)
                m_failAt = never;
            throw IOError("The medium failed");
        }
        const std::uint64_t done =
            std::min({size, m_piece, std::uint64_t{m_bytes.size()} - m_position, m_failAt - m_position});
        std::copy_n(m_bytes.begin() + static_cast<std::ptrdiff_t>(m_position), done,
                    static_cast<std::byte*>(destination));
        m_position += done;
        return done;
    }

private:
    std::span<const std::byte> m_bytes;
    std::uint64_t m_piece;
    std::uint64_t m_failAt;
    bool m_failsForGood;
    std::uint64_t m_position = 0;
};

} // namespace Qor::Core::Testing
