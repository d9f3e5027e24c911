#include <QorCore/Context.h>
#include <QorCore/Log.h>
#include <QorCore/Mutex.h>

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <string>
#include <utility>

namespace Qor::Core {

namespace {

constexpr std::uint64_t countMask = 0x3FFFFF;
constexpr std::uint64_t waitingBit = 0x400000;
constexpr int ownerShift = 23;

struct SleepingPlace {
    std::mutex mutex;
    std::condition_variable released;
};

// Never destroyed: mutexes may be released after main().
SleepingPlace& SleepingPlaceOf(const Mutex* mutex) {
    static auto& places = *new std::array<SleepingPlace, 64>;
    return places[std::hash<const void*>()(mutex) / alignof(std::max_align_t) % places.size()];
}

constexpr std::uint64_t OwnerOf(std::uint64_t state) { return state >> ownerShift; }

} // namespace

Mutex::Mutex() = default;
Mutex::~Mutex() = default;

bool Mutex::TryAcquire() {
    const std::uint64_t owner = Context::Current().lockOwner;
    std::uint64_t state = m_state.load(std::memory_order_relaxed);
    // Two threads may run under one owner, so the count changes under them too.
    while (state == 0 || OwnerOf(state) == owner)
        if (m_state.compare_exchange_weak(state, state == 0 ? owner << ownerShift | 1 : state + 1,
                                          std::memory_order_acquire))
            return true;
    return false;
}

void Mutex::Acquire() {
    if (!TryAcquire())
        WaitFor(Context::Current().lockOwner);
}

void Mutex::WaitFor(std::uint64_t owner) {
    SleepingPlace& place = SleepingPlaceOf(this);
    std::unique_lock sleep(place.mutex);
    for (;;) {
        std::uint64_t state = m_state.load(std::memory_order_relaxed);
        if (state == 0) {
            // Others may be asleep still: the bit stays, so that the next release looks after them.
            if (m_state.compare_exchange_strong(state, owner << ownerShift | waitingBit | 1, std::memory_order_acquire))
                return;
        } else if (OwnerOf(state) == owner) {
            if (m_state.compare_exchange_strong(state, state + 1, std::memory_order_acquire))
                return;
        } else if ((state & waitingBit) != 0 ||
                   m_state.compare_exchange_strong(state, state | waitingBit, std::memory_order_relaxed)) {
#ifdef NDEBUG
            place.released.wait(sleep);
#else
            if (place.released.wait_for(sleep, std::chrono::seconds(10)) == std::cv_status::timeout)
                Log("Qor.Core.Mutex", "Owner " + std::to_string(owner) + " waits for more than 10 s for owner " +
                                          std::to_string(OwnerOf(m_state.load())));
#endif
        }
    }
}

void Mutex::Release() {
    std::uint64_t state = m_state.load(std::memory_order_relaxed);
    std::uint64_t next = 0;
    do {
        next = (state & countMask) > 1 ? state - 1 : 0;
    } while (!m_state.compare_exchange_weak(state, next, std::memory_order_release, std::memory_order_relaxed));
    if (next == 0 && (state & waitingBit) != 0) {
        SleepingPlace& place = SleepingPlaceOf(this);
        const std::lock_guard sleep(place.mutex);
        place.released.notify_all();
    }
}

bool Mutex::IsHeldByCaller() const {
    return OwnerOf(m_state.load(std::memory_order_relaxed)) == Context::Current().lockOwner;
}

Lock::Lock(std::shared_ptr<Mutex> mutex) : m_mutex(std::move(mutex)) { m_mutex->Acquire(); }

Lock::Lock(std::shared_ptr<Mutex> mutex, Adopted) : m_mutex(std::move(mutex)) {}

Lock::~Lock() {
    m_mutex->Release();
    // One after the other, not nested: a caller may hold a hundred thousand of them.
    for (std::shared_ptr<Lock> before = std::move(m_before); before && before.use_count() == 1;)
        before = std::shared_ptr<Lock>(std::move(before->m_before));
}

std::shared_ptr<Lock> Lock::Try(std::shared_ptr<Mutex> mutex) {
    if (!mutex->TryAcquire())
        return nullptr;
    std::unique_ptr<Lock> lock;
    try {
        lock.reset(new Lock(mutex, Adopted{}));
    } catch (...) {
        mutex->Release();
        throw;
    }
    return lock;
}

void Lock::Append(std::vector<std::shared_ptr<Lock>>& locks, std::shared_ptr<Lock> lock) {
    if (!locks.empty())
        lock->m_before = locks.back();
    locks.push_back(std::move(lock));
}

} // namespace Qor::Core
