#pragma once

#include <QorCore/UnitDescriptor.h>
#include <Tivor/PropertyContainer.h>

#include <memory>
#include <set>
#include <string>
#include <type_traits>
#include <typeinfo>

namespace Qor::Tivor {

QOR_DECLARE_ALERT(TIVOR_API, IllegalValueError, LogicError);
QOR_DECLARE_ALERT(TIVOR_API, InvalidUnitsError, LogicError);

/// A validator that tells a browser its rule, by attributes of the property.
class TIVOR_API AttributedValidator : public PropertyContainer::Validator {
public:
    AttributedValidator();
    AttributedValidator(const AttributedValidator&);
    AttributedValidator(AttributedValidator&&) noexcept;
    AttributedValidator& operator=(const AttributedValidator&);
    AttributedValidator& operator=(AttributedValidator&&) noexcept;
    ~AttributedValidator() override;

    void Execute(PropertyContainer::OfferedValue& offered) override = 0;
    /// Called when a property gets this validator.
    virtual void StorePropertyAttributes(DataContainer& attributes);
};

/// Accepts some values of a registered enumeration (`ScalarData::RegisterType`), and offers them for selection.
///
///     auto modes = EnumValidator::For<EMode>();
///     modes.AddValue(eFAST, "Fast");
class TIVOR_API EnumValidator : public AttributedValidator {
public:
    /// Accepts no value of no enumeration.
    EnumValidator();
    EnumValidator(const EnumValidator& other);
    EnumValidator(EnumValidator&& other) noexcept;
    EnumValidator& operator=(const EnumValidator& other);
    EnumValidator& operator=(EnumValidator&& other) noexcept;
    ~EnumValidator() override;

    template <class E>
    requires std::is_enum_v<E>
    static EnumValidator For() { return EnumValidator(typeid(E), sizeof(E)); }

    /// Allows a value, which people read as `text`. Raises `LogicError` while the enumeration has no class name.
    void AddValue(std::int64_t value, const std::string& text);

    /// Raises `PropertyTypeMismatch` for anything but a scalar of the enumeration, and `IllegalValueError` for a value
    /// that is not allowed.
    void Execute(PropertyContainer::OfferedValue& offered) override;
    /// The same enumeration, values and texts.
    bool IsEqual(const PropertyContainer::Validator& other) const override;
    void StorePropertyAttributes(DataContainer& attributes) override;

private:
    EnumValidator(const std::type_info& type, std::size_t width);

    std::set<std::int64_t> m_allowed;
    std::shared_ptr<DataContainer> m_selectable; // scalars, by their texts
    const std::type_info* m_type = nullptr;
    std::size_t m_width = 0;
};

/// Accepts units, and values with units, of one dimension.
class TIVOR_API UnitValidator : public PropertyContainer::Validator {
public:
    explicit UnitValidator(std::shared_ptr<Core::UnitDescriptor> validUnits);
    UnitValidator(const UnitValidator&);
    UnitValidator(UnitValidator&&) noexcept;
    UnitValidator& operator=(const UnitValidator&);
    UnitValidator& operator=(UnitValidator&&) noexcept;
    ~UnitValidator() override;

    /// Raises `InvalidUnitsError`, and `NullPointerError` when this validator has no unit.
    void Execute(PropertyContainer::OfferedValue& offered) override;
    /// Equal units, or none in both.
    bool IsEqual(const PropertyContainer::Validator& other) const override;

private:
    std::shared_ptr<Core::UnitDescriptor> m_spValidUnits;
};

} // namespace Qor::Tivor
