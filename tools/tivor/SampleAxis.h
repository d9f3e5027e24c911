#pragma once

#include <Tivor/Data1D.h>
#include <Tivor/Data2D.h>

#include <vector>

namespace Qor::Tivor::Tool {

/// Where the samples lie along one dimension. Positions that are not known, or no finite numbers, or all the same, are
/// told by counting.
class SampleAxis {
public:
    static SampleAxis Of(const Data1D& profile);
    /// Dimension 1 or 2.
    static SampleAxis Of(const Data2D& surface, int dimension);

    std::size_t GetCount() const { return m_count; }
    bool IsKnown() const { return m_isKnown; }
    /// The unit of positions.
    const Core::UnitDescriptor& GetUnit() const { return m_unit; }
    double GetPosition(std::size_t index) const;
    /// The mean distance from one to the next, above zero.
    double GetStep() const;
    /// What all take, one step each.
    double GetLength() const { return GetStep() * static_cast<double>(m_count); }
    /// The sample that is nearest to a place along the length, which is told as a share of it.
    std::size_t FindIndex(double share) const;

private:
    explicit SampleAxis(std::size_t count) : m_count(count) {}
    void SetSpacing(const UnitizedDouble& spacing);
    void SetPositions(const Core::QorConstArray<double>& positions,
                      const Core::QorConstPtr<Core::UnitDescriptor>& unit);

    std::size_t m_count;
    bool m_isKnown = false;
    bool m_areInOrder = false;
    double m_step = 1;
    std::vector<double> m_positions; ///< none: a fixed spacing
    Core::UnitDescriptor m_unit;
};

} // namespace Qor::Tivor::Tool
