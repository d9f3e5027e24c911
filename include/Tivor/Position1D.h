#pragma once

#include <QorCore/Pointers.h>
#include <Tivor/BuiltInDataObjects.h>

#include <cstdint>
#include <memory>
#include <string>

namespace Qor::Tivor {

/// Tells where the samples of a profile lie: a position with a unit for each index.
///
/// Implementations are `final` and owned by a `std::shared_ptr` that was made for their own class: there is no virtual
/// destructor.
///
/// Thread rule of this class and its implementations here: no locks; any number of threads may read while none changes.
class TIVOR_API Position1D {
public:
    /// The position of the sample `index`, counted from 0.
    virtual UnitizedDouble GetPosition(std::uint64_t index) const = 0;
    /// Whether one spacing tells all positions.
    virtual bool SpacingIsFixed() const = 0;

protected:
    Position1D() = default;
    Position1D(const Position1D&) = default;
    Position1D& operator=(const Position1D&) = default;
    ~Position1D() = default;
};

/// The position of a sample is its index times the spacing, in the spacing's unit: the first lies at zero.
class TIVOR_API FixedSpacing1D final : public Position1D {
public:
    /// 0.0 Millimeter.
    FixedSpacing1D();
    explicit FixedSpacing1D(const UnitizedDouble& spacing);

    /// Any index is accepted.
    UnitizedDouble GetPosition(std::uint64_t index) const override;
    /// True.
    bool SpacingIsFixed() const override;

    const UnitizedDouble& GetSpacing() const { return m_spacing; }
    void SetSpacing(const UnitizedDouble& spacing) { m_spacing = spacing; }

    /// Same number, NaN equal to NaN, and exactly the same unit.
    bool operator==(const FixedSpacing1D& other) const;
    /// The spacing, as "0.5 mm".
    std::string ToString() const;

private:
    UnitizedDouble m_spacing;
};

/// The position of each sample stands in an array.
///
/// The array is shared with whoever handed it in, and between copies; `Clone` makes one of its own. Who changes the
/// array after handing it in changes the positions, and `SpacingIsFixed` stays as it was.
class TIVOR_API ArrayPosition1D final : public Position1D {
public:
    /// No positions, in the unit of plain numbers.
    ArrayPosition1D();
    /// As `SetPositionArray`.
    ArrayPosition1D(boost::shared_array<double> positions, std::uint64_t size,
                    std::shared_ptr<Core::UnitDescriptor> units);
    ArrayPosition1D(const ArrayPosition1D& other);
    ArrayPosition1D& operator=(const ArrayPosition1D& other);
    /// A copy with an array and a unit of its own.
    ArrayPosition1D Clone() const;

    /// Raises `OutOfRangeError` for an index that is not below `GetArraySize`.
    UnitizedDouble GetPosition(std::uint64_t index) const override;
    /// What was found when the array was set: true when there are at most two positions, or when the second one equals
    /// the step that leads to it within 2^-51, which is to say that the array starts at zero. Later steps do not count,
    /// and NaN equals nothing.
    bool SpacingIsFixed() const override;

    /// `size` positions in that unit; an empty unit stands for that of plain numbers. Raises `NullPointerError` when
    /// positions are announced and there is no array, and then changes nothing.
    void SetPositionArray(boost::shared_array<double> positions, std::uint64_t size,
                          std::shared_ptr<Core::UnitDescriptor> units);
    /// Replaces the unit by a copy of this one; the numbers stay as they are.
    void SetPositionUnits(const Core::UnitDescriptor& units);

    Core::QorConstArray<double> GetPositionArray() const;
    /// Never empty.
    Core::QorConstPtr<Core::UnitDescriptor> GetPositionUnits() const { return m_units; }
    std::uint64_t GetArraySize() const { return m_size; }

    /// Same positions, NaN equal to NaN, in exactly the same unit.
    bool operator==(const ArrayPosition1D& other) const;
    /// The first positions, as "[0, 1, 5] mm".
    std::string ToString() const;

private:
    std::shared_ptr<Core::UnitDescriptor> m_units;
    boost::shared_array<double> m_positions;
    std::uint64_t m_size = 0;
    bool m_spacingIsFixed = true;
};

/// The position functions of profiles that can be stored: expands TIVOR_VALUE(type, identifier, class name) for each.
/// The class of their data objects is `Data<FixedSpacing1D, GenericWrapper<Position1D>>`, and so on.
///
/// Stored form: of a fixed spacing a unitized value, in XML in an element "Spacing"; of an array its unit, a 64-bit
/// count and the positions.
#define TIVOR_POSITION_1D_VALUES                                                                                       \
    TIVOR_VALUE(FixedSpacing1D, eNAMED_CLASS, "FixedSpacing1D")                                                        \
    TIVOR_VALUE(ArrayPosition1D, eNAMED_CLASS, "ArrayPosition1D")

/// A position function of any class; without a class of its own it is not stored.
template <>
struct ValueTraits<Position1D> {
    static ETypeID GetTypeID() { return ePOSITION_1D; }
    static std::string GetTypeName() { return "Position1D"; }
    /// Indeterminate for two of the same class that is not one of this library.
    TIVOR_API static boost::logic::tribool Equal(const Position1D& left, const Position1D& right);
    TIVOR_API static std::string ToString(const Position1D& value);
};

extern template class TIVOR_API GenericWrapper<Position1D>;
#define TIVOR_VALUE(T, id, name) TIVOR_DECLARE_DERIVED_VALUE(Position1D, T, id, name)
TIVOR_POSITION_1D_VALUES
#undef TIVOR_VALUE

} // namespace Qor::Tivor
