#include <QorCore/Stream.h>

#include <algorithm>
#include <array>

namespace Qor::Core {

BinaryInputStream::~BinaryInputStream() = default;

std::uint64_t BinaryInputStream::ReadSome(void* destination, std::uint64_t size) {
    const std::uint64_t ready = std::min(WindowSize(), size);
    if (ready == 0)
        return size != 0 ? DoRead(destination, size) : 0;
    std::memcpy(destination, m_cursor, static_cast<std::size_t>(ready));
    m_cursor += ready;
    return ready;
}

std::uint64_t BinaryInputStream::SkipSome(std::uint64_t size) {
    const std::uint64_t ready = std::min(WindowSize(), size);
    if (ready == 0)
        return size != 0 ? DoSkip(size) : 0;
    m_cursor += ready;
    return ready;
}

std::uint64_t BinaryInputStream::ReadBeyondWindow(void* destination, std::uint64_t size) {
    std::uint64_t done = 0;
    for (std::uint64_t more = 1; done < size && more != 0; done += more)
        more = ReadSome(static_cast<std::byte*>(destination) + done, size - done);
    return done;
}

std::uint64_t BinaryInputStream::Skip(std::uint64_t size) {
    std::uint64_t done = 0;
    for (std::uint64_t more = 1; done < size && more != 0; done += more)
        more = SkipSome(size - done);
    return done;
}

std::uint64_t BinaryInputStream::DoSkip(std::uint64_t size) {
    std::array<std::byte, 4096> dropped;
    return DoRead(dropped.data(), std::min<std::uint64_t>(size, dropped.size()));
}

std::optional<std::uint64_t> BinaryInputStream::BytesLeft() const {
    const std::optional<std::uint64_t> behind = DoBytesLeft();
    return behind ? std::optional(*behind + WindowSize()) : std::nullopt;
}

std::optional<std::uint64_t> BinaryInputStream::DoBytesLeft() const { return std::nullopt; }

BinaryOutputStream::~BinaryOutputStream() = default;

void BinaryOutputStream::DoFlush() {}

void BinaryOutputStream::WriteZeros(std::uint64_t size) {
    static constexpr std::array<std::byte, 4096> zeros{};
    for (std::uint64_t left = size; left != 0;) {
        const std::uint64_t piece = std::min<std::uint64_t>(left, zeros.size());
        Write(zeros.data(), piece);
        left -= piece;
    }
}

} // namespace Qor::Core
