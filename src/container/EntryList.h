#pragma once

#include <Tivor/DataContainer.h>

#include <bit>
#include <iterator>
#include <utility>

namespace Qor::Tivor {

/// An entry with its number: numbers ascend in entry order, are never used twice, and begin with 1. A removed entry
/// stays as a tombstone without an object until half of the list is tombstones.
struct alignas(64) NumberedEntry : DataContainer::Entry {
    std::uint64_t number = 0;
};

/// Entries in pieces that double in size, so that a growing list moves nothing and touches only memory that it fills.
class EntryList {
public:
    class Iterator {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = NumberedEntry;
        using difference_type = std::ptrdiff_t;
        using pointer = const NumberedEntry*;
        using reference = const NumberedEntry&;

        Iterator() = default;
        Iterator(const EntryList* list, std::size_t position) : m_list(list), m_position(position) {}
        reference operator*() const { return (*m_list)[m_position]; }
        Iterator& operator++() {
            ++m_position;
            return *this;
        }
        Iterator operator++(int) { return std::exchange(*this, Iterator(m_list, m_position + 1)); }
        bool operator==(const Iterator&) const = default;

    private:
        const EntryList* m_list = nullptr;
        std::size_t m_position = 0;
    };

    EntryList() = default;
    EntryList(const EntryList& other) : EntryList() {
        for (const NumberedEntry& entry : other)
            Append(entry.key, std::shared_ptr(entry.object), entry.number);
    }
    EntryList& operator=(const EntryList&) = delete;
    ~EntryList() {
        for (std::size_t position = 0; position < m_size; ++position)
            std::destroy_at(&(*this)[position]);
        for (std::size_t piece = 0; piece < m_pieces.size(); ++piece)
            std::allocator<NumberedEntry>().deallocate(m_pieces[piece], PieceSize(piece));
    }

    std::size_t GetSize() const { return m_size; }
    const NumberedEntry& operator[](std::size_t position) const {
        const std::size_t piece = PieceOf(position);
        return m_pieces[piece][position - PieceBegin(piece)];
    }
    NumberedEntry& operator[](std::size_t position) {
        return const_cast<NumberedEntry&>(std::as_const(*this)[position]);
    }
    Iterator begin() const { return {this, 0}; }
    Iterator end() const { return {this, m_size}; }

    void Append(const std::string& key, std::shared_ptr<DataObject>&& object, std::uint64_t number) {
        if (PieceOf(m_size) == m_pieces.size())
            AddPiece();
        new (&(*this)[m_size]) NumberedEntry{{key, std::move(object)}, number};
        ++m_size;
    }

private:
    static constexpr std::size_t firstSize = 2;

    static std::size_t PieceOf(std::size_t position) {
        return static_cast<std::size_t>(std::bit_width(position / firstSize));
    }
    static std::size_t PieceSize(std::size_t piece) { return piece == 0 ? firstSize : firstSize / 2 << piece; }
    static std::size_t PieceBegin(std::size_t piece) { return piece == 0 ? 0 : firstSize / 2 << piece; }

    void AddPiece() {
        m_pieces.reserve(m_pieces.size() + 1);
        m_pieces.push_back(std::allocator<NumberedEntry>().allocate(PieceSize(m_pieces.size())));
    }

    std::vector<NumberedEntry*> m_pieces;
    std::size_t m_size = 0;
};

} // namespace Qor::Tivor
