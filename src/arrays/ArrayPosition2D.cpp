#include "ArrayPositionSerializer.h"
#include "PositionArrays.h"

#include <QorCore/Message.h>
#include <Tivor/Position2D.h>

namespace Qor::Tivor {

namespace {

const char* const category = "Qor.Tivor.ArrayPosition2D";

std::shared_ptr<UnitizedDouble> FixedSpacingOf(const double* positions, std::uint64_t size,
                                               const std::shared_ptr<Core::UnitDescriptor>& units) {
    if (size <= 1)
        return std::make_shared<UnitizedDouble>(0.0, "Meter");
    if (size > 2 && !PositionArrays::AreEvenlySpaced(positions))
        return nullptr;
    return std::make_shared<UnitizedDouble>(positions[1] - positions[0], units);
}

Core::QorConstArray<double> ViewOf(const boost::shared_array<double>& positions, std::uint64_t size) {
    return {positions, static_cast<std::size_t>(size)};
}

} // namespace

ArrayPosition2D::Dimension::Dimension() { Set({}, 0, nullptr); }

ArrayPosition2D::Dimension ArrayPosition2D::Dimension::Clone() const {
    Dimension clone(*this);
    clone.units = units->Clone();
    clone.positions = PositionArrays::Copy(positions, size);
    return clone;
}

void ArrayPosition2D::Dimension::Set(boost::shared_array<double> newPositions, std::uint64_t newSize,
                                     std::shared_ptr<Core::UnitDescriptor> newUnits) {
    PositionArrays::RequirePositions(newPositions, newSize, QOR_CODE_CONTEXT("Position2D"), category);
    newUnits = PositionArrays::UnitsOrPlain(std::move(newUnits));
    fixedSpacing = FixedSpacingOf(newPositions.get(), newSize, newUnits);
    units = std::move(newUnits);
    positions = std::move(newPositions);
    size = newSize;
}

ArrayPosition2D::ArrayPosition2D() = default;

ArrayPosition2D::ArrayPosition2D(boost::shared_array<double> dim1, boost::shared_array<double> dim2,
                                 std::uint64_t dim1Size, std::uint64_t dim2Size,
                                 std::shared_ptr<Core::UnitDescriptor> dim1Units,
                                 std::shared_ptr<Core::UnitDescriptor> dim2Units) {
    SetDim1PositionArray(std::move(dim1), dim1Size, std::move(dim1Units));
    SetDim2PositionArray(std::move(dim2), dim2Size, std::move(dim2Units));
}

ArrayPosition2D::ArrayPosition2D(const ArrayPosition2D& other)
    : Position2D(other), m_dim1(other.m_dim1.Clone()), m_dim2(other.m_dim2.Clone()) {}

ArrayPosition2D::ArrayPosition2D(ArrayPosition2D&& other) {
    std::swap(m_dim1, other.m_dim1);
    std::swap(m_dim2, other.m_dim2);
}

ArrayPosition2D& ArrayPosition2D::operator=(ArrayPosition2D other) noexcept {
    std::swap(m_dim1, other.m_dim1);
    std::swap(m_dim2, other.m_dim2);
    return *this;
}

void ArrayPosition2D::GetPosition(std::uint64_t i, std::uint64_t j, Nalix::Vector<UnitizedDouble>& position) const {
    if (i >= m_dim1.size || j >= m_dim2.size)
        Core::Error::RaiseError(Core::OutOfRangeError(Core::FormatText(
                                    "Invalid coordinate position of (%1%,%2%) for position arrays of size (%3%,%4%)",
                                    {i, j, m_dim1.size, m_dim2.size})),
                                QOR_CODE_CONTEXT("Position2D"), category);
    position.resize(2);
    position[0] = {m_dim1.positions.get()[i], m_dim1.units};
    position[1] = {m_dim2.positions.get()[j], m_dim2.units};
}

bool ArrayPosition2D::Dim1SpacingIsFixed() const { return m_dim1.fixedSpacing != nullptr; }

bool ArrayPosition2D::Dim2SpacingIsFixed() const { return m_dim2.fixedSpacing != nullptr; }

Core::QorConstPtr<UnitizedDouble> ArrayPosition2D::GetFixedDim1Spacing() { return m_dim1.fixedSpacing; }

Core::QorConstPtr<UnitizedDouble> ArrayPosition2D::GetFixedDim2Spacing() { return m_dim2.fixedSpacing; }

void ArrayPosition2D::SetDim1PositionArray(boost::shared_array<double> positions, std::uint64_t size,
                                           std::shared_ptr<Core::UnitDescriptor> units) {
    m_dim1.Set(std::move(positions), size, std::move(units));
}

void ArrayPosition2D::SetDim2PositionArray(boost::shared_array<double> positions, std::uint64_t size,
                                           std::shared_ptr<Core::UnitDescriptor> units) {
    m_dim2.Set(std::move(positions), size, std::move(units));
}

void ArrayPosition2D::SetDim1Units(const Core::UnitDescriptor& units) { m_dim1.units = units.Clone(); }

void ArrayPosition2D::SetDim2Units(const Core::UnitDescriptor& units) { m_dim2.units = units.Clone(); }

Core::QorConstArray<double> ArrayPosition2D::GetDim1PositionArray() const {
    return ViewOf(m_dim1.positions, m_dim1.size);
}

Core::QorConstArray<double> ArrayPosition2D::GetDim2PositionArray() const {
    return ViewOf(m_dim2.positions, m_dim2.size);
}

bool ArrayPosition2D::operator==(const ArrayPosition2D& other) const {
    const auto isSame = [](const Dimension& left, const Dimension& right) {
        return PositionArrays::AreSame(ViewOf(left.positions, left.size), *left.units,
                                       ViewOf(right.positions, right.size), *right.units);
    };
    return isSame(m_dim1, other.m_dim1) && isSame(m_dim2, other.m_dim2);
}

std::string ArrayPosition2D::ToString() const {
    return PositionArrays::Text(GetDim1PositionArray(), *m_dim1.units) + " x " +
           PositionArrays::Text(GetDim2PositionArray(), *m_dim2.units);
}

template <>
struct PositionStorage<ArrayPosition2D> {
    static constexpr std::array rows = {
        StoredPositions<ArrayPosition2D>{&ArrayPosition2D::GetDim1Units, &ArrayPosition2D::GetDim1PositionArray},
        StoredPositions<ArrayPosition2D>{&ArrayPosition2D::GetDim2Units, &ArrayPosition2D::GetDim2PositionArray}};

    static ArrayPosition2D Make(const ReadPositions& dim1, const ReadPositions& dim2) {
        return {dim1.positions, dim2.positions, dim1.size, dim2.size, dim1.units, dim2.units};
    }
};

TIVOR_DEFINE_DERIVED_VALUE(Position2D, ArrayPosition2D)

} // namespace Qor::Tivor
