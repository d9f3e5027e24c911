#include "TestHeap.h"

#include "Platform.h"

#include <QorCore/MemoryStreams.h>
#include <Tivor/DataContainer.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <new>

namespace Qor::Tivor::Testing {

namespace {

struct ThreadHeap {
    bool watched = false;
    std::int64_t held = 0;
    std::int64_t peak = 0;
    std::int64_t limit = 0;
    int callsUntilFailure = 0; // 0: none is to fail
    bool failsForEver = false;
    bool hasFailed = false;
};

constinit thread_local ThreadHeap heap;

constexpr std::size_t most = std::size_t{1} << 62;

bool MustFail() {
    if (heap.callsUntilFailure == 0 || (heap.callsUntilFailure > 1 && --heap.callsUntilFailure > 0))
        return false;
    heap.callsUntilFailure = heap.failsForEver ? 1 : 0;
    return heap.hasFailed = true;
}

bool IsBeyondLimit(std::size_t size) {
    if (!heap.watched)
        return false;
    const auto asked = static_cast<std::int64_t>(std::min(size, most));
    heap.peak = std::max(heap.peak, heap.held + asked);
    return heap.held + asked > heap.limit;
}

// Stands in front of each block.
struct BlockHeader {
    void* memory;
    std::size_t size;
};

[[maybe_unused]] void* Take(std::size_t size, std::size_t alignment) {
    if (MustFail() || IsBeyondLimit(size) || size > most)
        throw std::bad_alloc();
    std::size_t room = size + alignment;
    void* const memory = std::malloc(sizeof(BlockHeader) + room);
    if (memory == nullptr)
        throw std::bad_alloc();
    heap.held += static_cast<std::int64_t>(size);
    void* block = static_cast<std::byte*>(memory) + sizeof(BlockHeader);
    std::align(alignment, size, block, room);
    const BlockHeader header{memory, size};
    std::memcpy(static_cast<std::byte*>(block) - sizeof header, &header, sizeof header);
    return block;
}

[[maybe_unused]] void Return(void* block) noexcept {
    if (block == nullptr)
        return;
    BlockHeader header{};
    std::memcpy(&header, static_cast<std::byte*>(block) - sizeof header, sizeof header);
    heap.held -= static_cast<std::int64_t>(header.size);
    std::free(header.memory);
}

[[maybe_unused]] constexpr std::size_t usual = __STDCPP_DEFAULT_NEW_ALIGNMENT__;

} // namespace

HeapWatch::HeapWatch(std::uint64_t limit) {
    heap.watched = true;
    heap.held = heap.peak = 0;
    heap.limit = static_cast<std::int64_t>(limit);
}

HeapWatch::~HeapWatch() { heap.watched = false; }

std::uint64_t HeapWatch::GetPeak() const { return static_cast<std::uint64_t>(heap.peak); }

FailingHeap::FailingHeap(int n, bool forEver) {
    heap.hasFailed = false;
    heap.failsForEver = forEver;
    heap.callsUntilFailure = n;
}

FailingHeap::~FailingHeap() { heap.callsUntilFailure = 0; }

bool FailingHeap::HasFailed() const { return heap.hasFailed; }

TEST(TestHeap, SeesWhatTheLibrariesTake) {
    if (Core::Testing::isWindows)
        GTEST_SKIP() << "here the libraries have operators of their own, and what they take is not measured";
    constexpr std::uint64_t size = 100'000;
    {
        const HeapWatch watch(10 * size);
        EXPECT_GE((Core::MemoryOutputStream(size), watch.GetPeak()), size);
        const RowMajorMatrix<double> matrix(100, 1000);
        EXPECT_GE(watch.GetPeak(), 8 * size);
        EXPECT_THROW(Core::MemoryOutputStream(20 * size), std::bad_alloc);
    }
    const FailingHeap failing(2, true);
    EXPECT_THROW(DataContainer::Create(), std::bad_alloc);
    EXPECT_TRUE(failing.HasFailed());
}

} // namespace Qor::Tivor::Testing

using namespace Qor::Tivor::Testing;

// All forms: a sanitizer brings its own of each that is missing.
#define TIVOR_TEST_HEAP(brackets)                                                                                      \
    void* operator new brackets(std::size_t size) { return Take(size, usual); }                                        \
    void* operator new brackets(std::size_t size, std::align_val_t alignment) {                                        \
        return Take(size, static_cast<std::size_t>(alignment));                                                        \
    }                                                                                                                  \
    void* operator new brackets(std::size_t size, const std::nothrow_t&) noexcept {                                    \
        try {                                                                                                          \
            return Take(size, usual);                                                                                  \
        } catch (const std::bad_alloc&) {                                                                              \
            return nullptr;                                                                                            \
        }                                                                                                              \
    }                                                                                                                  \
    void operator delete brackets(void* block) noexcept { Return(block); }                                             \
    void operator delete brackets(void* block, std::size_t) noexcept { Return(block); }                                \
    void operator delete brackets(void* block, const std::nothrow_t&) noexcept { Return(block); }                      \
    void operator delete brackets(void* block, std::align_val_t) noexcept { Return(block); }                           \
    void operator delete brackets(void* block, std::size_t, std::align_val_t) noexcept { Return(block); }
// The thread sanitizer's operators cannot be replaced; in its lane these tests are built, and not run. On Windows each
// library keeps its own.
#if defined(TIVOR_TEST_ON_WINDOWS)
#define TIVOR_KEEPS_HEAP
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define TIVOR_KEEPS_HEAP
#endif
#endif
#if !defined(TIVOR_KEEPS_HEAP)
TIVOR_TEST_HEAP()
TIVOR_TEST_HEAP([])
#endif
