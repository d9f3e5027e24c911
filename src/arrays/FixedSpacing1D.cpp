#include "FixedSpacingSerializer.h"

#include <Tivor/Position1D.h>

namespace Qor::Tivor {

FixedSpacing1D::FixedSpacing1D() : m_spacing(0.0, "Millimeter") {}

FixedSpacing1D::FixedSpacing1D(const UnitizedDouble& spacing) : m_spacing(spacing) {}

UnitizedDouble FixedSpacing1D::GetPosition(std::uint64_t index) const { return static_cast<double>(index) * m_spacing; }

bool FixedSpacing1D::SpacingIsFixed() const { return true; }

bool FixedSpacing1D::operator==(const FixedSpacing1D& other) const {
    return Details::SameValue(m_spacing, other.m_spacing);
}

std::string FixedSpacing1D::ToString() const { return m_spacing.ToString(); }

template <>
struct StoredSpacings<FixedSpacing1D> {
    static constexpr std::array rows = {StoredSpacing<FixedSpacing1D>{"Spacing", &FixedSpacing1D::GetSpacing}};
};

TIVOR_DEFINE_DERIVED_VALUE(Position1D, FixedSpacing1D)

} // namespace Qor::Tivor
