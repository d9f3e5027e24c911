#include "PropertyUpdate.h"

#include <QorCore/Message.h>
#include <Tivor/PropertyHandlers.h>

#include <algorithm>

namespace Qor::Tivor {

SetAttemptedForNonExistantProperty::~SetAttemptedForNonExistantProperty() = default;
SetReadOnlyProperty::~SetReadOnlyProperty() = default;

namespace {

const char* const category = "Qor.Tivor.PropertyContainer.SetProperty";

template <class W>
void Warn(const char* text, const std::string& name) {
    Core::Warning::RaiseWarning(W(Core::FormatText(text, {name})), QOR_CODE_CONTEXT("PropertyContainer"), category);
}

} // namespace

void RequireValue(const std::shared_ptr<DataObject>& value, const char* argument, const char* raisedBy) {
    if (!value)
        Core::Error::RaiseError(
            Core::NullPointerError(Core::FormatText("A data object is needed; %1% is null", {argument})),
            QOR_CODE_CONTEXT("PropertyContainer"), raisedBy);
}

void PropertyContainer::AddProperty(const std::string& name, std::shared_ptr<DataObject> value,
                                    EPermissions permissions, std::shared_ptr<ReadHandler> readHandler,
                                    std::shared_ptr<Validator> validator,
                                    std::shared_ptr<ChangeHandler> changeHandler) {
    const Update update(*this);
    RequireValue(value, "p_spValue", "Qor.Tivor.PropertyContainer.AddProperty");
    const auto attributes = std::make_shared<PropertyAttributes>();
    if (PropertyAttributes* const former = FindAttributes(name))
        attributes->Append(former->Complete());
    attributes->SetPermissions(permissions);
    attributes->readHandler = std::move(readHandler);
    attributes->changeHandler = std::move(changeHandler);
    attributes->Put(sPROPERTY_DEFAULT, value);
    if (auto* const attributed = dynamic_cast<AttributedValidator*>(validator.get()))
        attributed->StorePropertyAttributes(attributes->Complete());
    if (validator)
        attributes->validators.push_back(std::move(validator));
    m_propertyData->Put(name, value);
    m_attributes[name] = attributes;
    if (HasPropertyChangeListeners())
        Queue(CreateChangeEvent(name, std::move(value), nullptr));
}

void PropertyContainer::AddProperty(const std::string& name, std::shared_ptr<DataObject> value,
                                    EPermissions permissions) {
    AddProperty(name, std::move(value), permissions, nullptr, nullptr, nullptr);
}

void PropertyContainer::AddProperties(std::span<const Description> descriptions) {
    const Update update(*this);
    for (const Description& line : descriptions) {
        AddProperty(line.name, line.value, line.permissions, nullptr, line.validator, nullptr);
        PropertyAttributes& attributes = *FindAttributes(line.name);
        for (const auto& [key, text] :
             {std::pair(&sPROPERTY_DISPLAY_NAME, &line.displayName), std::pair(&sPROPERTY_CATEGORY, &line.category),
              std::pair(&sPROPERTY_DESCRIPTION, &line.description)})
            if (!text->empty())
                attributes.PutValue(*key, *text);
        if (line.defaultValue)
            SetPropertyDefault(line.name, line.defaultValue);
    }
}

void PropertyContainer::UpdateProperty(const std::string& name, std::shared_ptr<DataObject> value, bool readOnly) {
    const Update update(*this);
    if (m_propertyData->Exists(name))
        SetPropertyValue(name, std::move(value));
    else
        AddProperty(name, std::move(value), readOnly ? eREADABLE : eREADABLE_WRITABLE);
}

void PropertyContainer::SetPropertyValue(const std::string& name, std::shared_ptr<DataObject> value) {
    const Update update(*this);
    RequireValue(value, "p_spValue", "Qor.Tivor.PropertyContainer.SetPropertyValue");
    const std::shared_ptr<DataObject> former = FindValue(name);
    FindAttributes(name); // with the former value as default
    m_propertyData->Put(name, value);
    if (HasPropertyChangeListeners())
        Queue(CreateChangeEvent(name, std::move(value), former));
}

std::shared_ptr<DataContainer> PropertyContainer::SelectableValues(const std::string& name) const {
    const auto attributes = FindSpecialAttributes(name);
    return attributes ? attributes->GetPtr<DataContainer>(sSELECTABLE_PROPERTY_VALUES) : nullptr;
}

// What stands for the offered text among the values to select from, or else the offered value.
std::shared_ptr<DataObject> PropertyContainer::NamedValue(const std::string& name,
                                                          const std::shared_ptr<DataObject>& value) const {
    const auto text = std::dynamic_pointer_cast<Data<std::string>>(value);
    const auto values = text ? SelectableValues(name) : nullptr;
    const std::shared_ptr<DataObject> named = values ? values->Get(text->GetValue()) : nullptr;
    return named ? named->Clone() : value;
}

std::string PropertyContainer::GetPropertyText(const std::string& name) const {
    const Update update(Unconst(*this));
    const Core::QorConstPtr<DataObject> value = GetPropertyByName(name);
    if (!value)
        return {};
    if (const auto values = SelectableValues(name))
        for (const auto& [text, named] : *values)
            if (!PropertyValuesDiffer(named, value))
                return text;
    return value->ToString();
}

bool PropertyContainer::SetProperty(const std::string& name, std::shared_ptr<DataObject> value) {
    const Update update(*this);
    RequireValue(value, "p_spValue", category);
    const std::shared_ptr<DataObject> current = FindValue(name);
    const PropertyAttributes* const attributes = FindAttributes(name);
    if (!current) {
        if (SettingNonExistentPropertiesIsAllowed())
            return ValidateAndSetValue(name, std::move(value), nullptr, attributes);
        Warn<SetAttemptedForNonExistantProperty>("Cannot Set the non-existant property <%1%>", name);
        return false;
    }
    if (attributes != nullptr && (attributes->GetPermissions() & eWRITABLE) == 0) {
        Warn<SetReadOnlyProperty>("Cannot Set the read-only property <%1%>", name);
        return false;
    }
    if (!value->HoldsSameTypeAs(*current))
        value = NamedValue(name, value);
    if (!value->HoldsSameTypeAs(*current))
        Core::Error::RaiseError(
            PropertyTypeMismatch(Core::FormatText("Attempt to set property <%1%> of type <%2%> to type <%3%>",
                                                  {name, current->GetTypeName(), value->GetTypeName()})),
            QOR_CODE_CONTEXT("PropertyContainer"), category);
    return ValidateAndSetValue(name, std::move(value), current, attributes);
}

// Says whether there are validators.
bool PropertyContainer::Validate(OfferedValue& offered, const PropertyAttributes* attributes) {
    if (attributes == nullptr || attributes->validators.empty())
        return false;
    for (const std::shared_ptr<Validator>& validator : PropertyAttributes::Validators(attributes->validators))
        validator->Execute(offered);
    RequireValue(offered.second, "the value that a validator has left", "Qor.Tivor.PropertyContainer.Validate");
    return true;
}

bool PropertyContainer::ValidateAndSetValue(const std::string& name, std::shared_ptr<DataObject> newValue,
                                            std::shared_ptr<DataObject> oldValue,
                                            const PropertyAttributes* attributes) {
    OfferedValue offered(name, std::move(newValue));
    if (Validate(offered, attributes)) { // a validator may have changed both
        oldValue = FindValue(name);
        attributes = FindAttributes(name);
    }
    if (NobodyAsks(oldValue, attributes)) {
        m_propertyData->Put(name, std::move(offered.second));
        return true;
    }
    m_propertyData->Put(name, offered.second);
    return SettleChange(name, offered.second, oldValue, attributes);
}

bool PropertyContainer::NobodyAsks(const std::shared_ptr<DataObject>& oldValue,
                                   const PropertyAttributes* attributes) const {
    return oldValue && (attributes == nullptr || !attributes->changeHandler) && !HasPropertyChangeListeners();
}

// Asks whether a change that was made shall stand. What the handler itself does to the property came after the change:
// its events follow, and are forgotten when the former value is put back over it.
bool PropertyContainer::SettleChange(const std::string& name, const std::shared_ptr<DataObject>& newValue,
                                     const std::shared_ptr<DataObject>& oldValue,
                                     const PropertyAttributes* attributes) {
    if (NobodyAsks(oldValue, attributes))
        return true;
    const std::shared_ptr<ChangeHandler> handler = attributes != nullptr ? attributes->changeHandler : nullptr;
    const std::size_t position = NumPendingEvents();
    try {
        const auto event = CreateChangeEvent(name, newValue, oldValue);
        const EPropertyChangeResult result = AskForConsent(*event, handler.get());
        if (result != eREFUSE_CHANGE && result != eREMOVE_PROPERTY) {
            if (result == eACCEPT_CHANGE && HasPropertyChangeListeners())
                Queue(event, std::min(position, NumPendingEvents()));
            return true;
        }
        PutBack(name, result == eREFUSE_CHANGE ? oldValue : nullptr);
    } catch (...) {
        PutBack(name, oldValue);
        DropPendingEvents(name, position);
        throw;
    }
    DropPendingEvents(name, position);
    return false;
}

EPropertyChangeResult PropertyContainer::AskForConsent(const PropertyChangeEvent& event, ChangeHandler* handler) {
    if (handler != nullptr)
        return handler->Execute(event);
    if (!event.IsNewProperty())
        return eACCEPT_CHANGE;
    if (const auto attributes = FindSpecialAttributes(event.GetPropertyName()))
        attributes->Put(sPROPERTY_DEFAULT, FindValue(event.GetPropertyName()));
    return OnExternalPropertyAdded(event);
}

void PropertyContainer::PutBack(const std::string& name, const std::shared_ptr<DataObject>& oldValue) {
    if (oldValue)
        m_propertyData->Put(name, oldValue);
    else
        RemoveProperty(name);
}

EPropertyChangeResult PropertyContainer::OnExternalPropertyAdded(const PropertyChangeEvent&) { return eACCEPT_CHANGE; }

} // namespace Qor::Tivor
