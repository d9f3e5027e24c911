#include "EntryTable.h"

#include <utility>

namespace Qor::Tivor {

using Iterator = DataContainer::Iterator;

Iterator::Iterator() = default;

Iterator::Iterator(std::shared_ptr<const EntryBlock> block) : m_block(std::move(block)) {
    if (m_block)
        m_block->walkers.fetch_add(1, std::memory_order_relaxed);
    Settle();
}

Iterator::Iterator(const Iterator& other)
    : m_block(other.m_block), m_position(other.m_position), m_entry(other.m_entry) {
    if (m_block)
        m_block->walkers.fetch_add(1, std::memory_order_relaxed);
}

Iterator::Iterator(Iterator&& other) noexcept
    : m_block(std::move(other.m_block)), m_position(other.m_position), m_entry(std::exchange(other.m_entry, nullptr)) {}

Iterator& Iterator::operator=(Iterator other) noexcept {
    m_block.swap(other.m_block);
    std::swap(m_position, other.m_position);
    std::swap(m_entry, other.m_entry);
    return *this;
}

Iterator::~Iterator() {
    if (m_block)
        m_block->walkers.fetch_sub(1, std::memory_order_release);
}

void Iterator::Settle() {
    m_entry = nullptr;
    if (!m_block)
        return;
    while (m_position < m_block->entries.GetSize() && !m_block->entries[m_position].object)
        ++m_position;
    if (m_position < m_block->entries.GetSize())
        m_entry = &m_block->entries[m_position];
}

Iterator& Iterator::operator++() {
    ++m_position;
    Settle();
    return *this;
}

Iterator Iterator::operator++(int) {
    Iterator former = *this;
    ++*this;
    return former;
}

} // namespace Qor::Tivor
