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

// What fails here does not reach whoever changed an item: it is tried again, and told, when the set is next asked.
template <class Item>
void DataChannelTable<Item>::OnChange(const std::string& key, const std::shared_ptr<DataObject>&, EDataChange) try {
    const auto alive = this->weak_from_this().lock(); // whoever hears of the configuration may drop the set
    m_changed.Note(key);
    if (alive)
        Settle();
} catch (...) {
}

template <class Item>
void DataChannelTable<Item>::Settle() {
    while (m_changed.HasAny()) {
        ItemsByKey touched;
        const std::unique_lock lock(m_mutex, std::try_to_lock);
        if (!lock)
            return; // who holds it settles this, too
        FollowChanges(touched);
    }
    WriteConfig();
}

template <class Item>
template <class Read>
auto DataChannelTable<Item>::Ask(Read read) {
    const auto alive = this->shared_from_this();
    const auto answer = [&] {
        ItemsByKey touched;
        const std::lock_guard lock(m_mutex);
        FollowChanges(touched);
        return read();
    }();
    Settle();
    return answer;
}

template <class Item>
void DataChannelTable<Item>::FollowChanges(ItemsByKey& touched) {
    if (!m_changed.HasAny())
        return;
    try {
        const ChangedKeys::Changes changes = m_changed.Take();
        Rearrange(FindThoseOutOfPlace(changes.all ? GetAllKeys() : changes.keys, touched), touched);
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
auto DataChannelTable<Item>::FindThoseOutOfPlace(const Keys& keys, ItemsByKey& touched) -> ItemsByKey {
    ItemsByKey outOfPlace;
    for (const std::string& key : keys) {
        const auto& item = touched.emplace_back(key, m_items->template GetPtr<Item>(key)).second;
        const auto listed = m_listed.find(key);
        if (item && listed != m_listed.end() && KindOf(*item) == listed->second.kind)
            touched.back().second = listed->second.channel->Put(key, item);
        else if (item || listed != m_listed.end())
            outOfPlace.emplace_back(key, item);
    }
    return outOfPlace;
}

template <class Item>
void DataChannelTable<Item>::Rearrange(const ItemsByKey& outOfPlace, ItemsByKey& touched) {
    for (const auto& [key, item] : outOfPlace)
        Remove(key, touched);
    for (const auto& [key, item] : outOfPlace)
        if (item && m_listed.count(key) == 0)
            m_unwritten[List(key, item).GetName()].arrived.push_back(key);
}

template <class Item>
void DataChannelTable<Item>::Remove(const std::string& key, ItemsByKey& touched) {
    const auto listed = m_listed.find(key);
    if (listed == m_listed.end())
        return;
    const std::string name = listed->second.channel->GetName();
    m_unwritten[name].left.push_back(key);
    touched.emplace_back(key, nullptr);
    touched.back().second = listed->second.channel->Remove(key);
    m_listed.erase(listed);
    if (m_channels.at(name)->GetSize() == 0)
        m_channels.erase(name);
}

// --- The configuration

// One thread at a time, which also writes what others leave to it. Whoever hears of that may change the set.
template <class Item>
void DataChannelTable<Item>::WriteConfig() {
    std::unique_lock lock(m_mutex);
    if (m_isWriting)
        return;
    m_isWriting = true;
    while (!m_unwritten.empty()) {
        ChangedByName unwritten = std::exchange(m_unwritten, {});
        const bool tidies = !std::exchange(m_configIsTidy, true);
        lock.unlock();
        try {
            Write(unwritten, tidies);
        } catch (...) {
            lock.lock();
            m_unwritten.merge(unwritten);
            m_configIsTidy = false;
            m_isWriting = false;
            throw;
        }
        lock.lock();
    }
    m_isWriting = false;
}

template <class Item>
void DataChannelTable<Item>::Write(const ChangedByName& changed, bool tidies) {
    const auto config = GetConfig();
    if (tidies)
        return TidyConfig(*config);
    for (const auto& [name, how] : changed) {
        const auto channel = FindChannel(name);
        if (!channel)
            config->Remove(name);
        else if (how.left.empty() && how.arrived.size() == 1)
            channel->AppendToConfig(*config, how.arrived.front());
        else if (how.left.size() == 1 && how.arrived.empty())
            channel->RemoveFromConfig(*config, how.left.front());
        else
            channel->StoreConfig(*config);
    }
}

// Keys of items that there are not would claim those that come later. What lists no keys stays.
template <class Item>
void DataChannelTable<Item>::TidyConfig(DataContainer& config) {
    for (const auto& entry : config)
        if (!Channel::ReadConfig(config, entry.key).empty() && !FindChannel(entry.key))
            config.Remove(entry.key);
    for (const auto& channel : GetChannels())
        channel->StoreConfig(config);
}

template <class Item>
auto DataChannelTable<Item>::GetChannels() -> std::vector<std::shared_ptr<Channel>> {
    const std::lock_guard lock(m_mutex);
    std::vector<std::shared_ptr<Channel>> channels;
    for (const auto& [name, channel] : m_channels)
        channels.push_back(channel);
    return channels;
}

template <class Item>
auto DataChannelTable<Item>::FindChannel(const std::string& name) -> std::shared_ptr<Channel> {
    const std::lock_guard lock(m_mutex);
    const auto found = m_channels.find(name);
    return found != m_channels.end() ? found->second : nullptr;
}

// --- What sets ask for

template <class Item>
void DataChannelTable<Item>::Store(const std::string& key, const std::shared_ptr<Item>& item) {
    const auto alive = this->shared_from_this();
    m_items->Put(key, ValueTraits<Item>::MakeData(item));
    GetNumItems();
}

template <class Item>
std::uint64_t DataChannelTable<Item>::GetNumItems() {
    return Ask([&] { return m_listed.size(); });
}

template <class Item>
void DataChannelTable<Item>::GetNames(std::unordered_set<std::string>& names) {
    const Keys all = Ask([&] {
        Keys found;
        for (const auto& [name, channel] : m_channels)
            found.push_back(name);
        return found;
    });
    names.insert(all.begin(), all.end());
}

template <class Item>
std::shared_ptr<DataChannel<Item>> DataChannelTable<Item>::Find(const std::string& name) {
    return Ask([&]() -> std::shared_ptr<Channel> {
        const auto found = m_channels.find(name);
        return found != m_channels.end() ? found->second : nullptr;
    });
}

template <class Item>
std::shared_ptr<DataContainer> DataChannelTable<Item>::GetConfig() {
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
    GetNumItems();
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
