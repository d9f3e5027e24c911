#pragma once

#include <Nalix/Export.h>

#include <algorithm>
#include <atomic>
#include <complex>
#include <cstddef>
#include <memory>
#include <type_traits>
#include <utility>

namespace Qor::Nalix {

/// Whether elements of a type are left as the memory is until somebody writes them.
template <class T>
inline constexpr bool isLeftUnset = std::is_trivially_default_constructible_v<T>&& std::is_trivially_destructible_v<T>;
template <class T>
inline constexpr bool isLeftUnset<std::complex<T>> = std::is_trivially_destructible_v<T>;

/// The product of two extents. Raises `std::length_error` when so many elements of `elementSize` bytes cannot exist.
NALIX_API std::size_t CheckedCount(std::size_t extent1, std::size_t extent2, std::size_t elementSize);

/// Memory aligned to 64 bytes; from 4 MiB on, to 2 MiB, so that the system can back it with huge pages. Not cleared.
/// Raises `std::bad_alloc`.
NALIX_API void* AllocateBlock(std::size_t bytes);
/// Takes back what `AllocateBlock` gave for the same size.
NALIX_API void FreeBlock(void* block, std::size_t bytes) noexcept;

/// Handle of an array whose size is fixed. Copies of the handle share the elements, the last one destroys them.
///
/// Thread rule: different handles of one array may be copied and destroyed by different threads; the elements are not
/// guarded.
template <class T>
class Storage {
    static_assert(alignof(T) <= 64);

public:
    Storage() noexcept = default;
    /// Elements that `isLeftUnset` are not touched, others are value-initialised.
    explicit Storage(std::size_t count) {
        if (count == 0)
            return;
        auto owners = std::make_unique<Owners>();
        owners->count = CheckedCount(count, 1, sizeof(T));
        std::unique_ptr<void, Freeing> block(AllocateBlock(count * sizeof(T)), Freeing{count * sizeof(T)});
        m_data = static_cast<T*>(block.get());
        if constexpr (!isLeftUnset<T>)
            std::uninitialized_value_construct_n(m_data, count);
        block.release();
        m_owners = owners.release();
    }
    Storage(const Storage& other) noexcept : m_data(other.m_data), m_owners(other.m_owners) {
        if (m_owners != nullptr)
            m_owners->number.fetch_add(1, std::memory_order_relaxed);
    }
    Storage(Storage&& other) noexcept
        : m_data(std::exchange(other.m_data, nullptr)), m_owners(std::exchange(other.m_owners, nullptr)) {}
    Storage& operator=(Storage other) noexcept {
        std::swap(m_data, other.m_data);
        std::swap(m_owners, other.m_owners);
        return *this;
    }
    ~Storage() {
        if (m_owners != nullptr && m_owners->number.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            std::destroy_n(m_data, m_owners->count);
            FreeBlock(m_data, m_owners->count * sizeof(T));
            delete m_owners;
        }
    }

    T* data() const noexcept { return m_data; }
    std::size_t size() const noexcept { return m_owners != nullptr ? m_owners->count : 0; }
    bool IsShared() const noexcept {
        return m_owners != nullptr && m_owners->number.load(std::memory_order_acquire) != 1;
    }
    Storage Clone() const {
        Storage clone(size());
        std::copy_n(m_data, size(), clone.m_data);
        return clone;
    }

private:
    struct Owners {
        std::atomic<std::size_t> number{1};
        std::size_t count = 0;
    };
    struct Freeing {
        std::size_t bytes;
        void operator()(void* block) const noexcept { FreeBlock(block, bytes); }
    };

    T* m_data = nullptr;
    Owners* m_owners = nullptr;
};

} // namespace Qor::Nalix
