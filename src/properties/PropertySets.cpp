#include "PropertyUpdate.h"

namespace Qor::Tivor {

std::uint64_t PropertyContainer::SetProperties(const DataContainer& values) {
    return MultiplePropertySet(values, true);
}

void PropertyContainer::InputProperties(const DataContainer& values) { MultiplePropertySet(values, false); }

// Whether a property is changed by a set that heeds permissions.
bool PropertyContainer::TakesPart(const std::string& name) const {
    return m_propertyData->Exists(name) ? IsWritable(name) || IsSubPropertyContainer(name)
                                        : SettingNonExistentPropertiesIsAllowed();
}

// First all values are in place, then the validators see them, then the handlers.
std::uint64_t PropertyContainer::MultiplePropertySet(const DataContainer& values, bool applyPermissions) {
    const Update update(*this);
    const DataContainer snapshot(*m_propertyData);
    const AttributeTable formerAttributes = m_attributes;
    const std::size_t position = NumPendingEvents();
    try {
        std::vector<DataContainer::Entry> changes;
        for (const auto& [name, offered] : values) {
            if (applyPermissions && !TakesPart(name))
                continue;
            const std::shared_ptr<DataObject> value = applyPermissions ? NamedValue(name, offered) : offered;
            FindAttributes(name); // with the former value as default
            m_propertyData->Put(name, value);
            changes.push_back({name, value});
        }
        for (auto& [name, value] : changes) {
            OfferedValue offered(name, value);
            Validate(offered, FindSpecialAttributes(name).get());
            if (offered.second == value)
                continue;
            m_propertyData->Put(name, offered.second);
            value = std::move(offered.second);
        }
        const std::uint64_t count = ApplyPropertyChanges(snapshot, std::move(changes), position);
        if (!applyPermissions)
            Reorder(values);
        return count;
    } catch (...) {
        RollBackTo(snapshot, formerAttributes);
        throw;
    }
}

// What validators and handlers do to a property before its own turn is undone, with its events, which stand in the list
// from `position` on.
std::uint64_t PropertyContainer::ApplyPropertyChanges(const DataContainer& current,
                                                      std::vector<DataContainer::Entry> changes, std::size_t position) {
    std::uint64_t count = 0;
    bool othersMadeEvents = NumPendingEvents() != position;
    for (const auto& [name, value] : changes) {
        const auto former = std::const_pointer_cast<DataObject>(current.Get(name));
        if (!PropertyValuesDiffer(former, value))
            continue;
        if (FindValue(name) != value)
            m_propertyData->Put(name, value);
        if (othersMadeEvents)
            DropPendingEvents(name, position);
        const std::size_t before = NumPendingEvents();
        if (SettleChange(name, value, former, FindSpecialAttributes(name).get()))
            ++count;
        othersMadeEvents = othersMadeEvents || NumPendingEvents() > before + 1;
    }
    return count;
}

void PropertyContainer::RollBackTo(const DataContainer& snapshot, const AttributeTable& attributes) {
    m_propertyData->Assign(snapshot);
    m_attributes = attributes;
    DropPendingEvents();
}

// The properties that the container names come first, in its order. In one container only: there may be many.
void PropertyContainer::Reorder(const DataContainer& order) {
    std::vector<DataContainer::Entry> ordered;
    ordered.reserve(m_propertyData->NumDataObjects());
    for (const auto& entry : order)
        if (const std::shared_ptr<DataObject> value = FindValue(entry.key))
            ordered.push_back({entry.key, value});
    for (const auto& entry : *m_propertyData)
        if (!order.Exists(entry.key))
            ordered.push_back(entry);
    m_propertyData->Atomically([&] {
        m_propertyData->Clear();
        for (const auto& [name, value] : ordered)
            m_propertyData->Put(name, value);
    });
}

void PropertyContainer::CloneProperties(DataContainer& target, bool serializableOnly) const {
    const Lock lock(m_mutex);
    for (const auto& [name, value] : *m_propertyData)
        if (!serializableOnly || value->GetSerializer())
            target.Put(name, value->Clone());
}

bool PropertyContainer::CloneProperty(const std::string& sourceName, const std::string& targetName) {
    const Lock lock(m_mutex);
    const std::shared_ptr<DataObject> source = FindValue(sourceName);
    if (!source)
        return false;
    m_propertyData->Put(targetName, source->Clone());
    m_attributes[targetName] = FindAttributes(sourceName)->CloneRecord();
    return true;
}

void PropertyContainer::CopyContents(const PropertyContainer& other, bool cloneValues) {
    DataContainer values;
    AttributeTable attributes;
    {
        const Lock lock(other.m_mutex);
        cloneValues ? values.CloneContents(*other.m_propertyData) : values.Assign(*other.m_propertyData);
        for (const auto& [name, record] : other.m_attributes)
            attributes.emplace(name, record->CloneRecord());
    }
    const Lock lock(m_mutex);
    m_propertyData->Assign(values);
    m_attributes = std::move(attributes);
}

} // namespace Qor::Tivor
