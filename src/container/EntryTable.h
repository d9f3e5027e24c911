#pragma once

#include "KeyIndex.h"

#include <Tivor/DataContainer.h>

#include <atomic>

namespace Qor::Tivor {

/// An entry with its number: numbers ascend in entry order, are never used twice, and begin with 1. A removed entry
/// stays as a tombstone without an object until half of the block is tombstones.
struct NumberedEntry : DataContainer::Entry {
    std::uint64_t number = 0;
};

/// The entries, one after the other in first-insertion order. Whoever walks them is counted; while there are walkers
/// the block does not change: a change makes a new one.
struct EntryBlock {
    std::vector<NumberedEntry> entries;
    mutable std::atomic<std::uint32_t> walkers{0};
};

/// Entries with their index. Guarded by whoever owns it.
class EntryTable {
public:
    std::size_t GetCount() const { return m_count; }
    /// Null while there was never an entry.
    const std::shared_ptr<EntryBlock>& GetBlock() const { return m_block; }

    /// The entry of the key, or null.
    const NumberedEntry* Find(const std::string& key) const { return Find(key, HashOfKey(key)); }
    const NumberedEntry* Find(const std::string& key, std::uint32_t hash) const;
    /// The entry of that number, or null.
    const NumberedEntry* FindNumber(std::uint64_t number) const;
    /// Inserts an entry for a key that has none.
    const NumberedEntry& Insert(const std::string& key, std::uint32_t hash, std::shared_ptr<DataObject> object);
    /// Puts another object in the place of an entry's and returns the former one.
    std::shared_ptr<DataObject> Replace(const NumberedEntry& entry, std::shared_ptr<DataObject> object);
    /// Takes the entry out and returns its object.
    std::shared_ptr<DataObject> Remove(const NumberedEntry& entry);
    /// Takes all entries out and returns their block, if any.
    std::shared_ptr<EntryBlock> TakeAll();

private:
    std::uint32_t PositionOf(const NumberedEntry& entry) const;
    std::vector<NumberedEntry>& WritableEntries();
    void DropTombstones();

    std::shared_ptr<EntryBlock> m_block;
    KeyIndex m_index;
    std::size_t m_count = 0;
    std::uint64_t m_lastNumber = 0;
};

} // namespace Qor::Tivor
