#include "Platform.h"
#include "Threads.h"

#include <QorCore/ObjectPool.h>

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <thread>
#include <vector>

namespace {

using Qor::Core::ObjectPoolBase;
using Qor::Core::PoolAllocator;
using Qor::Core::Testing::isWindows;
using Cells = std::vector<void*>;

#if defined(__SANITIZE_ADDRESS__)
constexpr bool poolIsBypassed = true;
#elif defined(__has_feature)
constexpr bool poolIsBypassed = __has_feature(address_sanitizer);
#else
constexpr bool poolIsBypassed = false;
#endif

// A pool of cells of 40 bytes. It stays, as every pool does, so the tests have one each, however often they run.
class PoolOf40 {
public:
    PoolOf40(std::size_t block, std::size_t maxFree) : m_pool(*new ObjectPoolBase(block, maxFree)) {}

    Cells Take(std::size_t count, std::size_t size = 40) {
        Cells cells(count);
        for (void*& cell : cells)
            cell = std::memset(m_pool.Allocate(size), 0xA5, size);
        return cells;
    }
    void Give(const Cells& cells, std::size_t size = 40) {
        for (void* const cell : cells)
            m_pool.Free(cell, size);
    }

private:
    ObjectPoolBase& m_pool;
};

std::size_t CountDistinct(const Cells& cells, const Cells& more = {}) {
    std::set<void*> all(cells.begin(), cells.end());
    all.insert(more.begin(), more.end());
    return all.size();
}

TEST(ObjectPoolThreads, CellsAreDistinctAlignedAndUsedAgain) {
    static PoolOf40 pools[] = {{1, 1}, {64, 1000}, {64, 3}, {5, 7}};
    for (PoolOf40& pool : pools) {
        const Cells first = pool.Take(500);
        EXPECT_EQ(CountDistinct(first), 500u);
        for (void* const cell : first)
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(cell) % 8, 0u);
        pool.Give(first);
        // None of these may become a cell.
        for (const std::size_t size : {1u, 39u, 41u, 4096u})
            pool.Give(pool.Take(1, size), size);
        const Cells second = pool.Take(500);
        EXPECT_EQ(CountDistinct(second), 500u);
        // A last block may have had cells that nobody had taken yet.
        if (!poolIsBypassed) {
            EXPECT_LE(CountDistinct(first, second), 500u + 64u);
        }
        pool.Give(second);
    }
}

TEST(ObjectPoolThreads, SurplusAndListsOfEndedThreadsServeOtherThreads) {
    if (poolIsBypassed)
        GTEST_SKIP() << "cells come from operator new";
    static PoolOf40 pool(8, 10);
    Cells cells;
    std::thread([&] { cells = pool.Take(100); }).join();
    // Ninety of them are above the limit of this thread.
    pool.Give(cells);
    for (const std::size_t count : {80u, 90u})
        std::thread([&] {
            const Cells others = pool.Take(count);
            EXPECT_LE(CountDistinct(cells, others), 100u + 8u);
            pool.Give(others);
        }).join();
}

TEST(ObjectPoolThreads, CellsMayBeFreedWhileTheThreadIsEnding) {
    if (isWindows)
        GTEST_SKIP() << "there, this compiler's thread-local objects lose their memory before they are destroyed";
    static PoolOf40 pool(8, 10);
    static bool isFreed;
    struct FreesAtEnd {
        ~FreesAtEnd() {
            pool.Give(cells);
            pool.Give(pool.Take(3));
            isFreed = true;
        }
        Cells cells;
    };
    std::thread([] {
        // Made before the pool's own end of thread, therefore destroyed after it.
        static thread_local FreesAtEnd atEnd;
        atEnd.cells = pool.Take(30);
    }).join();
    EXPECT_TRUE(isFreed);
    const Cells cells = pool.Take(30);
    EXPECT_EQ(CountDistinct(cells), 30u);
    pool.Give(cells);
}

TEST(ObjectPoolThreads, CellsTravelBetweenThreads) {
    static PoolOf40 pool(16, 20);
    std::mutex mutex;
    Cells pot;
    Qor::Core::Testing::OnThreads(4, [&](int) {
        for (std::size_t round = 0; round < 300; ++round) {
            Cells cells = pool.Take(round % 40);
            const std::lock_guard lock(mutex);
            std::swap(cells, pot);
            pool.Give(cells);
        }
    });
    pool.Give(pot);
    const Cells cells = pool.Take(2000);
    EXPECT_EQ(CountDistinct(cells), 2000u);
    pool.Give(cells);
}

ObjectPoolBase& SharedPool() {
    static auto* const pool = new ObjectPoolBase(8, 100);
    return *pool;
}

TEST(PoolAllocator, GivesSingleObjectsFromThePoolAndLeavesTheOthers) {
    struct alignas(64) Wide {
        char bytes[64];
    };
    const PoolAllocator<double, SharedPool> allocator;
    auto object = std::allocate_shared<double>(allocator, 1.5);
    const void* const first = object.get();
    object.reset();
    object = std::allocate_shared<double>(allocator, 2.5);
    EXPECT_TRUE(poolIsBypassed || object.get() == first);
    EXPECT_EQ(*object, 2.5);
    EXPECT_EQ((std::vector<int, PoolAllocator<int, SharedPool>>(1000, 7).back()), 7);
    const auto wide = std::allocate_shared<Wide>(PoolAllocator<Wide, SharedPool>());
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(wide.get()) % 64, 0u);
}

} // namespace
