#pragma once

#include <Nalix/Storage.h>

namespace Qor::Nalix {

/// A vector of elements of any type that can be value-initialised and assigned. Copies share the elements: what one
/// writes, all see; `Clone` makes elements of its own.
///
/// Thread rule: different copies may be copied and destroyed by different threads; the elements are not guarded.
template <class T>
class Vector {
public:
    using value_type = T;

    Vector() noexcept = default;
    /// Numbers are not cleared, other elements are value-initialised. Raises `std::length_error` when so many elements
    /// cannot exist.
    explicit Vector(std::size_t count) : m_storage(count) {}

    std::size_t size() const noexcept { return m_storage.size(); }
    T* data() noexcept { return m_storage.data(); }
    const T* data() const noexcept { return m_storage.data(); }
    T& operator[](std::size_t index) noexcept { return m_storage.data()[index]; }
    const T& operator[](std::size_t index) const noexcept { return m_storage.data()[index]; }
    T* begin() noexcept { return data(); }
    T* end() noexcept { return data() + size(); }
    const T* begin() const noexcept { return data(); }
    const T* end() const noexcept { return data() + size(); }

    /// Keeps the leading elements; new numbers are not cleared. Elements that were shared with copies stay with those,
    /// unchanged. Raises like the constructor, and then changes nothing.
    void resize(std::size_t count) {
        if (count == size() && !m_storage.IsShared())
            return;
        Storage<T> next(count);
        std::copy_n(data(), std::min(count, size()), next.data());
        m_storage = std::move(next);
    }

    Vector Clone() const {
        Vector clone;
        clone.m_storage = m_storage.Clone();
        return clone;
    }

    friend bool operator==(const Vector& left, const Vector& right) {
        return std::equal(left.begin(), left.end(), right.begin(), right.end());
    }

private:
    Storage<T> m_storage;
};

} // namespace Qor::Nalix
