#include "PropertyUpdate.h"

#include <QorCore/Message.h>
#include <Tivor/ScalarData.h>

namespace Qor::Tivor {

LogicError::~LogicError() = default;
NoSuchProperty::~NoSuchProperty() = default;
PropertyTypeMismatch::~PropertyTypeMismatch() = default;

namespace {

// Once, when it is first needed: nothing runs when the library is loaded.
void RegisterEnumerations() {
    static const bool isDone = [] {
        ScalarData::RegisterType(typeid(PropertyContainer::EPermissions), "PropertyContainer::EPermissions");
        ScalarData::RegisterType(typeid(EBrowsePermissions), "EBrowsePermissions");
        return true;
    }();
    static_cast<void>(isDone);
}

bool IsTrue(const std::shared_ptr<DataObject>& object) {
    const auto flag = std::dynamic_pointer_cast<Data<bool>>(object);
    return flag && flag->GetValue();
}

} // namespace

PropertyContainer::PropertyContainer(bool allowSetOfNonExistingProperties)
    : m_propertyData(std::make_shared<Values>()), m_allowsSetOfNonExisting(allowSetOfNonExistingProperties),
      m_life(std::make_shared<bool>()) {
    RegisterEnumerations();
}

PropertyContainer::~PropertyContainer() { m_life.reset(); }

PropertyContainer::PropertyAttributes* PropertyContainer::FindAttributes(const std::string& name) const {
    if (const auto found = m_attributes.find(name); found != m_attributes.end())
        return found->second.get();
    const std::shared_ptr<DataObject> value = FindValue(name);
    if (!value)
        return nullptr;
    const auto attributes = std::make_shared<PropertyAttributes>();
    attributes->SetPermissions(eREADABLE_WRITABLE);
    attributes->Put(sPROPERTY_DEFAULT, value);
    return m_attributes.emplace(name, attributes).first->second.get();
}

std::shared_ptr<PropertyContainer::PropertyAttributes>
PropertyContainer::FindSpecialAttributes(const std::string& name) const {
    const auto found = m_attributes.find(name);
    return found != m_attributes.end() ? found->second : nullptr;
}

PropertyContainer::PropertyAttributes& PropertyContainer::RequireAttributes(const std::string& name,
                                                                            const char* operation) const {
    if (PropertyAttributes* const attributes = FindAttributes(name))
        return *attributes;
    Core::Error::RaiseError(
        NoSuchProperty(Core::FormatText("Attempted %1% on non-existant property <%2%>", {operation, name})),
        QOR_CODE_CONTEXT("PropertyContainer"), "Qor.Tivor.PropertyContainer");
}

std::uint64_t PropertyContainer::NumProperties() const {
    const Lock lock(m_mutex);
    return m_propertyData->NumDataObjects();
}

void PropertyContainer::EnumProperties(std::map<std::string, EPermissions>& permissions) const {
    const Lock lock(m_mutex);
    permissions.clear();
    std::vector<std::string> names;
    EnumProperties(names);
    for (const std::string& name : names)
        permissions.emplace(name, GetPermissions(name));
}

void PropertyContainer::EnumProperties(std::vector<std::string>& names) const {
    const Lock lock(m_mutex);
    m_propertyData->EnumData(names);
}

std::uint64_t PropertyContainer::EnumProperties(std::vector<std::string>& names, const DataContainer& container) const {
    const Lock lock(m_mutex);
    std::uint64_t count = 0;
    for (const auto& [key, object] : container) {
        if (m_propertyData->Exists(key)) {
            names.push_back(key);
            ++count;
        }
    }
    return count;
}

bool PropertyContainer::PropertyExists(const std::string& name) const {
    const Lock lock(m_mutex);
    return m_propertyData->Exists(name);
}

PropertyContainer::EPermissions PropertyContainer::GetPermissions(const std::string& name) const {
    const Lock lock(m_mutex);
    if (const auto attributes = FindSpecialAttributes(name))
        return attributes->GetPermissions();
    return m_propertyData->Exists(name) ? eREADABLE_WRITABLE : eNO_PERMISSIONS;
}

EBrowsePermissions PropertyContainer::GetBrowsePermissions(const std::string& name) const {
    return static_cast<EBrowsePermissions>(
        GetScalarNumber(GetAttributeByPropertyName(name, sBROWSE_PERMISSIONS).get()));
}

bool PropertyContainer::SettingNonExistentPropertiesIsAllowed() const {
    const Lock lock(m_mutex);
    return m_allowsSetOfNonExisting;
}

void PropertyContainer::AllowSetOfNonExistingProperties(bool allow) {
    const Lock lock(m_mutex);
    m_allowsSetOfNonExisting = allow;
}

Core::QorConstPtr<DataObject> PropertyContainer::GetPropertyByName(const std::string& name) const {
    const Update update(Unconst(*this));
    return VerifyPropertyRead(name) ? FindValue(name) : nullptr;
}

std::shared_ptr<DataObject> PropertyContainer::GetAttributeByPropertyName(const std::string& name,
                                                                          const std::string& attributeKey) const {
    const Lock lock(m_mutex);
    PropertyAttributes* const attributes = FindAttributes(name);
    return attributes != nullptr ? attributes->Find(attributeKey) : nullptr;
}

bool PropertyContainer::HasCustomPropertyEditor(const std::string& name) const {
    return IsTrue(GetAttributeByPropertyName(name, sHAS_CUSTOM_EDITOR));
}

void PropertyContainer::LaunchCustomPropertyEditor(const std::string&) {}

bool PropertyContainer::IsDefault(const std::string& name) const {
    const Lock lock(m_mutex);
    const std::shared_ptr<DataObject> standard = RequireAttributes(name, "to call IsDefault()").Get(sPROPERTY_DEFAULT);
    return !PropertyValuesDiffer(FindValue(name), standard);
}

bool PropertyContainer::RestoreDefault(const std::string& name) {
    std::shared_ptr<DataObject> standard;
    {
        const Lock lock(m_mutex);
        standard = RequireAttributes(name, "RestoreDefault()").Get(sPROPERTY_DEFAULT);
    }
    return standard && SetProperty(name, standard->Clone());
}

void PropertyContainer::SetPropertyDefault(const std::string& name, std::shared_ptr<DataObject> value) {
    const Lock lock(m_mutex);
    PropertyAttributes& attributes = RequireAttributes(name, "to call SetPropertyDefault()");
    RequireValue(value, "p_spDefaultValue", "Qor.Tivor.PropertyContainer.SetPropertyDefault");
    const std::shared_ptr<DataObject> current = attributes.Get(sPROPERTY_DEFAULT);
    if (current && !current->HoldsSameTypeAs(*value))
        Core::AssertFailed("spCurrentDefault->HoldsSameTypeAs( *p_spDefaultValue )",
                           QOR_CODE_CONTEXT("PropertyContainer"));
    attributes.Put(sPROPERTY_DEFAULT, std::move(value));
}

void PropertyContainer::SetPermissions(const std::string& name, EPermissions permissions) {
    const Lock lock(m_mutex);
    if (PropertyAttributes* const attributes = FindAttributes(name))
        attributes->SetPermissions(permissions);
}

void PropertyContainer::SetAttribute(const std::string& name, const std::string& attributeKey,
                                     std::shared_ptr<DataObject> value) {
    const Lock lock(m_mutex);
    RequireValue(value, "p_spValue", "Qor.Tivor.PropertyContainer.SetAttribute");
    if (PropertyAttributes* const attributes = FindAttributes(name))
        attributes->Put(attributeKey, std::move(value));
}

void PropertyContainer::SetAttribute(const std::string& name, const std::string& attributeKey, const char* text) {
    SetAttribute(name, attributeKey, text != nullptr ? MakePropertyValue(text) : nullptr);
}

void PropertyContainer::SetTexts(const std::string& name, const Texts& texts) {
    const Lock lock(m_mutex);
    if (PropertyAttributes* const attributes = FindAttributes(name))
        attributes->SetTexts(texts);
}

void PropertyContainer::SetAttributes(const std::string& name, const DataContainer& added) {
    const Lock lock(m_mutex);
    if (PropertyAttributes* const attributes = FindAttributes(name))
        attributes->Append(added);
}

void PropertyContainer::GetAttributes(const std::string& name, DataContainer& target) const {
    const Lock lock(m_mutex);
    target.Append(RequireAttributes(name, "to call GetAttributes()").Complete());
}

bool PropertyContainer::RemoveProperty(const std::string& name) {
    const Lock lock(m_mutex);
    m_attributes.erase(name);
    return m_propertyData->Remove(name) != nullptr;
}

void PropertyContainer::Clear() {
    const Lock lock(m_mutex);
    m_attributes.clear();
    m_propertyData->Clear();
}

// Without the lock: it is the same one always, and whoever writes the values holds its locks already.
std::shared_ptr<DataContainer> PropertyContainer::GetPropertyData(PropertyContainer& container) {
    return container.m_propertyData;
}

} // namespace Qor::Tivor
