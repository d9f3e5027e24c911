#include "EntryTable.h"

#include <QorCore/Message.h>

#include <algorithm>
#include <utility>

namespace Qor::Tivor {

const NumberedEntry* EntryTable::Find(const std::string& key, std::uint32_t hash) const {
    if (!m_block)
        return nullptr;
    const std::vector<NumberedEntry>& entries = m_block->entries;
    const std::uint32_t position =
        m_index.Find(hash, [&](std::uint32_t candidate) { return entries[candidate].key == key; });
    return position != KeyIndex::none ? &entries[position] : nullptr;
}

const NumberedEntry* EntryTable::FindNumber(std::uint64_t number) const {
    if (!m_block)
        return nullptr;
    const std::vector<NumberedEntry>& entries = m_block->entries;
    const auto found = std::lower_bound(entries.begin(), entries.end(), number,
                                        [](const NumberedEntry& entry, std::uint64_t n) { return entry.number < n; });
    return found != entries.end() && found->number == number && found->object ? &*found : nullptr;
}

std::uint32_t EntryTable::PositionOf(const NumberedEntry& entry) const {
    return static_cast<std::uint32_t>(&entry - m_block->entries.data());
}

std::vector<NumberedEntry>& EntryTable::WritableEntries() {
    if (!m_block) {
        m_block = std::make_shared<EntryBlock>();
    } else if (m_block->walkers.load(std::memory_order_acquire) != 0) {
        auto copy = std::make_shared<EntryBlock>();
        copy->entries.reserve(m_block->entries.size() + 1);
        copy->entries = m_block->entries;
        m_block = std::move(copy);
    }
    return m_block->entries;
}

const NumberedEntry& EntryTable::Insert(const std::string& key, std::uint32_t hash,
                                        std::shared_ptr<DataObject> object) {
    if (m_count >= KeyIndex::none - 1)
        Core::Error::RaiseError(
            Core::OutOfRangeError(Core::FormatText("A container holds at most %1% entries", {KeyIndex::none - 1})),
            QOR_CODE_CONTEXT("DataContainer"), "Qor.Tivor.DataContainer");
    std::vector<NumberedEntry>& entries = WritableEntries();
    const auto position = static_cast<std::uint32_t>(entries.size());
    entries.push_back({{key, std::move(object)}, m_lastNumber + 1});
    try {
        m_index.Insert(hash, position);
    } catch (...) {
        entries.pop_back();
        throw;
    }
    ++m_lastNumber;
    ++m_count;
    return entries.back();
}

std::shared_ptr<DataObject> EntryTable::Replace(const NumberedEntry& entry, std::shared_ptr<DataObject> object) {
    const std::uint32_t position = PositionOf(entry);
    return std::exchange(WritableEntries()[position].object, std::move(object));
}

std::shared_ptr<DataObject> EntryTable::Remove(const NumberedEntry& entry) {
    const std::uint32_t position = PositionOf(entry);
    NumberedEntry& tombstone = WritableEntries()[position];
    m_index.Remove(HashOfKey(tombstone.key), position);
    tombstone.key.clear();
    --m_count;
    std::shared_ptr<DataObject> object = std::move(tombstone.object);
    if (m_block->entries.size() > 2 * m_count)
        DropTombstones();
    return object;
}

void EntryTable::DropTombstones() {
    std::erase_if(m_block->entries, [](const NumberedEntry& entry) { return !entry.object; });
    m_index.Clear();
    m_index.Reserve(m_block->entries.size());
    for (std::size_t i = 0; i < m_block->entries.size(); ++i)
        m_index.Insert(HashOfKey(m_block->entries[i].key), static_cast<std::uint32_t>(i));
}

std::shared_ptr<EntryBlock> EntryTable::TakeAll() {
    m_index.Clear();
    m_count = 0;
    return std::exchange(m_block, nullptr);
}

} // namespace Qor::Tivor
