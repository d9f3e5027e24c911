#include <QorCore/Context.h>
#include <QorCore/LockSet.h>

#include <utility>

namespace Qor::Core {

LockSet* LockSet::Collecting() { return Context::Current().lockSet; }

LockSet::LockSet(std::shared_ptr<Mutex> awaited) : m_awaited(std::move(awaited)) {
    if (m_awaited)
        m_locks.push_back(std::make_shared<Lock>(m_awaited));
    Context::Current().lockSet = this;
}

LockSet::~LockSet() {
    Context::Current().lockSet = nullptr;
    while (!m_locks.empty())
        m_locks.pop_back();
}

LockSet::EResult LockSet::Add(std::shared_ptr<Mutex> mutex) {
    if (m_busy)
        return EResult::busy;
    if (!m_visited.insert(mutex.get()).second)
        return EResult::visited;
    if (mutex == m_awaited)
        return EResult::added;
    if (std::shared_ptr<Lock> lock = Lock::Try(mutex))
        m_locks.push_back(std::move(lock));
    else
        m_busy = std::move(mutex);
    return m_busy ? EResult::busy : EResult::added;
}

void LockSet::Acquire(std::vector<std::shared_ptr<Lock>>& locks, const std::function<void()>& visit) {
    if (Collecting() != nullptr) {
        visit();
        return;
    }
    for (std::shared_ptr<Mutex> awaited;;) {
        LockSet set(std::move(awaited));
        visit();
        if (!set.m_busy) {
            for (std::shared_ptr<Lock>& lock : set.m_locks)
                Lock::Append(locks, std::move(lock));
            set.m_locks.clear();
            return;
        }
        awaited = set.m_busy;
    }
}

} // namespace Qor::Core
