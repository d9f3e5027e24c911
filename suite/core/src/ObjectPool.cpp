#include <QorCore/ObjectPool.h>

#include <algorithm>
#include <array>
#include <new>
#include <utility>

namespace Qor::Core {

namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr bool bypassed = true;
#elif defined(__has_feature)
constexpr bool bypassed = __has_feature(address_sanitizer);
#else
constexpr bool bypassed = false;
#endif

// More pools than this work as well, on operator new: they share the last number, whose list is never filled.
constexpr std::size_t maxPools = 64;

std::array<std::atomic<ObjectPoolBase*>, maxPools> livePools{};

std::size_t NextPoolId() {
    static std::atomic<std::size_t> next{0};
    return std::min(next++, maxPools);
}

} // namespace

struct ObjectPoolBase::Cell {
    Cell* next;
};

struct ObjectPoolBase::ThreadList {
    Cell* head;
    std::size_t count;
    std::size_t cellSize; // 0: no cell may stand here, for the thread has not met the pool yet or is ending
};

// The lists are plain data and therefore usable while the other objects of a thread are being destroyed; the end of the
// thread is noticed by an object of its own.
struct ObjectPoolBase::ThreadLists {
    struct End {
        ~End();
    };

    static ThreadList& Enter(std::size_t id);

    static ThreadList none[maxPools + 1];
    static constinit thread_local ThreadList all[maxPools + 1];
    static constinit thread_local bool hasEnded;
    // A pointer is small enough for the place that the loader has ready, which is reached without a call.
    [[gnu::tls_model("initial-exec")]] static constinit thread_local ThreadList* current;
};

ObjectPoolBase::ThreadList ObjectPoolBase::ThreadLists::none[maxPools + 1] = {};
constinit thread_local ObjectPoolBase::ThreadList ObjectPoolBase::ThreadLists::all[maxPools + 1] = {};
constinit thread_local bool ObjectPoolBase::ThreadLists::hasEnded = false;
[[gnu::tls_model(
    "initial-exec")]] constinit thread_local ObjectPoolBase::ThreadList* ObjectPoolBase::ThreadLists::current = none;

ObjectPoolBase::ThreadList& ObjectPoolBase::ThreadLists::Enter(std::size_t id) {
    static thread_local const End end;
    current = all;
    return all[id];
}

ObjectPoolBase::ThreadLists::End::~End() {
    hasEnded = true;
    current = none;
    for (std::size_t id = 0; id < maxPools; ++id)
        if (all[id].count != 0)
            livePools[id].load(std::memory_order_acquire)->ShareFirst(all[id], all[id].count);
}

ObjectPoolBase::ObjectPoolBase(std::size_t block, std::size_t maxFree)
    : m_id(NextPoolId()), m_block(std::max<std::size_t>(block, 1)), m_maxFree(std::max<std::size_t>(maxFree, 1)) {
    if (m_id < maxPools)
        livePools[m_id].store(this, std::memory_order_release);
}

void* ObjectPoolBase::Allocate(std::size_t size) {
    ThreadList& list = ThreadLists::current[m_id];
    if (list.head == nullptr || list.cellSize != size)
        return AllocateSlowly(size);
    --list.count;
    return std::exchange(list.head, list.head->next);
}

void ObjectPoolBase::Free(void* memory, std::size_t size) noexcept {
    ThreadList& list = ThreadLists::current[m_id];
    if (list.count >= m_maxFree || list.cellSize != size) {
        FreeSlowly(memory, size);
        return;
    }
    list.head = new (memory) Cell{list.head};
    ++list.count;
}

bool ObjectPoolBase::IsCellSize(std::size_t size) {
    if (bypassed || m_id == maxPools)
        return false;
    std::size_t fixed = 0;
    return m_cellSize.compare_exchange_strong(fixed, size, std::memory_order_relaxed) || fixed == size;
}

void* ObjectPoolBase::AllocateSlowly(std::size_t size) {
    if (!IsCellSize(size))
        return ::operator new(size);
    std::size_t count = ThreadLists::hasEnded ? 1 : std::min(m_block, m_maxFree);
    Cell* const first = TakeShared(count);
    if (!ThreadLists::hasEnded)
        ThreadLists::Enter(m_id) = {first->next, count - 1, size};
    return first;
}

void ObjectPoolBase::FreeSlowly(void* memory, std::size_t size) noexcept {
    if (!IsCellSize(size)) {
        ::operator delete(memory);
        return;
    }
    auto* const cell = new (memory) Cell{nullptr};
    if (ThreadLists::hasEnded) {
        ThreadList single{cell, 1, size};
        ShareFirst(single, 1);
        return;
    }
    ThreadList& list = ThreadLists::Enter(m_id);
    // Half of them, so that a thread which frees and allocates at the limit comes here rarely.
    if (list.count >= m_maxFree)
        ShareFirst(list, (list.count + 1) / 2);
    cell->next = list.head;
    list = {cell, list.count + 1, size};
}

// Takes up to `count` cells, at least one, and leaves their number in `count`.
ObjectPoolBase::Cell* ObjectPoolBase::TakeShared(std::size_t& count) {
    const std::lock_guard lock(m_sharedMutex);
    if (m_shared == nullptr)
        m_shared = MakeBlock();
    Cell* const first = m_shared;
    Cell* last = first;
    std::size_t taken = 1;
    for (; taken < count && last->next != nullptr; ++taken)
        last = last->next;
    m_shared = std::exchange(last->next, nullptr);
    count = taken;
    return first;
}

// Cells follow one another in memory without gaps: a type of that size is aligned in each of them.
ObjectPoolBase::Cell* ObjectPoolBase::MakeBlock() {
    constexpr std::size_t unit = alignof(Cell);
    const std::size_t stride = (std::max(m_cellSize.load(), sizeof(Cell)) + unit - 1) / unit * unit;
    auto* const memory = static_cast<std::byte*>(::operator new(stride* m_block));
    Cell* first = nullptr;
    for (std::size_t index = m_block; index-- != 0;)
        first = new (memory + index * stride) Cell{first};
    return first;
}

void ObjectPoolBase::ShareFirst(ThreadList& list, std::size_t count) noexcept {
    Cell* const first = list.head;
    Cell* last = first;
    for (std::size_t index = 1; index < count; ++index)
        last = last->next;
    list.head = last->next;
    list.count -= count;
    const std::lock_guard lock(m_sharedMutex);
    last->next = std::exchange(m_shared, first);
}

} // namespace Qor::Core
