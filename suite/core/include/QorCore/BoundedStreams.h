#pragma once

#include <QorCore/Stream.h>

namespace Qor::Core {

/// The next `limit` bytes of another stream, as a narrower window over the same buffer. While it lives, the source is
/// read through it only; when it ends, the source stands behind the bytes that were read.
class QOR_CORE_API BoundedInputStream final : public BinaryInputStream {
public:
    BoundedInputStream(BinaryInputStream& source, std::uint64_t limit);
    ~BoundedInputStream() override;

    /// The bytes of the bound that were not read yet, whether or not the source still has them.
    std::uint64_t Remaining() const { return WindowSize() + m_behindWindow; }

protected:
    std::uint64_t DoRead(void* destination, std::uint64_t size) override;
    std::uint64_t DoSkip(std::uint64_t size) override;
    std::optional<std::uint64_t> DoBytesLeft() const override;

private:
    void NarrowWindow();
    void ReturnWindow();

    BinaryInputStream& m_source;
    std::uint64_t m_behindWindow;
};

/// Room for `limit` bytes in another stream, as a narrower window over the same buffer. Writing more is an `IOError`
/// that is raised before the block is touched.
class QOR_CORE_API BoundedOutputStream final : public BinaryOutputStream {
public:
    BoundedOutputStream(BinaryOutputStream& target, std::uint64_t limit);
    ~BoundedOutputStream() override;

    /// The bytes that may still be written.
    std::uint64_t Remaining() const { return WindowSize() + m_behindWindow; }

protected:
    void DoWrite(const void* source, std::uint64_t size) override;
    void DoFlush() override;

private:
    void NarrowWindow();
    void ReturnWindow();

    BinaryOutputStream& m_target;
    std::uint64_t m_behindWindow;
};

} // namespace Qor::Core
