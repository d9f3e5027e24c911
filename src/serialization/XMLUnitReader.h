#pragma once

#include "XMLElementReader.h"

#include <QorCore/UnitizedValue.h>

namespace Qor::Tivor {

/// Reads a unit from an element "Unit" with its name, or "Descriptor" with all that makes it; the name wins.
class XMLUnitElements : public XMLElementReader {
public:
    void PrepareForNewContent() override;

protected:
    bool Knows(std::string_view parent, std::string_view tag) const override;
    void OnElement(std::string_view parent, std::string_view tag, const XMLAttributes& attributes) override;

    /// Empty when nothing tells the unit. Raises `UnitNotFound` for a name that the dictionary does not have.
    Core::QorConstPtr<Core::UnitDescriptor> GetUnits() const;

    std::optional<std::string> m_unitName;

private:
    Core::QorConstPtr<Core::UnitDescriptor> m_descriptor;
};

class XMLUnitReader : public XMLUnitElements {
public:
    /// Raises `IOError` when nothing tells the unit.
    void OnEndContent() override;

protected:
    virtual void Take(Core::UnitDescriptor unit) = 0;
};

/// Reads a number with a unit from an element "Value", whose attribute "unit" may name the unit; without anything that
/// tells the unit, it is a plain number.
class XMLUnitizedReader : public XMLUnitElements {
public:
    void PrepareForNewContent() override;
    /// Raises `IOError` when there was no such element or no number in it.
    void OnEndContent() override;

protected:
    virtual void Take(Core::UnitizedValue<double> value) = 0;

    bool Knows(std::string_view parent, std::string_view tag) const final;
    void OnElement(std::string_view parent, std::string_view tag, const XMLAttributes& attributes) final;

private:
    std::optional<std::string> m_number;
};

} // namespace Qor::Tivor
