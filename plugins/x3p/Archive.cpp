#include "Archive.h"

#include <algorithm>
#include <zip.h>
#ifdef TIVOR_X3P_LIBDEFLATE
#include <libdeflate.h>
#endif

namespace Qor::Tivor::Measurements {

namespace {

constexpr std::uint64_t mostEntries = 10'000;
constexpr std::uint64_t mostUnpackedBytes = std::uint64_t{16} << 30;
// What one deflated byte can become at most, and what the first few can.
constexpr std::uint64_t mostBytesPerByte = 1032, someBytes = 1024;

struct SourceFree {
    void operator()(zip_source_t* source) const { zip_source_free(source); }
};
using Source = std::unique_ptr<zip_source_t, SourceFree>;

struct Discard {
    void operator()(zip_t* zip) const { zip_discard(zip); }
};
using Handle = std::unique_ptr<zip_t, Discard>;

struct FileClose {
    void operator()(zip_file_t* file) const { zip_fclose(file); }
};

#ifdef TIVOR_X3P_LIBDEFLATE
struct DecompressorFree {
    void operator()(libdeflate_decompressor* decompressor) const { libdeflate_free_decompressor(decompressor); }
};
using Decompressor = std::unique_ptr<libdeflate_decompressor, DecompressorFree>;
#endif

struct ErrorText {
    ErrorText() { zip_error_init(&error); }
    ErrorText(const ErrorText&) = delete;
    ErrorText& operator=(const ErrorText&) = delete;
    ~ErrorText() { zip_error_fini(&error); }

    std::string Get() { return zip_error_strerror(&error); }

    zip_error_t error;
};

} // namespace

struct ArchiveReader::Zip {
    Handle handle;
};

ArchiveReader::ArchiveReader(std::string bytes, const Report& report)
    : m_report(report), m_bytes(std::move(bytes)), m_zip(std::make_unique<Zip>()) {
    ErrorText error;
    Source source(zip_source_buffer_create(m_bytes.data(), m_bytes.size(), 0, &error.error));
    if (source)
        m_zip->handle.reset(zip_open_from_source(source.get(), ZIP_RDONLY, &error.error));
    if (!m_zip->handle)
        m_report.Fail("container", "a zip container", "none: " + error.Get());
    source.release(); // the container's now
    ListEntries();
}

ArchiveReader::~ArchiveReader() = default;

void ArchiveReader::ListEntries() {
    const auto count = static_cast<std::uint64_t>(zip_get_num_entries(m_zip->handle.get(), 0));
    if (count > mostEntries)
        m_report.Fail("container", "up to " + std::to_string(mostEntries) + " entries", std::to_string(count));
    for (std::uint64_t i = 0; i < count; ++i) {
        zip_stat_t stat;
        static constexpr unsigned needed =
            ZIP_STAT_NAME | ZIP_STAT_SIZE | ZIP_STAT_COMP_SIZE | ZIP_STAT_COMP_METHOD | ZIP_STAT_ENCRYPTION_METHOD;
        if (zip_stat_index(m_zip->handle.get(), i, ZIP_FL_ENC_GUESS, &stat) != 0 || (stat.valid & needed) != needed)
            m_report.Fail("container", "entry " + std::to_string(i) + " with a name and sizes",
                          zip_strerror(m_zip->handle.get()));
        CheckEntry(stat.name, stat.size, stat.comp_size, stat.comp_method, stat.encryption_method != ZIP_EM_NONE);
        const bool readsAtOnce = stat.comp_method == ZIP_CM_DEFLATE && (stat.valid & ZIP_STAT_CRC) != 0;
        m_entries.push_back({stat.name, i, stat.size, stat.comp_size, stat.crc, readsAtOnce});
    }
}

void ArchiveReader::CheckEntry(const std::string& name, std::uint64_t size, std::uint64_t packed, unsigned method,
                               bool isEncrypted) {
    if (isEncrypted || (method != ZIP_CM_STORE && method != ZIP_CM_DEFLATE))
        m_report.Fail(name, "an entry that is stored or deflated",
                      isEncrypted ? "an encrypted one" : "method " + std::to_string(method));
    const std::uint64_t left = m_bytes.size() - std::min<std::uint64_t>(m_packedBytes, m_bytes.size());
    if (packed > left)
        m_report.Fail(name, "packed bytes of its own within the container", std::to_string(packed) + " bytes");
    m_packedBytes += packed;
    const std::uint64_t most = method == ZIP_CM_STORE ? packed : packed * mostBytesPerByte + someBytes;
    if (size > most || size > mostUnpackedBytes - m_unpackedBytes)
        m_report.Fail(name,
                      Core::FormatText("at most %1% bytes", {std::min(most, mostUnpackedBytes - m_unpackedBytes)}),
                      std::to_string(size));
    m_unpackedBytes += size;
}

const ArchiveReader::Entry* ArchiveReader::Find(const std::string& name) const {
    const auto place =
        std::find_if(m_entries.begin(), m_entries.end(), [&](const Entry& entry) { return entry.name == name; });
    return place == m_entries.end() ? nullptr : &*place;
}

std::string ArchiveReader::ReadText(const Entry& entry) const {
    std::string text(static_cast<std::size_t>(entry.size), '\0');
    Read(entry, text.data());
    return text;
}

bool ArchiveReader::ReadAtOnce([[maybe_unused]] const Entry& entry, [[maybe_unused]] void* destination) const {
#ifdef TIVOR_X3P_LIBDEFLATE
    const std::unique_ptr<zip_file_t, FileClose> file(
        zip_fopen_index(m_zip->handle.get(), entry.index, ZIP_FL_ENC_GUESS | ZIP_FL_COMPRESSED));
    const auto packed = std::make_unique_for_overwrite<char[]>(static_cast<std::size_t>(entry.packedSize));
    if (!file || zip_fread(file.get(), packed.get(), entry.packedSize) != static_cast<zip_int64_t>(entry.packedSize))
        return false;
    const Decompressor decompressor(libdeflate_alloc_decompressor());
    return decompressor &&
           libdeflate_deflate_decompress(decompressor.get(), packed.get(), entry.packedSize, destination, entry.size,
                                         nullptr) == LIBDEFLATE_SUCCESS &&
           libdeflate_crc32(0, destination, entry.size) == entry.crc;
#else
    return false;
#endif
}

void ArchiveReader::Read(const Entry& entry, void* destination) const {
    if (entry.readsAtOnce && ReadAtOnce(entry, destination))
        return;
    const std::unique_ptr<zip_file_t, FileClose> file(
        zip_fopen_index(m_zip->handle.get(), entry.index, ZIP_FL_ENC_GUESS));
    if (!file)
        m_report.Fail(entry.name, "an entry that can be unpacked", zip_strerror(m_zip->handle.get()));
    auto* const bytes = static_cast<char*>(destination);
    std::uint64_t numRead = 0;
    zip_int64_t got = 1;
    while (numRead < entry.size && got > 0) {
        got = zip_fread(file.get(), bytes + numRead, entry.size - numRead);
        numRead += static_cast<std::uint64_t>(std::max<zip_int64_t>(got, 0));
    }
    char more = 0; // the checksum is looked at when there is no more
    if (got > 0 || entry.size == 0)
        got = zip_fread(file.get(), &more, 1);
    if (numRead != entry.size || got != 0)
        m_report.Fail(entry.name, std::to_string(entry.size) + " bytes with the container's checksum",
                      got < 0   ? zip_file_strerror(file.get())
                      : got > 0 ? "more"
                                : std::to_string(numRead));
}

struct ArchiveWriter::Zip {
    Source source;
    Handle handle;
};

ArchiveWriter::ArchiveWriter(const Report& report) : m_report(report), m_zip(std::make_unique<Zip>()) {
    ErrorText error;
    m_zip->source.reset(zip_source_buffer_create(nullptr, 0, 0, &error.error));
    if (m_zip->source) {
        zip_source_keep(m_zip->source.get()); // to be read when the container is closed
        m_zip->handle.reset(zip_open_from_source(m_zip->source.get(), ZIP_TRUNCATE, &error.error));
    }
    if (!m_zip->handle)
        m_report.Refuse("container", "room for a zip container", error.Get());
}

ArchiveWriter::~ArchiveWriter() = default;

void ArchiveWriter::Add(const std::string& name, std::span<const std::byte> bytes) {
    zip_t* const zip = m_zip->handle.get();
    zip_source_t* const source = zip_source_buffer(zip, bytes.data(), bytes.size(), 0);
    const zip_int64_t index = source == nullptr ? -1 : zip_file_add(zip, name.c_str(), source, ZIP_FL_ENC_UTF_8);
    if (index < 0) {
        zip_source_free(source);
        m_report.Refuse(name, "an entry that a zip container can hold", zip_strerror(zip));
    }
    static constexpr std::uint16_t firstDay = (1 << 5) | 1; // of 1980: what is written does not tell when
    if (zip_file_set_dostime(zip, static_cast<zip_uint64_t>(index), 0, firstDay, 0) != 0)
        m_report.Refuse(name, "an entry that a zip container can hold", zip_strerror(zip));
}

void ArchiveWriter::WriteTo(Core::BinaryOutputStream& stream) {
    zip_t* const zip = m_zip->handle.get();
    if (zip_close(zip) != 0)
        m_report.Refuse("container", "room for a zip container", zip_strerror(zip));
    m_zip->handle.release();
    zip_source_t* const source = m_zip->source.get();
    if (zip_source_open(source) != 0)
        m_report.Refuse("container", "a container that can be read", zip_error_strerror(zip_source_error(source)));
    std::vector<char> piece(1 << 20);
    zip_int64_t got = 0;
    while ((got = zip_source_read(source, piece.data(), piece.size())) > 0)
        stream.Write(piece.data(), static_cast<std::uint64_t>(got));
    zip_source_close(source);
    if (got < 0)
        m_report.Refuse("container", "a container that can be read", zip_error_strerror(zip_source_error(source)));
}

} // namespace Qor::Tivor::Measurements
