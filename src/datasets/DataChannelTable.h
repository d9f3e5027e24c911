#pragma once

#include <Tivor/DataChannel.h>

#include <map>
#include <unordered_set>

namespace Qor::Tivor {

/// The channels of a data set, in step with the container of its items, whoever changes that. What was stored says at
/// first which items make a channel; items that it does not list, and those whose kind changes later, are in the
/// channel of their kind.
template <class Item>
class DataChannelTable {
public:
    using Channel = DataChannel<Item>;

    /// `configKey` is where the metadata hold the keys of the channels.
    DataChannelTable(std::shared_ptr<DataContainer> items, std::shared_ptr<DataContainer> metaData,
                     std::string configKey);

    void Store(const std::string& key, const std::shared_ptr<Item>& item);
    std::uint64_t GetNumItems();
    void GetNames(std::unordered_set<std::string>& names);
    /// Or an empty pointer.
    std::shared_ptr<Channel> Find(const std::string& name);
    /// The keys of all channels, in the place of those that other metadata hold.
    void StoreConfig(DataContainer& metaData);
    /// What holds the keys of the channels; made where it is missing.
    std::shared_ptr<DataContainer> GetConfig();

private:
    struct Listed {
        std::string kind;
        Channel* channel;
    };

    void TakeConfigured();
    void Reconcile();
    bool Filter(Channel& channel, const std::unordered_map<std::string, std::shared_ptr<Item>>& present);
    Channel& List(const std::string& key, const std::shared_ptr<Item>& item);
    void Append(const std::string& key, const std::shared_ptr<Item>& item);
    void DropIfEmpty(const std::string& name);
    std::shared_ptr<DataContainer> MakeConfig() const;

    const std::shared_ptr<DataContainer> m_items;
    const std::shared_ptr<DataContainer> m_metaData;
    const std::string m_configKey;
    std::map<std::string, std::shared_ptr<Channel>> m_channels;
    std::unordered_map<std::string, Listed> m_listed; // by the keys of the items
    std::uint64_t m_revision = 0;                     // of the items, when they were last looked at
};

} // namespace Qor::Tivor
