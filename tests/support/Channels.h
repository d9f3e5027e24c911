#pragma once

#include <Tivor/DataSet.h>

#include <map>
#include <set>
#include <string>
#include <type_traits>
#include <vector>

namespace Qor::Tivor::Testing {

/// The keys that each channel of profiles or of surfaces lists; " (another)" stands behind one that leads to another
/// item than the channel has.
template <class Item>
std::map<std::string, std::vector<std::string>> ChannelsOf(IDataSet& set) {
    std::map<std::string, std::vector<std::string>> channels;
    const auto tell = [&](const std::string& name, const auto& channel, DataContainer& items) {
        std::vector<std::string>& keys = channels[name];
        for (std::uint64_t i = 0; i < channel->GetSize(); ++i) {
            const std::string key = channel->GetKeyForDataAt(i);
            const bool isSame = channel->GetName() == name && channel->GetDataAt(i) == items.GetPtr<Item>(key);
            keys.push_back(key + (isSame ? "" : " (another)"));
        }
    };
    std::unordered_set<std::string> names;
    if constexpr (std::is_same_v<Item, Data2D>) {
        set.GetData2DChannels(names);
        for (const std::string& name : names)
            tell(name, set.GetData2DChannel(name), *set.GetAllData2DItems());
    } else {
        set.GetData1DChannels(names);
        for (const std::string& name : names)
            tell(name, set.GetData1DChannel(name), *set.GetAllData1DItems());
    }
    return channels;
}

/// The keys of all profiles or surfaces in a container.
template <class Item>
std::multiset<std::string> ItemKeys(const DataContainer& container) {
    std::multiset<std::string> keys;
    for (const auto& entry : container)
        if (container.GetPtr<Item>(entry.key))
            keys.insert(entry.key);
    return keys;
}

/// The keys that all channels list.
template <class Item>
std::multiset<std::string> ListedKeys(IDataSet& set) {
    std::multiset<std::string> listed;
    for (const auto& [name, keys] : ChannelsOf<Item>(set))
        listed.insert(keys.begin(), keys.end());
    return listed;
}

} // namespace Qor::Tivor::Testing
