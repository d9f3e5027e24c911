#pragma once

#include <boost/shared_array.hpp>

#include <cstddef>
#include <memory>

namespace Qor::Core {

/// Shared ownership of an object that is only read.
template <class T>
using QorConstPtr = std::shared_ptr<const T>;

/// Shared ownership of an array that is only read, with its size. Empty when made without an array.
template <class T>
class QorConstArray {
public:
    QorConstArray() = default;
    QorConstArray(const boost::shared_array<T>& elements, std::size_t size) : m_elements(elements), m_size(size) {}

    std::size_t size() const { return m_size; }
    const T* get() const { return m_elements.get(); }
    const T& operator[](std::size_t index) const { return m_elements.get()[index]; }
    const T* begin() const { return get(); }
    const T* end() const { return get() + m_size; }

private:
    boost::shared_array<const T> m_elements;
    std::size_t m_size = 0;
};

} // namespace Qor::Core
