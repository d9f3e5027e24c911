#include "DataKind.h"

#include <QorCore/Message.h>
#include <Tivor/CollectionSerialization.h>
#include <Tivor/DataChannel.h>

#include <utility>

namespace Qor::Tivor {

namespace {

template <class Item>
inline constexpr const char* category = nullptr;
template <>
inline constexpr const char* category<Data1D> = "Qor.Tivor.Data1DChannel";
template <>
inline constexpr const char* category<Data2D> = "Qor.Tivor.Data2DChannel";

std::shared_ptr<Data<std::list<std::string>>> FindKeys(const DataContainer& config, const std::string& name) {
    return std::dynamic_pointer_cast<Data<std::list<std::string>>>(
        std::const_pointer_cast<DataObject>(config.Get(name)));
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
    if (!item)
        return;
    if (m_items.size() == m_items.capacity()) { // so that nothing can fail in between
        m_keys.reserve(2 * m_keys.size() + 8);
        m_items.reserve(2 * m_items.size() + 8);
    }
    std::string ownKey = key;
    const auto [found, isNew] = m_positions.emplace(key, m_items.size());
    if (!isNew) {
        m_items[found->second] = std::move(item);
        return;
    }
    m_keys.push_back(std::move(ownKey));
    m_items.push_back(std::move(item));
}

template <class Item>
void DataChannel<Item>::AddData(DataContainer& items) {
    for (const auto& entry : items)
        AddData(entry.key, items.GetPtr<Item>(entry.key));
}

template <class Item>
void DataChannel<Item>::Remove(const std::unordered_set<std::string>& keys) {
    DataChannel kept(m_name);
    for (std::size_t i = 0; i < m_keys.size(); ++i)
        if (keys.count(m_keys[i]) == 0)
            kept.AddData(m_keys[i], m_items[i]);
    m_keys.swap(kept.m_keys);
    m_items.swap(kept.m_items);
    m_positions.swap(kept.m_positions);
}

template <class Item>
void DataChannel<Item>::StoreConfig(DataContainer& config) const {
    config.PutValue(m_name, std::list<std::string>(m_keys.begin(), m_keys.end()));
}

// A set of many items is stored item by item: the list is not written anew for each.
template <class Item>
void DataChannel<Item>::AppendToConfig(DataContainer& config) const {
    const auto stored = FindKeys(config, m_name);
    if (!stored || stored->IsEmpty() || stored->GetValue().size() + 1 != m_keys.size())
        return StoreConfig(config);
    std::list<std::string> last(1, m_keys.back());
    std::list<std::string> keys = std::move(*stored->GetData());
    keys.splice(keys.end(), last);
    stored->SetValue(std::move(keys));
}

template <class Item>
std::vector<std::string> DataChannel<Item>::ReadConfig(const DataContainer& config, const std::string& name) {
    if (const auto keys = config.GetPtr<std::list<std::string>>(name))
        return {keys->begin(), keys->end()};
    const auto keys = config.GetPtr<std::vector<std::string>>(name);
    return keys ? *keys : std::vector<std::string>();
}

template <class Item>
std::size_t DataChannel<Item>::RequireIndex(std::uint64_t index) const {
    if (index >= m_items.size())
        Core::Error::RaiseError(
            Core::OutOfRangeError(Core::FormatText("Out of bounds index of %1% for %2% with size of %3%",
                                                   {index, m_name + " data channel", m_items.size()})),
            QOR_CODE_CONTEXT("DataSet"), category<Item>);
    return static_cast<std::size_t>(index);
}

template class DataChannel<Data1D>;
template class DataChannel<Data2D>;

} // namespace Qor::Tivor
