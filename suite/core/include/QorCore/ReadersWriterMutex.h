#pragma once

#include <QorCore/Export.h>

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <utility>
#include <vector>

namespace Qor::Core {

/// Many readers or one writer, each counted by the lock owner of its thread's `Context`, and re-entrant: a writer may
/// write and read again, a reader may read again and is then never queued behind a waiting writer. Readers that come
/// newly wait for writers that wait already. Taken through `ReaderLock` and `WriterLock`.
class QOR_CORE_API ReadersWriterMutex {
public:
    ReadersWriterMutex();
    ReadersWriterMutex(const ReadersWriterMutex&) = delete;
    ReadersWriterMutex& operator=(const ReadersWriterMutex&) = delete;
    ~ReadersWriterMutex();

private:
    friend class ReaderLock;
    friend class WriterLock;
    struct Reader {
        std::uint64_t owner;
        std::size_t count;
    };

    std::uint64_t AcquireRead();
    void AcquireWrite();
    void ReleaseRead(std::uint64_t owner);
    void ReleaseWrite();
    std::vector<Reader>::iterator FindReader(std::uint64_t owner);

    std::mutex m_stateMutex;
    std::condition_variable m_changed;
    std::vector<Reader> m_readers;
    std::uint64_t m_writer = 0;
    std::size_t m_writeCount = 0;
    std::size_t m_waitingWriters = 0;
};

/// Reads under the mutex from construction to `Release` or the end of its scope, whatever thread that ends on.
class QOR_CORE_API ReaderLock {
public:
    /// Waits without limit.
    explicit ReaderLock(ReadersWriterMutex& mutex) : m_mutex(&mutex), m_owner(mutex.AcquireRead()) {}
    ReaderLock(const ReaderLock&) = delete;
    ReaderLock& operator=(const ReaderLock&) = delete;
    ~ReaderLock() { Release(); }

    /// Ends the lock before its scope does. A second call has no effect.
    void Release() {
        if (m_mutex != nullptr)
            std::exchange(m_mutex, nullptr)->ReleaseRead(m_owner);
    }

private:
    ReadersWriterMutex* m_mutex;
    std::uint64_t m_owner;
};

/// Writes under the mutex from construction to `Release` or the end of its scope, whatever thread that ends on.
class QOR_CORE_API WriterLock {
public:
    /// Waits without limit. Raises `LogicError` when the caller's owner only reads: two readers that both waited to
    /// write would wait for ever.
    explicit WriterLock(ReadersWriterMutex& mutex) : m_mutex(&mutex) { mutex.AcquireWrite(); }
    WriterLock(const WriterLock&) = delete;
    WriterLock& operator=(const WriterLock&) = delete;
    ~WriterLock() { Release(); }

    /// Ends the lock before its scope does. A second call has no effect.
    void Release() {
        if (m_mutex != nullptr)
            std::exchange(m_mutex, nullptr)->ReleaseWrite();
    }

private:
    ReadersWriterMutex* m_mutex;
};

} // namespace Qor::Core
