#include "PropertyUpdate.h"

#include <QorCore/Log.h>

#include <algorithm>

namespace Qor::Tivor {

namespace {

const char* const propertiesKey = "Properties";
const char* const attributesKey = "Attributes";

} // namespace

PropertyContainer::RestorePoint::RestorePoint(PropertyContainer& container) : RestorePoint(container, nullptr) {
    std::vector<std::shared_ptr<PropertyContainer>> shown;
    container.CollectShown(shown);
    for (std::shared_ptr<PropertyContainer>& sub : shown)
        m_nested.push_back(RestorePoint(*sub, sub));
}

PropertyContainer::RestorePoint::RestorePoint(PropertyContainer& container, std::shared_ptr<PropertyContainer> shown)
    : m_container(&container), m_shown(std::move(shown)) {
    const Lock lock(container.m_mutex);
    const auto kept = DataContainer::Create();
    kept->Put(propertiesKey, std::make_shared<DataContainer>(*container.m_propertyData));
    const auto attributes = DataContainer::Create();
    for (const auto& entry : *container.m_propertyData)
        attributes->Put(entry.key, std::make_shared<DataContainer>(container.FindAttributes(entry.key)->Complete()));
    kept->Put(attributesKey, attributes);
    m_kept = kept;
}

PropertyContainer::RestorePoint::RestorePoint(const RestorePoint& other) = default;
PropertyContainer::RestorePoint& PropertyContainer::RestorePoint::operator=(const RestorePoint& other) = default;
PropertyContainer::RestorePoint::~RestorePoint() = default;

bool PropertyContainer::RestorePoint::PropertiesChanged() const {
    const RestorePoint now(*m_container, nullptr);
    for (const char* const part : {propertiesKey, attributesKey}) {
        if (*m_kept->GetPtr<DataContainer>(part) == *now.m_kept->GetPtr<DataContainer>(part))
            continue;
        Core::Log("Qor.Tivor.PropertyContainer.RestorePoint", std::string(part) + " differ from the restore point");
        return true;
    }
    return std::any_of(m_nested.begin(), m_nested.end(), [](const auto& nested) { return nested.PropertiesChanged(); });
}

void PropertyContainer::RestorePoint::RestoreProperties() {
    const Update update(*m_container);
    m_container->RestoreFrom(*m_kept->GetPtr<DataContainer>(propertiesKey),
                             *m_kept->GetPtr<DataContainer>(attributesKey));
    for (RestorePoint& nested : m_nested)
        nested.RestoreProperties();
}

void PropertyContainer::RestoreFrom(const DataContainer& properties, const DataContainer& attributes) {
    const DataContainer snapshot(*m_propertyData);
    const AttributeTable formerAttributes = m_attributes;
    const std::size_t position = NumPendingEvents();
    try {
        AttributeTable restored;
        for (const auto& entry : attributes) {
            const auto record = std::make_shared<PropertyAttributes>();
            record->Append(*attributes.GetPtr<DataContainer>(entry.key));
            if (const PropertyAttributes* const present = FindAttributes(entry.key))
                record->TakeGuards(*present);
            restored.emplace(entry.key, record);
        }
        for (const auto& [name, value] : snapshot)
            if (!properties.Exists(name) && !SettleRemoval(name, value) && m_attributes.count(name) != 0)
                restored.emplace(name, m_attributes[name]);
        m_attributes = std::move(restored);
        ApplyPropertyChanges(snapshot, {properties.begin(), properties.end()}, position);
        Reorder(properties);
    } catch (...) {
        RollBackTo(snapshot, formerAttributes);
        throw;
    }
}

// Says whether the property is gone: its change handler may have it back.
bool PropertyContainer::SettleRemoval(const std::string& name, const std::shared_ptr<DataObject>& oldValue) {
    m_propertyData->Remove(name);
    const bool isGone = SettleChange(name, nullptr, oldValue, FindAttributes(name));
    return isGone || !m_propertyData->Exists(name);
}

} // namespace Qor::Tivor
