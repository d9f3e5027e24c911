#pragma once

#include <QorCore/Export.h>

#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <vector>

namespace Qor::Core {

/// Memory for many small objects of one size, without their construction or destruction. Each thread keeps a list of
/// free cells of its own, so that most calls touch nothing shared; a cell may be freed on another thread than the one
/// that allocated it. Memory never goes back to the system.
///
/// A pool lives to the end of the process, so that objects which outlive `main` can still be freed: make it with `new`
/// and keep it, e.g. `static auto* const pool = new ObjectPoolBase(64, 1000);`.
///
/// Thread rule: all operations may be called by any number of threads at once, also while a thread or the process ends.
/// In builds with the address sanitizer every cell comes from `operator new`, so that use after free is found.
class QOR_CORE_API ObjectPoolBase {
public:
    /// New cells are made `block` at a time. A thread keeps at most `maxFree` free cells; what is above it goes to a
    /// list that all threads share.
    ObjectPoolBase(std::size_t block, std::size_t maxFree);
    ObjectPoolBase(const ObjectPoolBase&) = delete;
    ObjectPoolBase& operator=(const ObjectPoolBase&) = delete;
    ~ObjectPoolBase() = delete;

    /// Memory of `size` bytes (at least one), aligned for every type of that size up to `std::max_align_t`. The first
    /// call fixes the size of the cells; other sizes come from `operator new`. Raises `std::bad_alloc`.
    void* Allocate(std::size_t size);
    /// Takes back what `Allocate` gave for the same size.
    void Free(void* memory, std::size_t size) noexcept;

private:
    struct ThreadList;
    struct ThreadLists;

    bool IsCellSize(std::size_t size);
    void* AllocateSlowly(std::size_t size);
    void FreeSlowly(void* memory, std::size_t size) noexcept;
    std::size_t TakeShared(void** cells, std::size_t count);
    void MakeBlock();
    void Share(ThreadList& list, std::size_t count) noexcept;

    const std::size_t m_id;
    const std::size_t m_block;
    const std::size_t m_maxFree;
    std::atomic<std::size_t> m_cellSize{0};
    std::mutex m_sharedMutex;
    std::vector<void*> m_shared;
    std::size_t m_made = 0;
};

/// Standard allocator over the pool that `pool` returns, for `std::allocate_shared`: single objects come from the pool,
/// arrays and over-aligned types from `operator new`.
template <class T, ObjectPoolBase& (*pool)()>
class PoolAllocator {
public:
    using value_type = T;
    template <class U>
    struct rebind {
        using other = PoolAllocator<U, pool>;
    };

    PoolAllocator() noexcept = default;
    template <class U>
    PoolAllocator(const PoolAllocator<U, pool>&) noexcept {}

    T* allocate(std::size_t count) {
        if (IsPooled(count))
            return static_cast<T*>(pool().Allocate(sizeof(T)));
        return std::allocator<T>().allocate(count);
    }
    void deallocate(T* memory, std::size_t count) noexcept {
        if (IsPooled(count))
            pool().Free(memory, sizeof(T));
        else
            std::allocator<T>().deallocate(memory, count);
    }

    template <class U>
    bool operator==(const PoolAllocator<U, pool>&) const noexcept {
        return true;
    }

private:
    static constexpr bool IsPooled(std::size_t count) { return count == 1 && alignof(T) <= alignof(std::max_align_t); }
};

} // namespace Qor::Core
