#include "SampleAxis.h"

#include <algorithm>
#include <cmath>

namespace Qor::Tivor::Tool {

SampleAxis SampleAxis::Of(const Data1D& profile) {
    SampleAxis axis(profile.GetNumPoints());
    UnitizedDouble spacing;
    if (profile.GetFixedSpacing(spacing))
        axis.SetSpacing(spacing);
    else
        axis.SetPositions(profile.GetPositionArray(), profile.GetPositionUnits());
    return axis;
}

SampleAxis SampleAxis::Of(const Data2D& surface, int dimension) {
    const bool isFirst = dimension == 1;
    SampleAxis axis(isFirst ? surface.GetNumDimension1Points() : surface.GetNumDimension2Points());
    UnitizedDouble spacing1, spacing2;
    if (surface.GetFixedSpacing(spacing1, spacing2))
        axis.SetSpacing(isFirst ? spacing1 : spacing2);
    else if (isFirst)
        axis.SetPositions(surface.GetDim1PositionArray(), surface.GetDim1PositionUnits());
    else
        axis.SetPositions(surface.GetDim2PositionArray(), surface.GetDim2PositionUnits());
    return axis;
}

void SampleAxis::SetSpacing(const UnitizedDouble& spacing) {
    if (!std::isnormal(spacing.GetValue()) || !std::isfinite(spacing.GetValue() * static_cast<double>(m_count)))
        return;
    m_isKnown = true;
    m_step = spacing.GetValue();
    m_unit = *spacing.GetUnits();
}

void SampleAxis::SetPositions(const Core::QorConstArray<double>& positions,
                              const Core::QorConstPtr<Core::UnitDescriptor>& unit) {
    if (positions.size() < m_count || m_count < 2 || !unit)
        return;
    std::vector<double> found(positions.begin(), positions.begin() + m_count);
    const auto [least, greatest] = std::minmax_element(found.begin(), found.end());
    if (!std::all_of(found.begin(), found.end(), [](double position) { return std::isfinite(position); }) ||
        !std::isnormal(*greatest - *least))
        return;
    m_isKnown = true;
    m_step = (*greatest - *least) / static_cast<double>(m_count - 1);
    m_areInOrder = std::is_sorted(found.begin(), found.end()) || std::is_sorted(found.rbegin(), found.rend());
    m_positions = std::move(found);
    m_unit = *unit;
}

double SampleAxis::GetPosition(std::size_t index) const {
    return m_positions.empty() ? m_step * static_cast<double>(index) : m_positions[index];
}

double SampleAxis::GetStep() const { return std::abs(m_step); }

std::size_t SampleAxis::FindIndex(double share) const {
    const auto last = static_cast<double>(m_count - 1);
    if (!m_areInOrder)
        return static_cast<std::size_t>(std::clamp(share * static_cast<double>(m_count), 0.0, last));
    const double sign = m_positions.front() <= m_positions.back() ? 1 : -1;
    const double place = m_positions.front() + sign * (share * GetLength() - GetStep() / 2);
    const auto behind = std::lower_bound(m_positions.begin(), m_positions.end(), place,
                                         [sign](double one, double other) { return sign * one < sign * other; });
    if (behind == m_positions.end())
        return m_count - 1;
    const bool isBeforeNearer = behind != m_positions.begin() && place - behind[-1] != 0 &&
                                std::abs(place - behind[-1]) < std::abs(*behind - place);
    return static_cast<std::size_t>(behind - m_positions.begin()) - (isBeforeNearer ? 1 : 0);
}

} // namespace Qor::Tivor::Tool
