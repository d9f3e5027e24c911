#include "KeyIndex.h"

#include <algorithm>
#include <bit>
#include <random>
#include <utility>

#define XXH_INLINE_ALL
#include <xxhash.h>

namespace Qor::Tivor {

namespace {

std::uint64_t MakeSeed() {
    std::random_device device;
    return std::uint64_t{device()} << 32 | device();
}

constexpr std::size_t leastSlots = 4;

} // namespace

std::uint32_t HashOfKey(std::string_view key) {
    static const std::uint64_t seed = MakeSeed();
    const std::uint64_t hash = XXH3_64bits_withSeed(key.data(), key.size(), seed);
    return static_cast<std::uint32_t>(hash ^ hash >> 32);
}

void KeyIndex::Place(Slot slot) {
    std::size_t at = slot.hash & Mask();
    while (m_slots[at].position != none)
        at = (at + 1) & Mask();
    m_slots[at] = slot;
}

void KeyIndex::Rehash(std::size_t slots) {
    std::vector<Slot> former(slots);
    former.swap(m_slots);
    for (const Slot& slot : former)
        if (slot.position != none)
            Place(slot);
}

void KeyIndex::Reserve(std::size_t count) {
    const std::size_t slots = std::bit_ceil(std::max(leastSlots, count + count / 4 + 1));
    if (slots > m_slots.size())
        Rehash(slots);
}

void KeyIndex::Insert(std::uint32_t hash, std::uint32_t position) {
    ReserveNext();
    Place({hash, position});
    ++m_used;
}

void KeyIndex::Grow() { Rehash(std::max(leastSlots, m_slots.size() * 2)); }

void KeyIndex::Remove(std::uint32_t hash, std::uint32_t position) {
    std::size_t hole = hash & Mask();
    while (m_slots[hole].position != position)
        hole = (hole + 1) & Mask();
    // Later slots of the run move up, unless that would put them in front of where their search begins.
    for (std::size_t at = (hole + 1) & Mask(); m_slots[at].position != none; at = (at + 1) & Mask()) {
        const std::size_t home = m_slots[at].hash & Mask();
        if (((at - home) & Mask()) >= ((at - hole) & Mask())) {
            m_slots[hole] = m_slots[at];
            hole = at;
        }
    }
    m_slots[hole] = {};
    --m_used;
}

void KeyIndex::Clear() {
    m_slots.clear();
    m_used = 0;
}

} // namespace Qor::Tivor
