#pragma once

#include <Nalix/Storage.h>

namespace Qor::Nalix {

/// The second index runs fastest in storage.
struct basic_row_major {
    static constexpr std::size_t IndexOf(std::size_t i, std::size_t j, std::size_t, std::size_t size2) noexcept {
        return i * size2 + j;
    }
};

/// The first index runs fastest in storage.
struct basic_column_major {
    static constexpr std::size_t IndexOf(std::size_t i, std::size_t j, std::size_t size1, std::size_t) noexcept {
        return j * size1 + i;
    }
};

/// A dense matrix, `size1` x `size2`; dimension 1 is the first index whatever the storage order. Elements may be of any
/// type that can be value-initialised and assigned. Copies share the elements: what one writes, all see; `Clone` makes
/// elements of its own.
///
/// Thread rule: different copies may be copied and destroyed by different threads; the elements are not guarded.
template <class T, class Order>
class Matrix {
public:
    using value_type = T;
    using order_type = Order;

    Matrix() noexcept = default;
    /// Numbers are not cleared, other elements are value-initialised. Raises `std::length_error` when so many elements
    /// cannot exist.
    Matrix(std::size_t size1, std::size_t size2)
        : m_storage(CheckedCount(size1, size2, sizeof(T))), m_size1(size1), m_size2(size2) {}
    Matrix(const Matrix&) noexcept = default;
    Matrix(Matrix&& other) noexcept
        : m_storage(std::move(other.m_storage)), m_size1(std::exchange(other.m_size1, 0)),
          m_size2(std::exchange(other.m_size2, 0)) {}
    Matrix& operator=(Matrix other) noexcept {
        m_storage = std::move(other.m_storage);
        m_size1 = other.m_size1;
        m_size2 = other.m_size2;
        return *this;
    }
    ~Matrix() = default;

    std::size_t size1() const noexcept { return m_size1; }
    std::size_t size2() const noexcept { return m_size2; }
    std::size_t size() const noexcept { return m_size1 * m_size2; }

    /// The elements in storage order.
    T* data() noexcept { return m_storage.data(); }
    const T* data() const noexcept { return m_storage.data(); }

    T& operator()(std::size_t i, std::size_t j) noexcept {
        return m_storage.data()[Order::IndexOf(i, j, m_size1, m_size2)];
    }
    const T& operator()(std::size_t i, std::size_t j) const noexcept {
        return m_storage.data()[Order::IndexOf(i, j, m_size1, m_size2)];
    }

    /// The contents are unspecified afterwards. Elements that were shared with copies stay with those, unchanged.
    /// Raises like the constructor, and then changes nothing.
    void resize(std::size_t size1, std::size_t size2) {
        const std::size_t count = CheckedCount(size1, size2, sizeof(T));
        if (count != size() || m_storage.IsShared())
            m_storage = Storage<T>(count);
        m_size1 = size1;
        m_size2 = size2;
    }

    Matrix Clone() const {
        Matrix clone;
        clone.m_storage = m_storage.Clone();
        clone.m_size1 = m_size1;
        clone.m_size2 = m_size2;
        return clone;
    }

    friend bool operator==(const Matrix& left, const Matrix& right) {
        return left.m_size1 == right.m_size1 && left.m_size2 == right.m_size2 &&
               std::equal(left.data(), left.data() + left.size(), right.data());
    }

private:
    Storage<T> m_storage;
    std::size_t m_size1 = 0;
    std::size_t m_size2 = 0;
};

} // namespace Qor::Nalix
