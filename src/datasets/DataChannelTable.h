#pragma once

#include "../container/ContainerState.h"
#include "ChangedKeys.h"

#include <Tivor/DataChannel.h>

#include <map>
#include <unordered_set>

namespace Qor::Tivor {

/// The channels of a data set, in step with the container of its items, whoever changes that, and the keys that the
/// metadata hold for them. What was stored says at first which items make a channel; items that it does not list, and
/// those whose kind changes later, are in the channel of their kind.
///
/// Thread rule: it follows changes on the thread that made them, and does not wait for others meanwhile, who then do
/// it. Its mutex is a leaf to all but the mutexes that reading an item takes; nobody hears of anything under it.
template <class Item>
class DataChannelTable final : public ContainerListener, public std::enable_shared_from_this<DataChannelTable<Item>> {
public:
    using Channel = DataChannel<Item>;

    /// `configKey` is where the metadata hold the keys of the channels.
    static std::shared_ptr<DataChannelTable> Create(std::shared_ptr<DataContainer> items,
                                                    std::shared_ptr<DataContainer> metaData, std::string configKey);
    ~DataChannelTable() override { Unregister(); }

    void Store(const std::string& key, const std::shared_ptr<Item>& item);
    std::uint64_t GetNumItems();
    void GetNames(std::unordered_set<std::string>& names);
    /// Or an empty pointer.
    std::shared_ptr<Channel> Find(const std::string& name);
    /// The keys of all channels, in the place of those that a copy of the metadata holds.
    void StoreConfig(DataContainer& copy);
    /// What holds the keys of the channels; made where it is missing.
    std::shared_ptr<DataContainer> GetConfig();

    void OnChange(const std::string& key, const std::shared_ptr<DataObject>& object, EDataChange change) override;

private:
    struct Listed {
        std::string kind;
        Channel* channel;
    };
    /// How channels were changed, by their names.
    struct Changed {
        std::vector<std::string> left;
        std::vector<std::string> arrived;
    };
    using ChangedByName = std::map<std::string, Changed>;
    using Keys = std::vector<std::string>;
    using ItemsByKey = std::vector<std::pair<std::string, std::shared_ptr<Item>>>;

    DataChannelTable(std::shared_ptr<DataContainer> items, std::shared_ptr<DataContainer> metaData,
                     std::string configKey);

    template <class Read>
    auto Ask(Read read);
    void Settle();

    // Guarded by the mutex, which the caller holds. What `touched` gets must die without it.
    void TakeConfigured();
    Channel& List(const std::string& key, const std::shared_ptr<Item>& item);
    void FollowChanges(ItemsByKey& touched);
    Keys GetAllKeys() const;
    ItemsByKey FindThoseOutOfPlace(const Keys& keys, ItemsByKey& touched);
    void Rearrange(const ItemsByKey& outOfPlace, ItemsByKey& touched);
    void Remove(const std::string& key, ItemsByKey& touched);

    // To be called without the mutex.
    void WriteConfig();
    void Write(const ChangedByName& changed, bool tidies);
    void TidyConfig(DataContainer& config);
    std::vector<std::shared_ptr<Channel>> GetChannels();
    std::shared_ptr<Channel> FindChannel(const std::string& name);

    const std::shared_ptr<DataContainer> m_items;
    const std::shared_ptr<DataContainer> m_metaData;
    const std::string m_configKey;
    ChangedKeys m_changed;
    std::mutex m_mutex;
    std::map<std::string, std::shared_ptr<Channel>> m_channels;
    std::unordered_map<std::string, Listed> m_listed; // by the keys of the items
    ChangedByName m_unwritten;                        // to the configuration
    bool m_isWriting = false;
    bool m_configIsTidy = true;
};

} // namespace Qor::Tivor
