#pragma once

#include "../common/Report.h"

#include <QorCore/Stream.h>

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace Qor::Tivor::Measurements {

/// A zip container that is read from memory. Nothing is unpacked before it is asked for, and sizes are believed only as
/// far as the packed bytes can make them true.
///
/// All operations raise `MalformedMeasurement` for what cannot be read.
class ArchiveReader {
public:
    struct Entry {
        std::string name;
        std::uint64_t index;
        std::uint64_t size; ///< unpacked
        std::uint64_t packedSize;
        std::uint32_t crc;
        bool readsAtOnce; ///< deflated, with a known CRC

        bool IsFolder() const { return name.ends_with('/'); }
    };

    /// Refuses containers of more than 10,000 entries, packed by other methods than the standard's, encrypted, or whose
    /// entries would unpack to more than 16 GiB.
    ArchiveReader(std::string bytes, const Report& report);
    ArchiveReader(const ArchiveReader&) = delete;
    ArchiveReader& operator=(const ArchiveReader&) = delete;
    ~ArchiveReader();

    const std::vector<Entry>& GetEntries() const { return m_entries; }
    /// Or null.
    const Entry* Find(const std::string& name) const;
    std::string ReadText(const Entry& entry) const;
    /// Unpacks the entry to where its size has room, and checks that it is what was packed.
    void Read(const Entry& entry, void* destination) const;

private:
    struct Zip;

    /// By libdeflate, where it was found when this was built, in less than half the time. False where that fails, whose
    /// reason the slow way tells.
    bool ReadAtOnce(const Entry& entry, void* destination) const;
    void ListEntries();
    void CheckEntry(const std::string& name, std::uint64_t size, std::uint64_t packed, unsigned method,
                    bool isEncrypted);

    const Report& m_report;
    std::string m_bytes;
    std::unique_ptr<Zip> m_zip;
    std::vector<Entry> m_entries;
    std::uint64_t m_unpackedBytes = 0;
    std::uint64_t m_packedBytes = 0;
};

/// A zip container that is made: the same entries in the same order give the same bytes.
class ArchiveWriter {
public:
    explicit ArchiveWriter(const Report& report);
    ArchiveWriter(const ArchiveWriter&) = delete;
    ArchiveWriter& operator=(const ArchiveWriter&) = delete;
    ~ArchiveWriter();

    /// The bytes must stay where they are until all is written.
    void Add(const std::string& name, std::span<const std::byte> bytes);
    /// Once.
    void WriteTo(Core::BinaryOutputStream& stream);

private:
    struct Zip;

    const Report& m_report;
    std::unique_ptr<Zip> m_zip;
};

} // namespace Qor::Tivor::Measurements
