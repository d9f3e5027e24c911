#include "DataKind.h"

#include <QorCore/Message.h>
#include <Tivor/CollectionSerialization.h>
#include <Tivor/DataChannel.h>

#include <algorithm>
#include <utility>

namespace Qor::Tivor {

namespace {

template <class Item>
inline constexpr const char* category = nullptr;
template <>
inline constexpr const char* category<Data1D> = "Qor.Tivor.Data1DChannel";
template <>
inline constexpr const char* category<Data2D> = "Qor.Tivor.Data2DChannel";

using Keys = std::list<std::string>;

// In their place: a set of many items is stored item by item. False when there is no list of that many keys.
template <class Change>
bool ChangeKeys(DataContainer& config, const std::string& name, std::size_t count, Change change) {
    const auto stored = std::dynamic_pointer_cast<Data<Keys>>(config.Get(name));
    if (!stored || stored->IsEmpty() || stored->GetValue().size() != count)
        return false;
    Keys keys = std::move(*stored->GetData());
    change(keys);
    stored->SetValue(std::move(keys));
    return true;
}

} // namespace

template <class Item>
DataChannel<Item>::DataChannel(std::string name) : m_name(std::move(name)) {}

template <class Item>
DataChannel<Item>::DataChannel(std::string name, const std::string& key, std::shared_ptr<Item> item)
    : m_name(std::move(name)) {
    AddData(key, std::move(item));
}

template <class Item>
DataChannel<Item>::DataChannel(std::string name, DataContainer& items, DataContainer& config)
    : m_name(std::move(name)) {
    for (const std::string& key : ReadConfig(config, m_name))
        AddData(key, items.GetPtr<Item>(key));
}

template <class Item>
DataChannel<Item>::DataChannel(std::string name, DataContainer& items, bool ofThatKindOnly) : m_name(std::move(name)) {
    for (const auto& entry : items)
        if (const auto item = items.GetPtr<Item>(entry.key); item && (!ofThatKindOnly || KindOf(*item) == m_name))
            AddData(entry.key, item);
}

template <class Item>
DataChannel<Item>::~DataChannel() = default;

template <class Item>
void DataChannel<Item>::AddData(const std::string& key, std::shared_ptr<Item> item) {
    if (item)
        Put(key, std::move(item));
}

template <class Item>
std::shared_ptr<Item> DataChannel<Item>::Put(const std::string& key, std::shared_ptr<Item> item) {
    const std::lock_guard guard(m_mutex);
    if (m_items.size() == m_items.capacity()) { // so that nothing can fail in between
        m_keys.reserve(2 * m_keys.size() + 8);
        m_items.reserve(2 * m_items.size() + 8);
    }
    std::string ownKey = key;
    const auto [found, isNew] = m_positions.emplace(key, m_items.size());
    if (!isNew)
        return std::exchange(m_items[found->second], std::move(item));
    m_keys.push_back(std::move(ownKey));
    m_items.push_back(std::move(item));
    return nullptr;
}

template <class Item>
void DataChannel<Item>::AddData(DataContainer& items) {
    for (const auto& entry : items)
        AddData(entry.key, items.GetPtr<Item>(entry.key));
}

// A channel of many that leave one by one is not closed up each time.
template <class Item>
std::shared_ptr<Item> DataChannel<Item>::Remove(const std::string& key) {
    const std::lock_guard guard(m_mutex);
    const auto found = m_positions.find(key);
    auto item = std::move(m_items[found->second]);
    m_positions.erase(found);
    if (m_items.size() > 2 * m_positions.size() + 8)
        CloseGaps();
    return item;
}

template <class Item>
void DataChannel<Item>::CloseGaps() {
    std::size_t end = 0;
    for (std::size_t i = 0; i < m_items.size(); ++i) {
        if (!m_items[i])
            continue;
        if (i != end) {
            m_keys[end].swap(m_keys[i]);
            m_items[end].swap(m_items[i]);
            m_positions.find(m_keys[end])->second = end;
        }
        ++end;
    }
    m_keys.resize(end);
    m_items.resize(end);
}

template <class Item>
void DataChannel<Item>::StoreConfig(DataContainer& config) const {
    Keys keys;
    {
        const std::lock_guard guard(m_mutex);
        for (std::size_t i = 0; i < m_items.size(); ++i)
            if (m_items[i])
                keys.push_back(m_keys[i]);
    }
    config.PutValue(m_name, std::move(keys));
}

template <class Item>
void DataChannel<Item>::AppendToConfig(DataContainer& config, const std::string& key) const {
    Keys last(1, key);
    if (!ChangeKeys(config, m_name, GetSize() - 1, [&](Keys& keys) { keys.splice(keys.end(), last); }))
        StoreConfig(config);
}

template <class Item>
void DataChannel<Item>::RemoveFromConfig(DataContainer& config, const std::string& key) const {
    if (!ChangeKeys(config, m_name, GetSize() + 1, [&](Keys& keys) {
            if (const auto found = std::find(keys.begin(), keys.end(), key); found != keys.end())
                keys.erase(found);
        }))
        StoreConfig(config);
}

template <class Item>
std::vector<std::string> DataChannel<Item>::ReadConfig(const DataContainer& config, const std::string& name) {
    if (const auto keys = config.GetPtr<Keys>(name))
        return {keys->begin(), keys->end()};
    const auto keys = config.GetPtr<std::vector<std::string>>(name);
    return keys ? *keys : std::vector<std::string>();
}

template <class Item>
std::uint64_t DataChannel<Item>::GetSize() const {
    const std::lock_guard guard(m_mutex);
    return m_positions.size();
}

template <class Item>
std::shared_ptr<Item> DataChannel<Item>::GetDataAt(std::uint64_t index) {
    const std::lock_guard guard(m_mutex);
    return m_items[RequireIndex(index)];
}

template <class Item>
std::string DataChannel<Item>::GetKeyForDataAt(std::uint64_t index) {
    const std::lock_guard guard(m_mutex);
    return m_keys[RequireIndex(index)];
}

template <class Item>
std::size_t DataChannel<Item>::RequireIndex(std::uint64_t index) {
    if (index >= m_positions.size())
        Core::Error::RaiseError(
            Core::OutOfRangeError(Core::FormatText("Out of bounds index of %1% for %2% with size of %3%",
                                                   {index, m_name + " data channel", m_positions.size()})),
            QOR_CODE_CONTEXT("DataSet"), category<Item>);
    if (m_items.size() != m_positions.size())
        CloseGaps();
    return static_cast<std::size_t>(index);
}

template class DataChannel<Data1D>;
template class DataChannel<Data2D>;

} // namespace Qor::Tivor
