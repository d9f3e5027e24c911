#include "PropertyAttributes.h"

#include <QorCore/Message.h>
#include <Tivor/PropertyHandlers.h>

namespace Qor::Tivor {

IllegalValueError::~IllegalValueError() = default;

namespace {

const char* const category = "Qor.Tivor.EnumValidator";

} // namespace

AttributedValidator::AttributedValidator() = default;
AttributedValidator::AttributedValidator(const AttributedValidator&) = default;
AttributedValidator::AttributedValidator(AttributedValidator&&) noexcept = default;
AttributedValidator& AttributedValidator::operator=(const AttributedValidator&) = default;
AttributedValidator& AttributedValidator::operator=(AttributedValidator&&) noexcept = default;
AttributedValidator::~AttributedValidator() = default;

void AttributedValidator::StorePropertyAttributes(DataContainer&) {}

EnumValidator::EnumValidator() : m_selectable(DataContainer::Create()) {}

EnumValidator::EnumValidator(const std::type_info& type, std::size_t width) : EnumValidator() {
    m_type = &type;
    m_width = width;
}

EnumValidator::EnumValidator(const EnumValidator& other)
    : AttributedValidator(other), m_allowed(other.m_allowed), m_selectable(other.m_selectable->Clone()),
      m_type(other.m_type), m_width(other.m_width) {}
EnumValidator::EnumValidator(EnumValidator&&) noexcept = default;
EnumValidator& EnumValidator::operator=(const EnumValidator& other) { return *this = EnumValidator(other); }
EnumValidator& EnumValidator::operator=(EnumValidator&&) noexcept = default;
EnumValidator::~EnumValidator() = default;

void EnumValidator::AddValue(std::int64_t value, const std::string& text) {
    m_selectable->Put(text, Details::MakeEnumScalar(m_type != nullptr ? *m_type : typeid(void), true, m_width, value));
    m_allowed.insert(value);
}

void EnumValidator::Execute(PropertyContainer::OfferedValue& offered) {
    const auto scalar = std::dynamic_pointer_cast<ScalarData>(offered.second);
    if (!scalar || m_type == nullptr || !scalar->HoldsType(*m_type))
        Core::Error::RaiseError(PropertyTypeMismatch(Core::FormatText(
                                    "Attempt to set property <%1%> of type <%2%> to type <%3%>",
                                    {offered.first, m_type != nullptr ? ScalarData::GetRegisteredName(*m_type) : "",
                                     offered.second ? offered.second->GetTypeName() : ""})),
                                QOR_CODE_CONTEXT("PropertyHandlers"), category);
    const std::int64_t value = GetScalarNumber(scalar.get());
    if (m_allowed.count(value) == 0)
        Core::Error::RaiseError(IllegalValueError("Attempted to set the " + offered.first + " property to an " +
                                                  "illegal value of " + std::to_string(value) + "."),
                                QOR_CODE_CONTEXT("PropertyHandlers"), category);
}

bool EnumValidator::IsEqual(const PropertyContainer::Validator& other) const {
    const auto* const same = dynamic_cast<const EnumValidator*>(&other);
    return same != nullptr && (same->m_type == m_type || (same->m_type && m_type && *same->m_type == *m_type)) &&
           same->m_allowed == m_allowed && *same->m_selectable == *m_selectable;
}

void EnumValidator::StorePropertyAttributes(DataContainer& attributes) {
    attributes.Put(sSELECTABLE_PROPERTY_VALUES, m_selectable->Clone());
}

} // namespace Qor::Tivor
