#include <QorCore/Alert.h>
#include <QorCore/BoundedStreams.h>
#include <QorCore/Message.h>

#include <algorithm>

namespace Qor::Core {

BoundedInputStream::BoundedInputStream(BinaryInputStream& source, std::uint64_t limit)
    : m_source(source), m_behindWindow(limit) {
    NarrowWindow();
}

BoundedInputStream::~BoundedInputStream() { ReturnWindow(); }

void BoundedInputStream::ReturnWindow() {
    // Without a window the source's own cursor is the true one: there was none, or a read in the source failed.
    if (WindowBegin() != nullptr)
        m_source.m_cursor = WindowBegin();
    m_behindWindow += WindowSize();
    SetWindow(nullptr, nullptr);
}

void BoundedInputStream::NarrowWindow() {
    const std::uint64_t width = std::min(m_source.WindowSize(), m_behindWindow);
    SetWindow(m_source.m_cursor, m_source.m_cursor + width);
    m_behindWindow -= width;
}

std::uint64_t BoundedInputStream::DoRead(void* destination, std::uint64_t size) {
    ReturnWindow();
    const std::uint64_t done = m_source.ReadSome(destination, std::min(size, m_behindWindow));
    m_behindWindow -= done;
    NarrowWindow();
    return done;
}

std::uint64_t BoundedInputStream::DoSkip(std::uint64_t size) {
    ReturnWindow();
    const std::uint64_t done = m_source.SkipSome(std::min(size, m_behindWindow));
    m_behindWindow -= done;
    NarrowWindow();
    return done;
}

std::optional<std::uint64_t> BoundedInputStream::DoBytesLeft() const {
    // What the source still has beyond the end of this window; its own cursor may lag behind ours.
    const std::optional<std::uint64_t> behindSource = m_source.DoBytesLeft();
    if (!behindSource)
        return std::nullopt;
    const std::byte* const end = WindowBegin() != nullptr ? WindowBegin() + WindowSize() : m_source.m_cursor;
    const auto shared = static_cast<std::uint64_t>(m_source.m_windowEnd - end);
    return std::min(m_behindWindow, *behindSource + shared);
}

BoundedOutputStream::BoundedOutputStream(BinaryOutputStream& target, std::uint64_t limit)
    : m_target(target), m_behindWindow(limit) {
    NarrowWindow();
}

BoundedOutputStream::~BoundedOutputStream() { ReturnWindow(); }

void BoundedOutputStream::ReturnWindow() {
    if (WindowBegin() != nullptr)
        m_target.m_cursor = WindowBegin();
    m_behindWindow += WindowSize();
    SetWindow(nullptr, nullptr);
}

void BoundedOutputStream::NarrowWindow() {
    const std::uint64_t width = std::min(m_target.WindowSize(), m_behindWindow);
    SetWindow(m_target.m_cursor, m_target.m_cursor + width);
    m_behindWindow -= width;
}

void BoundedOutputStream::DoWrite(const void* source, std::uint64_t size) {
    if (size > Remaining())
        Error::RaiseError(IOError(FormatText("Attempt to write %1% bytes where only %2% bytes are left of the block",
                                             {size, Remaining()})),
                          QOR_CODE_CONTEXT("BoundedOutputStream"), "Qor.Core.BoundedOutputStream");
    ReturnWindow();
    m_target.Write(source, size);
    m_behindWindow -= size;
    NarrowWindow();
}

void BoundedOutputStream::DoFlush() {
    ReturnWindow();
    m_target.Flush();
    NarrowWindow();
}

} // namespace Qor::Core
