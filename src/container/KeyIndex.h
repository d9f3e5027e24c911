#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace Qor::Tivor {

/// The hash under which keys are found. Seeded once per process, so that no file can be made whose keys collide.
std::uint32_t HashOfKey(std::string_view key);

/// Finds positions by hash: an open-addressed table of small slots. The keys themselves stay with the entries, and are
/// compared only where all 32 bits of the hash agree.
class KeyIndex {
public:
    static constexpr std::uint32_t none = 0xFFFFFFFF;

    /// The position stored under `hash` for which `isSame(position)` holds, or `none`.
    template <class IsSame>
    std::uint32_t Find(std::uint32_t hash, IsSame isSame) const {
        if (m_slots.empty())
            return none;
        for (std::size_t at = hash & Mask(); m_slots[at].position != none; at = (at + 1) & Mask())
            if (m_slots[at].hash == hash && isSame(m_slots[at].position))
                return m_slots[at].position;
        return none;
    }

    void Expect(std::uint32_t hash) const {
        if (!m_slots.empty())
            __builtin_prefetch(&m_slots[hash & Mask()]);
    }

    /// Makes room, so that the next `Insert` cannot fail.
    void ReserveNext() {
        if ((m_used + 1) * 5 > m_slots.size() * 4)
            Grow();
    }
    void Insert(std::uint32_t hash, std::uint32_t position);
    void Remove(std::uint32_t hash, std::uint32_t position);
    void Clear();
    void Reserve(std::size_t count);

private:
    struct Slot {
        std::uint32_t hash = 0;
        std::uint32_t position = none;
    };

    std::size_t Mask() const { return m_slots.size() - 1; }
    void Place(Slot slot);
    void Grow();
    void Rehash(std::size_t slots);

    std::vector<Slot> m_slots; // a power of two, at most four fifths full, or none at all
    std::size_t m_used = 0;
};

} // namespace Qor::Tivor
