#pragma once

#include <Tivor/Data1D.h>
#include <Tivor/Data2D.h>
#include <Tivor/DataContainer.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

namespace Qor::Tivor {

template <class Item>
class DataChannelTable;

/// The items of one kind in a data set, each with the key under which the set has it, in the order in which they were
/// stored.
template <class Item>
class IDataChannel {
public:
    virtual ~IDataChannel() = default;
    virtual std::string GetName() = 0;
    virtual std::uint64_t GetSize() const = 0;
    /// Both raise `OutOfRangeError` for an index that is not below `GetSize`.
    virtual std::shared_ptr<Item> GetDataAt(std::uint64_t index) = 0;
    virtual std::string GetKeyForDataAt(std::uint64_t index) = 0;
};

using IData1DChannel = IDataChannel<Data1D>;
using IData2DChannel = IDataChannel<Data2D>;

/// A channel of profiles (`Data1DChannel`) or of surfaces (`Data2DChannel`).
///
/// Thread rule: all operations may be called by any number of threads at once; indices are those of the moment.
template <class Item>
class DataChannel final : public IDataChannel<Item> {
public:
    DataChannel(std::string name, const std::string& key, std::shared_ptr<Item> item);
    /// The items whose keys are listed under the name in `config`, as far as `items` has them.
    DataChannel(std::string name, DataContainer& items, DataContainer& config);
    /// All items there are, or only those whose data kind is the name.
    DataChannel(std::string name, DataContainer& items, bool ofThatKindOnly);
    ~DataChannel() override;

    std::string GetName() override { return m_name; }
    std::uint64_t GetSize() const override;
    std::shared_ptr<Item> GetDataAt(std::uint64_t index) override;
    std::string GetKeyForDataAt(std::uint64_t index) override;

    /// Appends an item; one that has the key already is replaced in its place.
    void AddData(const std::string& key, std::shared_ptr<Item> item);
    /// Appends all items of the container.
    void AddData(DataContainer& items);
    /// Stores the keys, in order, under the channel's name, as `std::list<std::string>`.
    void StoreConfig(DataContainer& config) const;
    /// The keys that are stored so for a channel; of a vector of texts too. None for anything else.
    static std::vector<std::string> ReadConfig(const DataContainer& config, const std::string& name);

private:
    friend class DataChannelTable<Item>;

    explicit DataChannel(std::string name);
    std::size_t RequireIndex(std::uint64_t index);
    // These give what leaves the channel, which must not die under a lock.
    std::shared_ptr<Item> Put(const std::string& key, std::shared_ptr<Item> item);
    std::shared_ptr<Item> Remove(const std::string& key);
    void CloseGaps();
    // These write the difference only, where what is stored differs by one key.
    void AppendToConfig(DataContainer& config, const std::string& key) const;
    void RemoveFromConfig(DataContainer& config, const std::string& key) const;

    const std::string m_name;
    mutable std::mutex m_mutex;
    std::vector<std::string> m_keys;
    std::vector<std::shared_ptr<Item>> m_items; // empty: a gap, where one was removed
    std::unordered_map<std::string, std::size_t> m_positions;
};

using Data1DChannel = DataChannel<Data1D>;
using Data2DChannel = DataChannel<Data2D>;

extern template class TIVOR_API DataChannel<Data1D>;
extern template class TIVOR_API DataChannel<Data2D>;

} // namespace Qor::Tivor
