#include "EntryTable.h"

#include <QorCore/Message.h>

#include <new>
#include <utility>

namespace Qor::Tivor {

std::uint32_t EntryTable::PositionOf(const std::string& key, std::uint32_t hash) const {
    if (!m_block)
        return KeyIndex::none;
    const EntryList& entries = m_block->entries;
    return m_index.Find(hash, [&](std::uint32_t candidate) { return entries[candidate].key == key; });
}

const NumberedEntry* EntryTable::Find(const std::string& key, std::uint32_t hash) const {
    const std::uint32_t position = PositionOf(key, hash);
    return position != KeyIndex::none ? &m_block->entries[position] : nullptr;
}

const NumberedEntry* EntryTable::FindNumber(std::uint64_t number) const {
    std::size_t first = 0;
    std::size_t last = m_block ? m_block->entries.GetSize() : 0;
    while (first < last) {
        const std::size_t middle = first + (last - first) / 2;
        if (m_block->entries[middle].number < number)
            first = middle + 1;
        else
            last = middle;
    }
    if (!m_block || first == m_block->entries.GetSize())
        return nullptr;
    const NumberedEntry& found = m_block->entries[first];
    return found.number == number && found.object ? &found : nullptr;
}

void EntryTable::MakeWritable() {
    m_block = m_block ? std::make_shared<EntryBlock>(m_block->entries) : std::make_shared<EntryBlock>();
}

void EntryTable::Insert(const std::string& key, std::uint32_t hash, std::shared_ptr<DataObject>&& object) {
    if (m_count >= KeyIndex::none - 1)
        Core::Error::RaiseError(
            Core::OutOfRangeError(Core::FormatText("A container holds at most %1% entries", {KeyIndex::none - 1})),
            QOR_CODE_CONTEXT("DataContainer"), "Qor.Tivor.DataContainer");
    EntryList& entries = WritableEntries();
    m_index.ReserveNext();
    const auto position = static_cast<std::uint32_t>(entries.GetSize());
    entries.Append(key, std::move(object), m_lastNumber + 1);
    m_index.Insert(hash, position);
    ++m_lastNumber;
    ++m_count;
}

std::shared_ptr<DataObject> EntryTable::Replace(std::uint32_t position, std::shared_ptr<DataObject>&& object) {
    return std::exchange(WritableEntries()[position].object, std::move(object));
}

std::shared_ptr<DataObject> EntryTable::Remove(const std::string& key, std::uint32_t hash) {
    const std::uint32_t position = PositionOf(key, hash);
    NumberedEntry& tombstone = WritableEntries()[position];
    m_index.Remove(hash, position);
    tombstone.key.clear();
    --m_count;
    std::shared_ptr<DataObject> object = std::move(tombstone.object);
    if (m_block->entries.GetSize() > 2 * m_count)
        DropTombstones();
    return object;
}

// Built aside: where memory is short, the tombstones stay.
void EntryTable::DropTombstones() {
    try {
        auto kept = std::make_shared<EntryBlock>();
        KeyIndex index;
        index.Reserve(m_count);
        for (const NumberedEntry& entry : m_block->entries) {
            if (!entry.object)
                continue;
            index.Insert(HashOfKey(entry.key), static_cast<std::uint32_t>(kept->entries.GetSize()));
            kept->entries.Append(entry.key, std::shared_ptr(entry.object), entry.number);
        }
        m_block = std::move(kept);
        m_index = std::move(index);
    } catch (const std::bad_alloc&) {
    }
}

std::shared_ptr<EntryBlock> EntryTable::TakeAll() {
    m_index.Clear();
    m_count = 0;
    return std::exchange(m_block, nullptr);
}

} // namespace Qor::Tivor
