#pragma once

#include "EntryList.h"
#include "KeyIndex.h"

#include <atomic>

namespace Qor::Tivor {

/// The entries, one after the other in first-insertion order. Whoever walks them is counted; while there are walkers
/// the block does not change: a change makes a new one.
struct EntryBlock {
    EntryBlock() = default;
    explicit EntryBlock(const EntryList& copied) : entries(copied) {}

    EntryList entries;
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
    /// The number that the next entry will have.
    std::uint64_t GetNextNumber() const { return m_lastNumber + 1; }
    /// The entry of that number, or null.
    const NumberedEntry* FindNumber(std::uint64_t number) const;
    /// Inserts an entry for a key that has none. When this raises, the object is still the caller's.
    void Insert(const std::string& key, std::uint32_t hash, std::shared_ptr<DataObject>&& object);
    /// Where the entry of the key stands, or `KeyIndex::none`.
    std::uint32_t PositionOf(const std::string& key, std::uint32_t hash) const;
    const NumberedEntry& operator[](std::uint32_t position) const { return m_block->entries[position]; }
    /// Puts another object in the place of that of an entry, and returns the former one.
    std::shared_ptr<DataObject> Replace(std::uint32_t position, std::shared_ptr<DataObject>&& object);
    /// Takes out the entry of a key that has one, and returns its object.
    std::shared_ptr<DataObject> Remove(const std::string& key, std::uint32_t hash);
    /// Tells the processor that the key of this hash will be looked for.
    void Expect(std::uint32_t hash) const { m_index.Expect(hash); }
    /// Takes all entries out and returns their block, if any.
    std::shared_ptr<EntryBlock> TakeAll();

private:
    EntryList& WritableEntries() {
        if (!m_block || m_block->walkers.load(std::memory_order_acquire) != 0)
            MakeWritable();
        return m_block->entries;
    }
    void MakeWritable();
    void DropTombstones();

    std::shared_ptr<EntryBlock> m_block;
    KeyIndex m_index;
    std::size_t m_count = 0;
    std::uint64_t m_lastNumber = 0;
};

} // namespace Qor::Tivor
