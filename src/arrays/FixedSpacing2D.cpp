#include "FixedSpacingSerializer.h"

#include <QorCore/Message.h>
#include <Tivor/Position2D.h>

namespace Qor::Tivor {

namespace {

/// Empty where units of the same dimensions are not divided.
std::optional<double> Ratio(const UnitizedDouble& dividend, const UnitizedDouble& divisor) {
    try {
        return (dividend / divisor).GetSIValue(); // 50 % under the plain number 2 are 25 %
    } catch (const Core::IllegalUnitConversion&) {
        return std::nullopt;
    }
}

const Nalix::Vector<UnitizedDouble>& RequireTwo(const Nalix::Vector<UnitizedDouble>& spacing) {
    if (spacing.size() < 2)
        Core::Error::RaiseError(Core::OutOfRangeError(Core::FormatText(
                                    "Expected the spacings of 2 dimensions, found %1%", {spacing.size()})),
                                QOR_CODE_CONTEXT("Position2D"), "Qor.Tivor.FixedSpacing2D");
    return spacing;
}

} // namespace

FixedSpacing2D::FixedSpacing2D() : m_dim1Spacing(0.0, "Millimeter"), m_dim2Spacing(m_dim1Spacing) {}

FixedSpacing2D::FixedSpacing2D(const UnitizedDouble& dim1, const UnitizedDouble& dim2)
    : m_dim1Spacing(dim1), m_dim2Spacing(dim2) {
    UpdateAspect();
}

FixedSpacing2D::FixedSpacing2D(const UnitizedDouble& dim1, float aspect)
    : m_aspect(aspect), m_dim1Spacing(dim1), m_dim2Spacing(dim1 * static_cast<double>(aspect)) {}

FixedSpacing2D::FixedSpacing2D(const Nalix::Vector<UnitizedDouble>& spacing)
    : FixedSpacing2D(RequireTwo(spacing)[0], spacing[1]) {}

void FixedSpacing2D::GetPosition(std::uint64_t i, std::uint64_t j, Nalix::Vector<UnitizedDouble>& position) const {
    position.resize(2);
    position[0] = static_cast<double>(i) * m_dim1Spacing;
    position[1] = static_cast<double>(j) * m_dim2Spacing;
}

bool FixedSpacing2D::Dim1SpacingIsFixed() const { return true; }

bool FixedSpacing2D::Dim2SpacingIsFixed() const { return true; }

Core::QorConstPtr<UnitizedDouble> FixedSpacing2D::GetFixedDim1Spacing() {
    return std::make_shared<UnitizedDouble>(m_dim1Spacing);
}

Core::QorConstPtr<UnitizedDouble> FixedSpacing2D::GetFixedDim2Spacing() {
    return std::make_shared<UnitizedDouble>(m_dim2Spacing);
}

void FixedSpacing2D::SetDim1Spacing(const UnitizedDouble& spacing) {
    m_dim1Spacing = spacing;
    UpdateAspect();
}

void FixedSpacing2D::SetDim2Spacing(const UnitizedDouble& spacing) {
    m_dim2Spacing = spacing;
    UpdateAspect();
}

void FixedSpacing2D::UpdateAspect() {
    const bool hasRatio =
        m_dim1Spacing.GetValue() != 0 && m_dim1Spacing.GetUnits()->IsDimensionallyEquivalent(*m_dim2Spacing.GetUnits());
    m_aspect = hasRatio ? static_cast<float>(Ratio(m_dim2Spacing, m_dim1Spacing).value_or(1.0)) : 1.0f;
}

bool FixedSpacing2D::operator==(const FixedSpacing2D& other) const {
    return Details::SameValue(m_dim1Spacing, other.m_dim1Spacing) &&
           Details::SameValue(m_dim2Spacing, other.m_dim2Spacing);
}

std::string FixedSpacing2D::ToString() const { return m_dim1Spacing.ToString() + " x " + m_dim2Spacing.ToString(); }

template <>
struct StoredSpacings<FixedSpacing2D> {
    static constexpr std::array rows = {StoredSpacing<FixedSpacing2D>{"Dim1Spacing", &FixedSpacing2D::GetDim1Spacing},
                                        StoredSpacing<FixedSpacing2D>{"Dim2Spacing", &FixedSpacing2D::GetDim2Spacing}};
};

TIVOR_DEFINE_DERIVED_VALUE(Position2D, FixedSpacing2D)

} // namespace Qor::Tivor
