#include <QorCore/ObjectPool.h>

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <thread>
#include <vector>

namespace {

using Qor::Core::ObjectPoolBase;

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

    std::vector<void*> Take(std::size_t count) {
        std::vector<void*> cells;
        for (; count != 0; --count) {
            cells.push_back(m_pool.Allocate(40));
            std::memset(cells.back(), 0xA5, 40);
        }
        return cells;
    }
    void Give(const std::vector<void*>& cells) {
        for (void* const cell : cells)
            m_pool.Free(cell, 40);
    }
    ObjectPoolBase& Get() { return m_pool; }

private:
    ObjectPoolBase& m_pool;
};

std::set<void*> Together(const std::vector<void*>& cells, const std::vector<void*>& more = {}) {
    std::set<void*> all(cells.begin(), cells.end());
    all.insert(more.begin(), more.end());
    return all;
}

TEST(ObjectPoolThreads, CellsAreDistinctAlignedAndUsedAgain) {
    static PoolOf40 pools[] = {{1, 1}, {64, 1000}, {64, 3}, {5, 7}};
    for (PoolOf40& pool : pools) {
        const std::vector<void*> first = pool.Take(500);
        EXPECT_EQ(Together(first).size(), 500u);
        for (void* const cell : first)
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(cell) % 8, 0u);
        pool.Give(first);
        const std::vector<void*> second = pool.Take(500);
        EXPECT_EQ(Together(second).size(), 500u);
        // A last block may have had cells that nobody had taken yet.
        if (!poolIsBypassed) {
            EXPECT_LE(Together(first, second).size(), 500u + 64u);
        }
        pool.Give(second);
    }
}

TEST(ObjectPoolThreads, OtherSizesPassThePoolBy) {
    static PoolOf40 pool(4, 10);
    pool.Give(pool.Take(1));
    for (const std::size_t size : {1u, 39u, 41u, 4096u}) {
        void* const memory = pool.Get().Allocate(size);
        std::memset(memory, 1, size);
        pool.Get().Free(memory, size);
    }
    const std::vector<void*> cells = pool.Take(4);
    EXPECT_EQ(Together(cells).size(), 4u);
    pool.Give(cells);
}

TEST(ObjectPoolThreads, SurplusAndListsOfEndedThreadsServeOtherThreads) {
    if (poolIsBypassed)
        GTEST_SKIP() << "cells come from operator new";
    static PoolOf40 pool(8, 10);
    std::vector<void*> cells;
    std::thread([&] { cells = pool.Take(100); }).join();
    // Ninety of them are above the limit of this thread.
    pool.Give(cells);
    std::vector<void*> others;
    std::thread([&] { others = pool.Take(80); }).join();
    EXPECT_LE(Together(cells, others).size(), 100u + 8u);
    std::thread([&] { pool.Give(others); }).join();
    others = pool.Take(100);
    EXPECT_LE(Together(cells, others).size(), 100u + 8u);
    pool.Give(others);
}

TEST(ObjectPoolThreads, CellsMayBeFreedWhileTheThreadIsEnding) {
    static PoolOf40 pool(8, 10);
    static std::atomic<bool> isFreed;
    struct FreesAtEnd {
        ~FreesAtEnd() {
            pool.Give(cells);
            pool.Give(pool.Take(3));
            isFreed = true;
        }
        std::vector<void*> cells;
    };
    std::thread([] {
        // Made before the pool's own end of thread, therefore destroyed after it.
        static thread_local FreesAtEnd atEnd;
        atEnd.cells = pool.Take(30);
    }).join();
    EXPECT_TRUE(isFreed);
    const std::vector<void*> cells = pool.Take(30);
    EXPECT_EQ(Together(cells).size(), 30u);
    pool.Give(cells);
}

TEST(ObjectPoolThreads, CellsTravelBetweenThreads) {
    static PoolOf40 pool(16, 20);
    std::mutex mutex;
    std::vector<void*> pot;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back([&] {
            for (std::size_t round = 0; round < 300; ++round) {
                std::vector<void*> cells = pool.Take(round % 40);
                const std::lock_guard lock(mutex);
                std::swap(cells, pot);
                pool.Give(cells);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    pool.Give(pot);
    const std::vector<void*> cells = pool.Take(2000);
    EXPECT_EQ(Together(cells).size(), 2000u);
    pool.Give(cells);
}

ObjectPoolBase& SharedPool() {
    static auto* const pool = new ObjectPoolBase(8, 100);
    return *pool;
}

TEST(PoolAllocator, ServesAllocateShared) {
    struct Counted {
        explicit Counted(int& count) : m_count(count) { ++m_count; }
        ~Counted() { --m_count; }
        int& m_count;
    };
    struct alignas(64) Wide {
        char bytes[64];
    };
    int count = 0;
    const Qor::Core::PoolAllocator<Counted, SharedPool> allocator;
    std::vector<std::shared_ptr<Counted>> objects;
    for (int index = 0; index < 50; ++index)
        objects.push_back(std::allocate_shared<Counted>(allocator, count));
    EXPECT_EQ(count, 50);
    const void* const last = objects.back().get();
    objects.pop_back();
    if (!poolIsBypassed) {
        EXPECT_EQ(std::allocate_shared<Counted>(allocator, count).get(), last);
    }
    objects.clear();
    EXPECT_EQ(count, 0);

    std::vector<int, Qor::Core::PoolAllocator<int, SharedPool>> array(1000, 7);
    EXPECT_EQ(array.back(), 7);
    const auto wide = std::allocate_shared<Wide>(Qor::Core::PoolAllocator<Wide, SharedPool>());
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(wide.get()) % 64, 0u);
}

} // namespace
