#pragma once

#include <QorCore/UnitDictionary.h>

#include <string>

namespace Qor::Core {

QOR_DECLARE_ALERT(QOR_CORE_API, IllegalUnitConversion, LogicError);

/// A number with a unit. Copies share the unit's descriptor.
///
/// Arithmetic keeps the units that it is given instead of going to SI:
/// * sums and differences have the unit of the left side; the right side is converted. Units that differ in offset, as
///   Kelvin and Celsius, are refused: whether 5 K is a difference or a temperature cannot be known.
/// * a number without dimensions, times or under a value, leaves that value's unit as it is (3 x 2 mm = 6 mm,
///   50 % x 2 mm = 1 mm, 1 mm / 50 % = 2 mm). Two of them give a plain number, unless one is plain and the other is
///   not what divides it (50 % x 50 % = 0.25, 2 x 50 % = 100 %, 1 / 50 % = 2).
/// * other products and quotients multiply dimensions and scales: the unit is the dictionary's where it has one of that
///   kind and scale, else one with a composed name ("Newton*Second", "Volt/Second", "1/Newton"); where no dimension
///   remains, the result is a plain number (500 um / 1 mm = 0.5). Units with an offset are refused here, and scales
///   whose product is 0 or not finite.
/// What is refused raises `IllegalUnitConversion`; exponents beyond 127 raise `OutOfRangeError`.
template <class T>
class UnitizedValue {
public:
    /// 0, or the given number, without a unit.
    UnitizedValue() = default;
    UnitizedValue(T value) : m_value(value) {}
    /// An empty pointer stands for the unit of plain numbers.
    UnitizedValue(T value, QorConstPtr<UnitDescriptor> units);
    /// Raises `UnitNotFound` for a name that the dictionary does not have.
    UnitizedValue(T value, const std::string& unitName);
    UnitizedValue(T value, const char* unitName);

    T GetValue() const { return m_value; }
    /// Never empty.
    QorConstPtr<UnitDescriptor> GetUnits() const;
    T GetSIValue() const;

    /// The same quantity in another unit; in the same unit, the same bits. Raises `IllegalUnitConversion` between units
    /// of different dimensions, and for units whose scale is 0 or whose numbers are not finite. Where the scales differ
    /// by a whole factor, as millimeters and micrometers, their rounding does not show: 1 mm is 1000 um and back.
    UnitizedValue ConvertTo(QorConstPtr<UnitDescriptor> units) const;
    UnitizedValue ConvertTo(const std::string& unitName) const;

    UnitizedValue operator-() const;
    UnitizedValue operator+(const UnitizedValue& right) const;
    UnitizedValue operator-(const UnitizedValue& right) const;
    UnitizedValue operator*(const UnitizedValue& right) const;
    UnitizedValue operator/(const UnitizedValue& right) const;
    friend UnitizedValue operator*(T left, const UnitizedValue& right) { return UnitizedValue(left) * right; }
    friend UnitizedValue operator/(T left, const UnitizedValue& right) { return UnitizedValue(left) / right; }

    /// Same number and exactly the same unit; NaN equals nothing.
    bool operator==(const UnitizedValue& other) const;
    /// The order of sorted collections: by the exponents in their order, then the SI value, NaN last, then the unit's
    /// name, then the number.
    bool operator<(const UnitizedValue& other) const;

    /// The shortest number that reads back exactly, a blank, and the unit's symbol, as "2.5 mm"; the unit's name where
    /// it has no symbol, and the number alone where it has neither.
    std::string ToString() const;

    /// Stored form: the number as a 64-bit float, then the unit.
    void Write(DataOutputStream& stream) const;
    /// False when the stream ends too early, and then nothing changes. A unit that is the one already held is shared
    /// on, so that a sequence which is read through one value has one descriptor.
    [[nodiscard]] bool Read(DataInputStream& stream);
    std::uint64_t GetSerializedSize() const;
    /// XML form: an element "Value" with the number. Its attribute "unit" is the name of a unit that the dictionary
    /// holds exactly as it is; any other unit but that of plain numbers follows as an element "Descriptor".
    void ToXML(std::ostream& stream, XMLWriter& writer) const;

private:
    T m_value = 0;
    QorConstPtr<UnitDescriptor> m_units; // empty: plain number
};

extern template class QOR_CORE_API UnitizedValue<double>;

} // namespace Qor::Core
