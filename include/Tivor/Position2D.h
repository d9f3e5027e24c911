#pragma once

#include <QorCore/Pointers.h>
#include <Tivor/BuiltInDataObjects.h>

#include <cstdint>
#include <memory>
#include <string>

namespace Qor::Tivor {

/// Tells where the samples of a map lie: for each pair of indices a position along dimension 1, that of the first
/// index, and one along dimension 2, each with a unit.
///
/// Implementations are `final` and owned by a `std::shared_ptr` that was made for their own class: there is no virtual
/// destructor.
///
/// Thread rule of this class and its implementations here: no locks; any number of threads may read while none changes.
class TIVOR_API Position2D {
public:
    Position2D() = default;
    Position2D(const Position2D&) = default;
    Position2D(Position2D&&) = default;
    Position2D& operator=(const Position2D&) = default;
    Position2D& operator=(Position2D&&) = default;

    /// Makes `position` a vector of two: where the index `i` lies along dimension 1, and `j` along dimension 2.
    virtual void GetPosition(std::uint64_t i, std::uint64_t j, Nalix::Vector<UnitizedDouble>& position) const = 0;
    /// Whether one spacing tells all positions along the dimension.
    virtual bool Dim1SpacingIsFixed() const = 0;
    virtual bool Dim2SpacingIsFixed() const = 0;
    /// The spacing along the dimension where it is fixed, or an empty pointer, as always by default.
    virtual Core::QorConstPtr<UnitizedDouble> GetFixedDim1Spacing();
    virtual Core::QorConstPtr<UnitizedDouble> GetFixedDim2Spacing();
    Core::QorConstPtr<UnitizedDouble> GetFixedDim1Spacing() const;
    Core::QorConstPtr<UnitizedDouble> GetFixedDim2Spacing() const;

protected:
    ~Position2D() = default;
};

/// The position of a sample along a dimension is its index times the spacing there, in the spacing's unit: the first
/// sample lies at zero.
class TIVOR_API FixedSpacing2D final : public Position2D {
public:
    /// 0.0 Millimeter along both dimensions, aspect 1.
    FixedSpacing2D();
    FixedSpacing2D(const UnitizedDouble& dim1, const UnitizedDouble& dim2);
    /// The spacing along dimension 2 is `dim1` times the aspect, which stays as it is given.
    FixedSpacing2D(const UnitizedDouble& dim1, float aspect);
    /// The spacings along dimension 1 and dimension 2. Raises `OutOfRangeError` when there are fewer.
    explicit FixedSpacing2D(const Nalix::Vector<UnitizedDouble>& spacing);

    /// Any indices are accepted.
    void GetPosition(std::uint64_t i, std::uint64_t j, Nalix::Vector<UnitizedDouble>& position) const override;
    /// True.
    bool Dim1SpacingIsFixed() const override;
    bool Dim2SpacingIsFixed() const override;
    using Position2D::GetFixedDim1Spacing;
    using Position2D::GetFixedDim2Spacing;
    /// A copy: later changes do not reach it.
    Core::QorConstPtr<UnitizedDouble> GetFixedDim1Spacing() override;
    Core::QorConstPtr<UnitizedDouble> GetFixedDim2Spacing() override;

    const UnitizedDouble& GetDim1Spacing() const { return m_dim1Spacing; }
    const UnitizedDouble& GetDim2Spacing() const { return m_dim2Spacing; }
    /// The spacing along dimension 2 over that along dimension 1, whatever their units (1 mm under 500 um: 0.5). It is
    /// 1 where that has no meaning: for units of different dimensions, for units that are not divided (as those with an
    /// offset), and where the spacing along dimension 1 is 0.
    float GetAspect() const { return m_aspect; }

    /// Sets the aspect too.
    void SetDim1Spacing(const UnitizedDouble& spacing);
    void SetDim2Spacing(const UnitizedDouble& spacing);

    /// Same spacings, NaN equal to NaN, in exactly the same units. The aspect follows from them.
    bool operator==(const FixedSpacing2D& other) const;
    /// The spacings, as "1 mm x 2 mm".
    std::string ToString() const;

private:
    void UpdateAspect();

    float m_aspect = 1;
    UnitizedDouble m_dim1Spacing;
    UnitizedDouble m_dim2Spacing;
};

/// The positions along each dimension stand in an array.
///
/// The arrays are shared with whoever handed them in. Who changes an array after handing it in changes the positions,
/// and the fixed spacing stays as it was. Copies have arrays and units of their own.
class TIVOR_API ArrayPosition2D final : public Position2D {
public:
    /// No positions, in the unit of plain numbers.
    ArrayPosition2D();
    /// As `SetDim1PositionArray`, then `SetDim2PositionArray`.
    ArrayPosition2D(boost::shared_array<double> dim1, boost::shared_array<double> dim2, std::uint64_t dim1Size,
                    std::uint64_t dim2Size, std::shared_ptr<Core::UnitDescriptor> dim1Units,
                    std::shared_ptr<Core::UnitDescriptor> dim2Units);
    ArrayPosition2D(const ArrayPosition2D& other);
    /// Leaves a default object behind.
    ArrayPosition2D(ArrayPosition2D&& other);
    ArrayPosition2D& operator=(ArrayPosition2D other) noexcept;

    /// Raises `OutOfRangeError` for an index that is not below the size of its dimension.
    void GetPosition(std::uint64_t i, std::uint64_t j, Nalix::Vector<UnitizedDouble>& position) const override;
    /// Whether there is a fixed spacing.
    bool Dim1SpacingIsFixed() const override;
    bool Dim2SpacingIsFixed() const override;
    using Position2D::GetFixedDim1Spacing;
    using Position2D::GetFixedDim2Spacing;
    /// What was found when the array was set, the same object until it is set again, whatever becomes of the unit: the
    /// first step, in the array's unit, of two positions, or of more by the rule of `ArrayPosition1D::SpacingIsFixed`;
    /// 0.0 Meter for fewer.
    Core::QorConstPtr<UnitizedDouble> GetFixedDim1Spacing() override;
    Core::QorConstPtr<UnitizedDouble> GetFixedDim2Spacing() override;

    /// `size` positions in that unit; an empty unit stands for that of plain numbers. Raises `NullPointerError` when
    /// positions are announced and there is no array, and then changes nothing.
    void SetDim1PositionArray(boost::shared_array<double> positions, std::uint64_t size,
                              std::shared_ptr<Core::UnitDescriptor> units);
    void SetDim2PositionArray(boost::shared_array<double> positions, std::uint64_t size,
                              std::shared_ptr<Core::UnitDescriptor> units);
    /// Replaces the unit by a copy of this one; the numbers stay as they are.
    void SetDim1Units(const Core::UnitDescriptor& units);
    void SetDim2Units(const Core::UnitDescriptor& units);

    Core::QorConstArray<double> GetDim1PositionArray() const;
    Core::QorConstArray<double> GetDim2PositionArray() const;
    /// Never empty.
    Core::QorConstPtr<Core::UnitDescriptor> GetDim1Units() const { return m_dim1.units; }
    Core::QorConstPtr<Core::UnitDescriptor> GetDim2Units() const { return m_dim2.units; }
    std::uint64_t GetDim1Size() const { return m_dim1.size; }
    std::uint64_t GetDim2Size() const { return m_dim2.size; }

    /// Same positions, NaN equal to NaN, in exactly the same units.
    bool operator==(const ArrayPosition2D& other) const;
    /// The first positions along each dimension, as "[0, 1] mm x [0, 2] mm".
    std::string ToString() const;

private:
    struct Dimension {
        TIVOR_LOCAL Dimension();
        TIVOR_LOCAL Dimension Clone() const;
        TIVOR_LOCAL void Set(boost::shared_array<double> newPositions, std::uint64_t newSize,
                             std::shared_ptr<Core::UnitDescriptor> newUnits);

        std::shared_ptr<Core::UnitDescriptor> units;
        boost::shared_array<double> positions;
        std::uint64_t size = 0;
        std::shared_ptr<UnitizedDouble> fixedSpacing;
    };

    Dimension m_dim1;
    Dimension m_dim2;
};

/// The position functions of maps that can be stored: expands TIVOR_VALUE(type, identifier, class name) for each. The
/// class of their data objects is `Data<FixedSpacing2D, GenericWrapper<Position2D>>`, and so on.
///
/// Stored form, dimension 1 before dimension 2: of fixed spacings two unitized values, in XML in elements "Dim1Spacing"
/// and "Dim2Spacing"; of arrays a unit, a 64-bit count and the positions of each.
#define TIVOR_POSITION_2D_VALUES                                                                                       \
    TIVOR_VALUE(FixedSpacing2D, eNAMED_CLASS, "FixedSpacing2D")                                                        \
    TIVOR_VALUE(ArrayPosition2D, eNAMED_CLASS, "ArrayPosition2D")

/// A position function of any class; without a class of its own it is not stored.
template <>
struct ValueTraits<Position2D> {
    static ETypeID GetTypeID() { return ePOSITION_2D; }
    static std::string GetTypeName() { return "Position2D"; }
    /// Indeterminate for two of the same class that is not one of this library.
    TIVOR_API static boost::logic::tribool Equal(const Position2D& left, const Position2D& right);
    TIVOR_API static std::string ToString(const Position2D& value);
};

extern template class TIVOR_API GenericWrapper<Position2D>;
#define TIVOR_VALUE(T, id, name) TIVOR_DECLARE_DERIVED_VALUE(Position2D, T, id, name)
TIVOR_POSITION_2D_VALUES
#undef TIVOR_VALUE

} // namespace Qor::Tivor
