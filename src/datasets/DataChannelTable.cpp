#include "DataChannelTable.h"

#include "DataKind.h"

#include <utility>

namespace Qor::Tivor {

template <class Item>
DataChannelTable<Item>::DataChannelTable(std::shared_ptr<DataContainer> items, std::shared_ptr<DataContainer> metaData,
                                         std::string configKey)
    : m_items(std::move(items)), m_metaData(std::move(metaData)), m_configKey(std::move(configKey)),
      m_revision(m_items->GetRevision()) {
    TakeConfigured();
    for (const auto& entry : *m_items)
        if (const auto item = m_items->template GetPtr<Item>(entry.key); item && m_listed.count(entry.key) == 0)
            List(entry.key, item);
}

template <class Item>
void DataChannelTable<Item>::TakeConfigured() {
    const auto config = m_metaData->GetPtr<DataContainer>(m_configKey);
    if (!config)
        return;
    for (const auto& entry : *config) {
        std::shared_ptr<Channel> channel(new Channel(entry.key));
        for (const std::string& key : Channel::ReadConfig(*config, entry.key))
            if (const auto item = m_items->template GetPtr<Item>(key);
                item && m_listed.emplace(key, Listed{KindOf(*item), channel.get()}).second)
                channel->AddData(key, item);
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

template <class Item>
void DataChannelTable<Item>::Append(const std::string& key, const std::shared_ptr<Item>& item) {
    List(key, item).AppendToConfig(*GetConfig());
}

template <class Item>
void DataChannelTable<Item>::DropIfEmpty(const std::string& name) {
    const auto found = m_channels.find(name);
    if (found->second->GetSize() != 0)
        return found->second->StoreConfig(*GetConfig());
    GetConfig()->Remove(name);
    m_channels.erase(found);
}

// Those that are gone, or have another kind, leave the channel; those that were replaced are so there.
template <class Item>
bool DataChannelTable<Item>::Filter(Channel& channel,
                                    const std::unordered_map<std::string, std::shared_ptr<Item>>& present) {
    Channel kept(channel.m_name);
    for (const std::string& key : channel.m_keys) {
        const auto found = present.find(key);
        if (found != present.end() && KindOf(*found->second) == m_listed.at(key).kind)
            kept.AddData(key, found->second);
        else
            m_listed.erase(key);
    }
    const bool isShorter = kept.GetSize() != channel.GetSize();
    std::swap(channel.m_keys, kept.m_keys);
    std::swap(channel.m_items, kept.m_items);
    std::swap(channel.m_positions, kept.m_positions);
    return isShorter;
}

template <class Item>
void DataChannelTable<Item>::Reconcile() {
    const std::uint64_t revision = m_items->GetRevision();
    if (revision == m_revision)
        return;
    std::vector<std::string> order;
    std::unordered_map<std::string, std::shared_ptr<Item>> present;
    for (const auto& entry : *m_items)
        if (auto item = m_items->template GetPtr<Item>(entry.key)) {
            order.push_back(entry.key);
            present.emplace(entry.key, std::move(item));
        }
    std::vector<std::string> shorter;
    for (const auto& [name, channel] : m_channels)
        if (Filter(*channel, present))
            shorter.push_back(name);
    for (const std::string& key : order)
        if (m_listed.count(key) == 0)
            Append(key, present[key]);
    for (const std::string& name : shorter)
        DropIfEmpty(name);
    m_revision = revision;
}

template <class Item>
void DataChannelTable<Item>::Store(const std::string& key, const std::shared_ptr<Item>& item) {
    Reconcile();
    m_items->Put(key, ValueTraits<Item>::MakeData(item));
    const auto listed = m_listed.find(key);
    if (listed != m_listed.end() && listed->second.kind == KindOf(*item)) {
        listed->second.channel->AddData(key, item);
    } else {
        if (listed != m_listed.end()) {
            const std::string former = listed->second.channel->GetName();
            listed->second.channel->Remove(key);
            DropIfEmpty(former);
        }
        Append(key, item);
    }
    m_revision = m_items->GetRevision();
}

template <class Item>
std::uint64_t DataChannelTable<Item>::GetNumItems() {
    Reconcile();
    return m_listed.size();
}

template <class Item>
void DataChannelTable<Item>::GetNames(std::unordered_set<std::string>& names) {
    Reconcile();
    for (const auto& [name, channel] : m_channels)
        names.insert(name);
}

template <class Item>
std::shared_ptr<DataChannel<Item>> DataChannelTable<Item>::Find(const std::string& name) {
    Reconcile();
    const auto found = m_channels.find(name);
    return found != m_channels.end() ? found->second : nullptr;
}

template <class Item>
std::shared_ptr<DataContainer> DataChannelTable<Item>::MakeConfig() const {
    auto config = DataContainer::Create();
    for (const auto& [name, channel] : m_channels)
        channel->StoreConfig(*config);
    return config;
}

template <class Item>
std::shared_ptr<DataContainer> DataChannelTable<Item>::GetConfig() {
    auto config = m_metaData->GetPtr<DataContainer>(m_configKey);
    if (!config)
        m_metaData->Put(m_configKey, config = MakeConfig());
    return config;
}

template <class Item>
void DataChannelTable<Item>::StoreConfig(DataContainer& metaData) {
    Reconcile();
    if (m_channels.empty())
        metaData.Remove(m_configKey);
    else
        metaData.Put(m_configKey, MakeConfig());
}

template class DataChannelTable<Data1D>;
template class DataChannelTable<Data2D>;

} // namespace Qor::Tivor
