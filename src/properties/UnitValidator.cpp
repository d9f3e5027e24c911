#include <QorCore/Message.h>
#include <Tivor/PropertyHandlers.h>

namespace Qor::Tivor {

InvalidUnitsError::~InvalidUnitsError() = default;

namespace {

const char* const category = "Qor.Tivor.UnitValidator";

[[noreturn]] void RaiseInvalidUnits(std::string text) {
    Core::Error::RaiseError(InvalidUnitsError(std::move(text)), QOR_CODE_CONTEXT("PropertyHandlers"), category);
}

// The unit of a value with a unit, or a unit that is a value itself.
Core::QorConstPtr<Core::UnitDescriptor> UnitsOf(const PropertyContainer::OfferedValue& offered) {
    if (const auto value = std::dynamic_pointer_cast<GenericWrapper<UnitizedDouble>>(offered.second);
        value && value->GetData())
        return value->GetData()->GetUnits();
    if (const auto unit = std::dynamic_pointer_cast<GenericWrapper<Core::UnitDescriptor>>(offered.second))
        return unit->GetData();
    return nullptr;
}

} // namespace

UnitValidator::UnitValidator(std::shared_ptr<Core::UnitDescriptor> validUnits)
    : m_spValidUnits(std::move(validUnits)) {}
UnitValidator::UnitValidator(const UnitValidator&) = default;
UnitValidator::UnitValidator(UnitValidator&&) noexcept = default;
UnitValidator& UnitValidator::operator=(const UnitValidator&) = default;
UnitValidator& UnitValidator::operator=(UnitValidator&&) noexcept = default;
UnitValidator::~UnitValidator() = default;

void UnitValidator::Execute(PropertyContainer::OfferedValue& offered) {
    const auto units = UnitsOf(offered);
    if (!units)
        RaiseInvalidUnits("An attempt was made to set the " + offered.first +
                          " unitized/units property to a unknown type of " +
                          (offered.second ? offered.second->GetTypeName() : ""));
    if (!m_spValidUnits) {
        Core::NullPointerError error("UnitValidator has a NULL UnitDescriptor for the " + offered.first + " property!");
        error.AddVariable("Argument", "m_spValidUnits");
        Core::Error::RaiseError(std::move(error), QOR_CODE_CONTEXT("PropertyHandlers"), category);
    }
    if (!units->IsDimensionallyEquivalent(*m_spValidUnits))
        RaiseInvalidUnits("Attempted to set the " + offered.first + " property to a value with " + "invalid units of " +
                          units->ToString());
}

bool UnitValidator::IsEqual(const PropertyContainer::Validator& other) const {
    const auto* const same = dynamic_cast<const UnitValidator*>(&other);
    return same != nullptr && (same->m_spValidUnits == m_spValidUnits ||
                               (same->m_spValidUnits && m_spValidUnits && *same->m_spValidUnits == *m_spValidUnits));
}

} // namespace Qor::Tivor
