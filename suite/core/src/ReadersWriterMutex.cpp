#include <QorCore/Alert.h>
#include <QorCore/Context.h>
#include <QorCore/ReadersWriterMutex.h>

#include <algorithm>

namespace Qor::Core {

ReadersWriterMutex::ReadersWriterMutex() = default;
ReadersWriterMutex::~ReadersWriterMutex() = default;

std::vector<ReadersWriterMutex::Reader>::iterator ReadersWriterMutex::FindReader(std::uint64_t owner) {
    return std::find_if(m_readers.begin(), m_readers.end(),
                        [owner](const Reader& reader) { return reader.owner == owner; });
}

std::uint64_t ReadersWriterMutex::AcquireRead() {
    const std::uint64_t owner = Context::Current().lockOwner;
    std::unique_lock state(m_stateMutex);
    // Asked anew after each wait: another thread may have come in under the same owner.
    m_changed.wait(state, [&] {
        return m_writer == owner || FindReader(owner) != m_readers.end() || (m_writer == 0 && m_waitingWriters == 0);
    });
    if (const auto reader = FindReader(owner); reader != m_readers.end())
        ++reader->count;
    else
        m_readers.push_back({owner, 1});
    return owner;
}

void ReadersWriterMutex::ReleaseRead(std::uint64_t owner) {
    const std::lock_guard state(m_stateMutex);
    const auto reader = FindReader(owner);
    if (--reader->count == 0) {
        *reader = m_readers.back();
        m_readers.pop_back();
        m_changed.notify_all();
    }
}

void ReadersWriterMutex::AcquireWrite() {
    const std::uint64_t owner = Context::Current().lockOwner;
    std::unique_lock state(m_stateMutex);
    if (m_writer != owner && FindReader(owner) != m_readers.end())
        Error::RaiseError(LogicError("A thread that reads under a ReadersWriterMutex asked to write under it; it must "
                                     "write from the beginning"),
                          QOR_CODE_CONTEXT("ReadersWriterMutex"), "Qor.Core.ReadersWriterMutex");
    ++m_waitingWriters;
    m_changed.wait(state, [&] { return m_writer == owner || (m_writer == 0 && m_readers.empty()); });
    --m_waitingWriters;
    m_writer = owner;
    ++m_writeCount;
}

void ReadersWriterMutex::ReleaseWrite() {
    const std::lock_guard state(m_stateMutex);
    if (--m_writeCount == 0) {
        m_writer = 0;
        m_changed.notify_all();
    }
}

} // namespace Qor::Core
