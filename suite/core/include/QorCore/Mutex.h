#pragma once

#include <QorCore/Export.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

namespace Qor::Core {

/// A mutex that is recursive for its owner. The owner is the lock owner of the calling thread's `Context`, so a thread
/// that works for another one enters what that one holds.
class QOR_CORE_API Mutex {
public:
    Mutex();
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;
    ~Mutex();

    /// Waits without limit until the caller's owner holds the mutex (once more).
    void Acquire();
    /// Like `Acquire`, but returns false at once when another owner holds the mutex.
    [[nodiscard]] bool TryAcquire();
    /// Undoes one `Acquire` of the owner that holds the mutex, on whatever thread.
    void Release();

    /// Whether the calling thread's owner holds the mutex.
    bool IsHeldByCaller() const;

private:
    void WaitFor(std::uint64_t owner);

    // owner << 23 | waiting << 22 | count; 0 when free. The owners are a counter, 41 bits last for ever. A mutex is no
    // more than this: those who wait sleep in a few places that all mutexes share.
    std::atomic<std::uint64_t> m_state{0};
};

/// Holds a mutex from construction to the end of its scope, without sharing ownership of it.
class MutexGuard {
public:
    explicit MutexGuard(Mutex& mutex) : m_mutex(mutex) { mutex.Acquire(); }
    MutexGuard(const MutexGuard&) = delete;
    MutexGuard& operator=(const MutexGuard&) = delete;
    ~MutexGuard() { m_mutex.Release(); }

private:
    Mutex& m_mutex;
};

/// Holds a mutex, and shares its ownership, for as long as the lock lives. The lock releases in the name of the owner
/// that took it, whatever thread destroys it.
class QOR_CORE_API Lock {
public:
    /// Waits without limit.
    explicit Lock(std::shared_ptr<Mutex> mutex);
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;
    ~Lock();

    /// A lock when the mutex could be had at once, else an empty pointer.
    static std::shared_ptr<Lock> Try(std::shared_ptr<Mutex> mutex);

    /// Appends a lock to a caller's list. The vector destroys its elements front to back, so each lock keeps the one
    /// before it: however the list ends, the locks are released in reverse order of acquisition.
    static void Append(std::vector<std::shared_ptr<Lock>>& locks, std::shared_ptr<Lock> lock);

private:
    struct Adopted {};
    Lock(std::shared_ptr<Mutex> mutex, Adopted);

    std::shared_ptr<Mutex> m_mutex;
    std::shared_ptr<Lock> m_before;
};

} // namespace Qor::Core
