#pragma once

#include <QorCore/Mutex.h>

#include <functional>
#include <unordered_set>

namespace Qor::Core {

/// Takes many mutexes as one set, without a fixed order and without deadlock: it waits for one mutex only while it
/// holds nothing else, and tries the others. When one of them is busy it lets all go, waits for that one, and begins
/// again, so the visitor sees the objects as they are then.
class QOR_CORE_API LockSet {
public:
    LockSet(const LockSet&) = delete;
    LockSet& operator=(const LockSet&) = delete;

    /// Calls `visit`, which hands every mutex of the set to `Add`, until all of them are held, and appends the locks to
    /// `locks` in the order in which they were taken, each mutex once. Called while the thread collects a set already,
    /// it only visits: the mutexes go into the outer set.
    static void Acquire(std::vector<std::shared_ptr<Lock>>& locks, const std::function<void()>& visit);

    /// The set that the calling thread collects, or null.
    static LockSet* Collecting();

    enum class EResult : std::uint8_t {
        added,
        visited, ///< it was handed in before: what it guards is in the set
        busy     ///< the set cannot be had this time: the visitor should return
    };
    EResult Add(std::shared_ptr<Mutex> mutex);
    bool IsBusy() const { return m_busy != nullptr; }

    /// Appends a lock that somebody else took.
    void Adopt(std::shared_ptr<Lock> lock) { m_locks.push_back(std::move(lock)); }

private:
    explicit LockSet(std::shared_ptr<Mutex> awaited);
    ~LockSet();

    std::vector<std::shared_ptr<Lock>> m_locks;
    std::unordered_set<const Mutex*> m_visited;
    std::shared_ptr<Mutex> m_awaited;
    std::shared_ptr<Mutex> m_busy;
};

} // namespace Qor::Core
