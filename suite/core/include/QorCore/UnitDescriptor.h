#pragma once

#include <QorCore/DataStreams.h>

#include <array>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>

namespace Qor::Core {

class XMLWriter;

/// A unit of measure: SI value = value x scale + offset, in the product of the base units m, kg, s, A, K, mol, cd and
/// rad, each to its exponent. A unit without dimensions, scale 1, offset 0, and no name is that of plain numbers.
///
/// Thread rule: as a value; descriptors that are shared (`QorConstPtr<UnitDescriptor>`) are never changed.
class QOR_CORE_API UnitDescriptor {
public:
    /// Length, mass, time, current, temperature, amount of substance, luminous intensity, plane angle.
    using Exponents = std::array<std::int8_t, 8>;

    /// The unit of plain numbers.
    UnitDescriptor() = default;
    UnitDescriptor(std::string name, std::string symbol, double scale = 1.0, double offset = 0.0,
                   const Exponents& exponents = {});
    static std::shared_ptr<UnitDescriptor> Create(std::string name, std::string symbol, double scale = 1.0,
                                                  double offset = 0.0, const Exponents& exponents = {});
    std::shared_ptr<UnitDescriptor> Clone() const;

    const std::string& GetName() const { return m_name; }
    const std::string& GetSymbol() const { return m_symbol; }
    double GetScale() const { return m_scale; }
    double GetOffset() const { return m_offset; }
    const Exponents& GetExponents() const { return m_exponents; }

    bool IsDimensionless() const { return m_exponents == Exponents{}; }
    bool IsDimensionallyEquivalent(const UnitDescriptor& other) const { return m_exponents == other.m_exponents; }
    /// Whether it is exactly the unit of plain numbers.
    bool IsEmpty() const { return *this == UnitDescriptor(); }

    /// The name, or the symbol of a unit without a name.
    const std::string& ToString() const { return m_name.empty() ? m_symbol : m_name; }

    /// All fields equal, the numbers bit by bit.
    bool operator==(const UnitDescriptor& other) const;

    /// Stored form: name, symbol, scale and offset as 64-bit floats, the exponents as eight signed bytes.
    void Write(DataOutputStream& stream) const;
    /// False when the stream ends too early, and then nothing changes.
    [[nodiscard]] bool Read(DataInputStream& stream);
    std::uint64_t GetSerializedSize() const;
    /// XML form: an element "Unit" with the name of a unit that the dictionary holds exactly as it is; for any other,
    /// and for that of plain numbers, an element "Descriptor" with the attributes name, symbol, scale, offset and
    /// exponents, eight decimal numbers with blanks between them.
    void ToXML(std::ostream& stream, XMLWriter& writer) const;

private:
    std::string m_name;
    std::string m_symbol;
    double m_scale = 1.0;
    double m_offset = 0.0;
    Exponents m_exponents{};
};

} // namespace Qor::Core
