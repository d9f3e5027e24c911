#include "platform/ThreadEnd.h"

#include <QorCore/ObjectPool.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <new>

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

// Free cells stand in arrays, not in lists that run through the cells: taking one does not wait for its memory.
struct ObjectPoolBase::ThreadList {
    void** cells; // room for as many as the pool lets a thread keep
    std::size_t count;
    std::size_t cellSize; // 0: no cell may stand here, for the thread has not met the pool yet or is ending
};

// The lists are plain data on the heap: usable while the other objects of a thread are being destroyed, and given back
// when the system says that the thread ends.
struct QOR_CORE_LOCAL ObjectPoolBase::ThreadLists {
    /// Null when the thread is ending, and when there is no memory.
    static ThreadList* Enter(std::size_t id) noexcept;
    static void End(void* lists);

    static ThreadList none[maxPools + 1];
    static constinit thread_local bool hasEnded;
    // A pointer is small enough for the place that the loader has ready, which is reached without a call.
    [[gnu::tls_model("initial-exec")]] static constinit thread_local ThreadList* current;
};

ObjectPoolBase::ThreadList ObjectPoolBase::ThreadLists::none[maxPools + 1] = {};
constinit thread_local bool ObjectPoolBase::ThreadLists::hasEnded = false;
[[gnu::tls_model(
    "initial-exec")]] constinit thread_local ObjectPoolBase::ThreadList* ObjectPoolBase::ThreadLists::current = none;

ObjectPoolBase::ThreadList* ObjectPoolBase::ThreadLists::Enter(std::size_t id) noexcept {
    if (hasEnded)
        return nullptr;
    if (current == none) {
        std::unique_ptr<ThreadList[]> lists(new (std::nothrow) ThreadList[maxPools + 1]());
        if (!lists || !AtThreadEnd(&End, lists.get()))
            return nullptr;
        current = lists.release();
    }
    return &current[id];
}

void ObjectPoolBase::ThreadLists::End(void* lists) {
    hasEnded = true;
    current = none;
    const std::unique_ptr<ThreadList[]> all(static_cast<ThreadList*>(lists));
    for (std::size_t id = 0; id < maxPools; ++id) {
        if (all[id].count != 0)
            livePools[id].load(std::memory_order_acquire)->Share(all[id], all[id].count);
        delete[] all[id].cells;
    }
}

ObjectPoolBase::ObjectPoolBase(std::size_t block, std::size_t maxFree)
    : m_id(NextPoolId()), m_block(std::max<std::size_t>(block, 1)), m_maxFree(std::max<std::size_t>(maxFree, 1)) {
    if (m_id < maxPools)
        livePools[m_id].store(this, std::memory_order_release);
}

void* ObjectPoolBase::Allocate(std::size_t size) {
    ThreadList& list = ThreadLists::current[m_id];
    if (list.count == 0 || list.cellSize != size)
        return AllocateSlowly(size);
    return list.cells[--list.count];
}

void ObjectPoolBase::Free(void* memory, std::size_t size) noexcept {
    ThreadList& list = ThreadLists::current[m_id];
    if (list.count >= m_maxFree || list.cellSize != size) {
        FreeSlowly(memory, size);
        return;
    }
    list.cells[list.count++] = memory;
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
    ThreadList* const list = ThreadLists::Enter(m_id);
    if (list == nullptr) {
        void* cell = nullptr;
        TakeShared(&cell, 1);
        return cell;
    }
    if (list->cells == nullptr)
        list->cells = new void*[m_maxFree];
    list->count = TakeShared(list->cells, std::min(m_block, m_maxFree));
    list->cellSize = size;
    return list->cells[--list->count];
}

void ObjectPoolBase::FreeSlowly(void* memory, std::size_t size) noexcept {
    if (!IsCellSize(size)) {
        ::operator delete(memory);
        return;
    }
    ThreadList* const list = ThreadLists::Enter(m_id);
    if (list != nullptr && list->cells == nullptr) {
        list->cells = new (std::nothrow) void*[m_maxFree];
        list->cellSize = list->cells != nullptr ? size : 0;
    }
    if (list == nullptr || list->cells == nullptr) {
        ThreadList single{&memory, 1, size};
        Share(single, 1);
        return;
    }
    // Half of them, so that a thread which frees and allocates at the limit comes here rarely.
    if (list->count >= m_maxFree)
        Share(*list, (list->count + 1) / 2);
    list->cells[list->count++] = memory;
}

// Fetches up to `count` cells, at least one, and returns their number.
std::size_t ObjectPoolBase::TakeShared(void** cells, std::size_t count) {
    const std::lock_guard lock(m_sharedMutex);
    if (m_shared.empty())
        MakeBlock();
    const std::size_t taken = std::min(count, m_shared.size());
    const auto first = m_shared.end() - static_cast<std::ptrdiff_t>(taken);
    std::copy(first, m_shared.end(), cells);
    m_shared.erase(first, m_shared.end());
    return taken;
}

// Cells follow one another in memory without gaps: a type of that size is aligned in each of them.
void ObjectPoolBase::MakeBlock() {
    constexpr std::size_t unit = alignof(void*);
    const std::size_t stride = (m_cellSize.load() + unit - 1) / unit * unit;
    // Room for every cell that there is, so that giving one back never allocates.
    if (m_shared.capacity() < m_made + m_block)
        m_shared.reserve(2 * (m_made + m_block));
    auto* const memory = static_cast<std::byte*>(::operator new(stride* m_block));
    m_made += m_block;
    for (std::size_t index = m_block; index-- != 0;)
        m_shared.push_back(memory + index * stride);
}

void ObjectPoolBase::Share(ThreadList& list, std::size_t count) noexcept {
    const std::lock_guard lock(m_sharedMutex);
    list.count -= count;
    m_shared.insert(m_shared.end(), list.cells + list.count, list.cells + list.count + count);
}

} // namespace Qor::Core
