#include "ArrayPositionSerializer.h"
#include "PositionArrays.h"

#include <QorCore/Message.h>
#include <Tivor/Position1D.h>

namespace Qor::Tivor {

namespace {

const char* const category = "Qor.Tivor.ArrayPosition1D";

} // namespace

ArrayPosition1D::ArrayPosition1D() : m_units(Core::UnitDescriptor::Create({}, {})) {}

ArrayPosition1D::ArrayPosition1D(boost::shared_array<double> positions, std::uint64_t size,
                                 std::shared_ptr<Core::UnitDescriptor> units) {
    SetPositionArray(std::move(positions), size, std::move(units));
}

ArrayPosition1D::ArrayPosition1D(const ArrayPosition1D&) = default;

ArrayPosition1D& ArrayPosition1D::operator=(const ArrayPosition1D&) = default;

ArrayPosition1D ArrayPosition1D::Clone() const {
    ArrayPosition1D clone(*this);
    clone.m_units = m_units->Clone();
    clone.m_positions = PositionArrays::Copy(m_positions, m_size);
    return clone;
}

UnitizedDouble ArrayPosition1D::GetPosition(std::uint64_t index) const {
    if (index >= m_size)
        Core::Error::RaiseError(Core::OutOfRangeError(Core::FormatText(
                                    "Invalid array index of%1% for position array of size %2%", {index, m_size})),
                                QOR_CODE_CONTEXT("Position1D"), category);
    return {m_positions.get()[index], m_units};
}

bool ArrayPosition1D::SpacingIsFixed() const { return m_spacingIsFixed; }

void ArrayPosition1D::SetPositionArray(boost::shared_array<double> positions, std::uint64_t size,
                                       std::shared_ptr<Core::UnitDescriptor> units) {
    PositionArrays::RequirePositions(positions, size, QOR_CODE_CONTEXT("Position1D"), category);
    m_units = PositionArrays::UnitsOrPlain(std::move(units));
    m_positions = std::move(positions);
    m_size = size;
    m_spacingIsFixed = size <= 2 || PositionArrays::AreEvenlySpaced(m_positions.get());
}

void ArrayPosition1D::SetPositionUnits(const Core::UnitDescriptor& units) { m_units = units.Clone(); }

Core::QorConstArray<double> ArrayPosition1D::GetPositionArray() const {
    return {m_positions, static_cast<std::size_t>(m_size)};
}

bool ArrayPosition1D::operator==(const ArrayPosition1D& other) const {
    return PositionArrays::AreSame(GetPositionArray(), *m_units, other.GetPositionArray(), *other.m_units);
}

std::string ArrayPosition1D::ToString() const { return PositionArrays::Text(GetPositionArray(), *m_units); }

template <>
struct PositionStorage<ArrayPosition1D> {
    static constexpr std::array rows = {
        StoredPositions<ArrayPosition1D>{&ArrayPosition1D::GetPositionUnits, &ArrayPosition1D::GetPositionArray}};

    static ArrayPosition1D Make(const ReadPositions& read) { return {read.positions, read.size, read.units}; }
};

TIVOR_DEFINE_DERIVED_VALUE(Position1D, ArrayPosition1D)

} // namespace Qor::Tivor
