#pragma once

#include <QorCore/Alert.h>
#include <QorCore/Pointers.h>
#include <QorCore/UnitDescriptor.h>

#include <cstdint>
#include <memory>
#include <string>

/// What arrays of positions have in common, whether they stand alone or for one dimension of two.
namespace Qor::Tivor::PositionArrays {

/// Whether more than two positions count as evenly spaced: the second one within 2^-51 of the first step. What is
/// stored and shown depends on exactly this comparison, in doubles: whoever improves it gives old files other
/// positions.
inline bool AreEvenlySpaced(const double* positions) {
    constexpr double tolerance = 0x1p-51;
    const double step = positions[1] - positions[0];
    return step - tolerance <= positions[1] && positions[1] <= step + tolerance;
}

/// Raises `NullPointerError` when positions are announced and there is no array.
void RequirePositions(const boost::shared_array<double>& positions, std::uint64_t size,
                      const Core::CodeContext& context, const char* category);

/// The unit, or that of plain numbers for none.
std::shared_ptr<Core::UnitDescriptor> UnitsOrPlain(std::shared_ptr<Core::UnitDescriptor> units);

boost::shared_array<double> Copy(const boost::shared_array<double>& positions, std::uint64_t size);

/// The same positions in the same unit, NaN as any other.
bool AreSame(const Core::QorConstArray<double>& left, const Core::UnitDescriptor& leftUnits,
             const Core::QorConstArray<double>& right, const Core::UnitDescriptor& rightUnits);

std::string Text(const Core::QorConstArray<double>& positions, const Core::UnitDescriptor& units);

} // namespace Qor::Tivor::PositionArrays
