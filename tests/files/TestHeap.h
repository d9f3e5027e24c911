#pragma once

#include <cstdint>

namespace Qor::Tivor::Testing {

// This program has an `operator new` of its own, which all libraries in it use. Both classes concern what the thread
// that made them does while they live; they do not nest.

/// Measures how much more the thread holds than in the beginning. What would go beyond the limit fails, so that a test
/// of a bomb does not set it off.
class HeapWatch {
public:
    explicit HeapWatch(std::uint64_t limit);
    HeapWatch(const HeapWatch&) = delete;
    HeapWatch& operator=(const HeapWatch&) = delete;
    ~HeapWatch();

    /// The most that was held, or asked for in vain.
    std::uint64_t GetPeak() const;
};

/// Lets the n-th call (1 is the next) of `operator new` fail, with `forEver` that one and all that follow.
class FailingHeap {
public:
    FailingHeap(int n, bool forEver);
    FailingHeap(const FailingHeap&) = delete;
    FailingHeap& operator=(const FailingHeap&) = delete;
    ~FailingHeap();

    bool HasFailed() const;
};

} // namespace Qor::Tivor::Testing
