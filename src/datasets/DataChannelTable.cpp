#include "DataChannelTable.h"

#include "DataKind.h"

#include <utility>

namespace Qor::Tivor {

template <class Item>
auto DataChannelTable<Item>::Create(std::shared_ptr<DataContainer> items, std::shared_ptr<DataContainer> metaData,
                                    std::string configKey) -> std::shared_ptr<DataChannelTable> {
    std::shared_ptr<DataChannelTable> table(
        new DataChannelTable(std::move(items), std::move(metaData), std::move(configKey)));
    const std::lock_guard lock(table->m_mutex);
    ContainerAccess(*ContainerState::Of(*table->m_items))->AddListener(*table);
    table->TakeConfigured();
    for (const auto& entry : *table->m_items)
        if (const auto item = table->m_items->template GetPtr<Item>(entry.key);
            item && table->m_listed.count(entry.key) == 0)
            table->List(entry.key, item);
    return table;
}

template <class Item>
DataChannelTable<Item>::DataChannelTable(std::shared_ptr<DataContainer> items, std::shared_ptr<DataContainer> metaData,
                                         std::string configKey)
    : m_items(std::move(items)), m_metaData(std::move(metaData)), m_configKey(std::move(configKey)) {}

template <class Item>
void DataChannelTable<Item>::TakeConfigured() {
    const auto config = m_metaData->GetPtr<DataContainer>(m_configKey);
    if (!config)
        return;
    for (const auto& entry : *config) {
        std::shared_ptr<Channel> channel(new Channel(entry.key));
        const Keys keys = Channel::ReadConfig(*config, entry.key);
        for (const std::string& key : keys)
            if (const auto item = m_items->template GetPtr<Item>(key);
                item && m_listed.emplace(key, Listed{KindOf(*item), channel.get()}).second)
                channel->AddData(key, item);
        m_configIsTidy = m_configIsTidy && keys.size() == channel->GetSize();
        if (channel->GetSize() != 0)
            m_channels.emplace(entry.key, std::move(channel));
    }
}

template <class Item>
DataChannel<Item>& DataChannelTable<Item>::List(const std::string& key, const std::shared_ptr<Item>& item) {
    const std::string kind = KindOf(*item);
    std::shared_ptr<Channel>& channel = m_channels[kind];
    if (channel)
        channel->AddData(key, item);
    else
        channel = std::make_shared<Channel>(kind, key, item);
    m_listed[key] = {kind, channel.get()};
    return *channel;
}

// --- Following changes

// Nothing that fails here may reach whoever changed an item: it is tried again, and told, when the set is next asked.
template <class Item>
void DataChannelTable<Item>::OnChange(const std::string& key, const std::shared_ptr<DataObject>&, EDataChange) try {
    const auto alive = this->weak_from_this().lock(); // whoever hears of the configuration may drop the set
    m_changed.Note(key);
    while (alive && m_changed.HasAny()) {
        const std::unique_lock lock(m_mutex, std::try_to_lock);
        if (!lock)
            return;
        FollowChanges();
    }
} catch (...) {
    m_changed.NoteAll();
}

template <class Item>
std::unique_lock<std::recursive_mutex> DataChannelTable<Item>::Reconcile() {
    std::unique_lock lock(m_mutex);
    FollowChanges();
    return lock;
}

template <class Item>
void DataChannelTable<Item>::FollowChanges() {
    if (!m_changed.HasAny())
        return;
    try {
        const ChangedKeys::Changes changes = m_changed.Take();
        // Listeners hear of the configuration, and find the channels in order.
        for (const auto& [name, changed] : Rearrange(FindThoseOutOfPlace(changes.all ? GetAllKeys() : changes.keys)))
            UpdateConfig(name, changed);
    } catch (...) {
        m_changed.NoteAll();
        throw;
    }
}

// Those there are, in the container's order, and those there were.
template <class Item>
auto DataChannelTable<Item>::GetAllKeys() const -> Keys {
    Keys keys;
    for (const auto& entry : *m_items)
        keys.push_back(entry.key);
    for (const auto& [key, listed] : m_listed)
        if (!m_items->Exists(key))
            keys.push_back(key);
    return keys;
}

// Those that are gone are among them, with an empty pointer. What was replaced by an item of its kind is so in its
// channel.
template <class Item>
auto DataChannelTable<Item>::FindThoseOutOfPlace(const Keys& keys) -> ItemsByKey {
    ItemsByKey outOfPlace;
    for (const std::string& key : keys) {
        auto item = m_items->template GetPtr<Item>(key);
        const auto listed = m_listed.find(key);
        if (item && listed != m_listed.end() && KindOf(*item) == listed->second.kind)
            listed->second.channel->AddData(key, std::move(item));
        else if (item || listed != m_listed.end())
            outOfPlace.emplace_back(key, std::move(item));
    }
    return outOfPlace;
}

template <class Item>
auto DataChannelTable<Item>::Rearrange(const ItemsByKey& outOfPlace) -> std::map<std::string, Changed> {
    std::map<std::string, Changed> changed;
    for (const auto& [key, item] : outOfPlace)
        Remove(key, changed);
    for (const auto& [key, item] : outOfPlace)
        if (item && m_listed.count(key) == 0)
            changed[List(key, item).GetName()].arrived.push_back(key);
    return changed;
}

template <class Item>
void DataChannelTable<Item>::Remove(const std::string& key, std::map<std::string, Changed>& changed) {
    const auto listed = m_listed.find(key);
    if (listed == m_listed.end())
        return;
    const std::string name = listed->second.channel->GetName();
    changed[name].left.push_back(key);
    listed->second.channel->Remove(key);
    m_listed.erase(listed);
    if (m_channels.at(name)->GetSize() == 0)
        m_channels.erase(name);
}

template <class Item>
void DataChannelTable<Item>::UpdateConfig(const std::string& name, const Changed& changed) {
    const auto config = GetConfig();
    const auto found = m_channels.find(name);
    if (!std::exchange(m_configIsTidy, true))
        TidyConfig(*config);
    else if (found == m_channels.end())
        config->Remove(name);
    else if (changed.left.empty() && changed.arrived.size() == 1)
        found->second->AppendToConfig(*config, changed.arrived.front());
    else if (changed.left.size() == 1 && changed.arrived.empty())
        found->second->RemoveFromConfig(*config, changed.left.front());
    else
        found->second->StoreConfig(*config);
}

// Keys of items that there are not would claim those that come later. What lists no keys stays.
template <class Item>
void DataChannelTable<Item>::TidyConfig(DataContainer& config) const {
    for (const auto& entry : config)
        if (!Channel::ReadConfig(config, entry.key).empty() && m_channels.count(entry.key) == 0)
            config.Remove(entry.key);
    for (const auto& [name, channel] : m_channels)
        channel->StoreConfig(config);
}

// --- What sets ask for

template <class Item>
void DataChannelTable<Item>::Store(const std::string& key, const std::shared_ptr<Item>& item) {
    const auto alive = this->shared_from_this();
    m_items->Put(key, ValueTraits<Item>::MakeData(item));
    Reconcile();
}

template <class Item>
std::uint64_t DataChannelTable<Item>::GetNumItems() {
    const auto lock = Reconcile();
    return m_listed.size();
}

template <class Item>
void DataChannelTable<Item>::GetNames(std::unordered_set<std::string>& names) {
    const auto lock = Reconcile();
    for (const auto& [name, channel] : m_channels)
        names.insert(name);
}

template <class Item>
std::shared_ptr<DataChannel<Item>> DataChannelTable<Item>::Find(const std::string& name) {
    const auto lock = Reconcile();
    const auto found = m_channels.find(name);
    return found != m_channels.end() ? found->second : nullptr;
}

template <class Item>
std::shared_ptr<DataContainer> DataChannelTable<Item>::GetConfig() {
    const std::lock_guard lock(m_mutex);
    auto config = m_metaData->GetPtr<DataContainer>(m_configKey);
    if (!config) {
        config = DataContainer::Create();
        TidyConfig(*config);
        m_metaData->Put(m_configKey, config);
    }
    return config;
}

template <class Item>
void DataChannelTable<Item>::StoreConfig(DataContainer& copy) {
    const auto lock = Reconcile();
    auto config = copy.GetPtr<DataContainer>(m_configKey);
    if (!config)
        config = DataContainer::Create();
    TidyConfig(*config);
    if (config->IsEmpty())
        copy.Remove(m_configKey);
    else
        copy.Put(m_configKey, config);
}

template class DataChannelTable<Data1D>;
template class DataChannelTable<Data2D>;

} // namespace Qor::Tivor
