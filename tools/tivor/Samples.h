#pragma once

#include <Tivor/Data1D.h>
#include <Tivor/Data2D.h>

#include <cstddef>
#include <memory>
#include <type_traits>

namespace Qor::Tivor::Tool {

/// The real samples of a measured array, of whatever type and order: rows of points, a profile is one row. Shares them.
class Samples {
public:
    /// Of others there are none.
    explicit Samples(const Data2D& surface);
    explicit Samples(const Data1D& profile);

    std::size_t NumRows() const { return m_rows; }
    std::size_t NumColumns() const { return m_columns; }
    /// Exact, with its 64 bits of integers.
    long double At(std::size_t row, std::size_t column) const {
        return m_read(m_data, row * m_rowStep + column * m_columnStep);
    }

private:
    template <class T>
    static long double Read(const void* data, std::size_t index) {
        const T& sample = static_cast<const T*>(data)[index];
        if constexpr (std::is_arithmetic_v<T>)
            return static_cast<long double>(sample);
        else
            return static_cast<long double>(sample.value);
    }

    std::shared_ptr<const void> m_owner;
    const void* m_data = nullptr;
    long double (*m_read)(const void* data, std::size_t index) = nullptr;
    std::size_t m_rows = 0;
    std::size_t m_columns = 0;
    std::size_t m_rowStep = 0;
    std::size_t m_columnStep = 1;
};

/// The samples, of which there are some. Raises a `ToolError` where there are none, and where they are no real numbers.
Samples RequireSamples(const Data2D& surface);
Samples RequireSamples(const Data1D& profile);

} // namespace Qor::Tivor::Tool
