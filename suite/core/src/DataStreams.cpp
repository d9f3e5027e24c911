#include <QorCore/Alert.h>
#include <QorCore/DataStreams.h>
#include <QorCore/Message.h>
#include <QorCore/Utf8.h>

#include <algorithm>
#include <limits>

namespace Qor::Core {

bool DataInputStream::Read(std::string& value) {
    std::uint32_t size = 0;
    return Read(size) && ReadBytes(value, size);
}

bool DataInputStream::Read(std::wstring& value) {
    std::string utf8;
    if (!Read(utf8))
        return false;
    value = WideFromUtf8(utf8);
    return true;
}

bool DataInputStream::ReadBytes(std::string& bytes, std::uint64_t size) {
    // A little is taken on trust; more only when the stream is known to hold it, or piece by piece as it arrives.
    static constexpr std::uint64_t trusted = std::uint64_t{1} << 16;
    static constexpr std::uint64_t firstPiece = std::uint64_t{1} << 20;
    const std::optional<std::uint64_t> left = size > trusted ? m_stream.BytesLeft() : size;
    bytes.clear();
    if (left && *left < size)
        return false;
    for (std::uint64_t done = 0; done < size;) {
        const std::uint64_t piece = left ? size : std::min(size - done, std::max(firstPiece, done));
        bytes.resize(static_cast<std::size_t>(done + piece));
        const std::uint64_t got = m_stream.Read(bytes.data() + done, piece);
        done += got;
        if (got < piece) {
            bytes.resize(static_cast<std::size_t>(done));
            return false;
        }
    }
    return true;
}

void DataOutputStream::Write(std::string_view value) {
    if (value.size() > std::numeric_limits<std::uint32_t>::max())
        Error::RaiseError(
            OutOfRangeError(FormatText("A string of %1% bytes is longer than the stored form allows (%2% bytes)",
                                       {value.size(), std::numeric_limits<std::uint32_t>::max()})),
            QOR_CODE_CONTEXT("DataOutputStream"), "Qor.Core.DataOutputStream");
    Write(static_cast<std::uint32_t>(value.size()));
    m_stream.Write(value.data(), value.size());
}

void DataOutputStream::Write(std::wstring_view value) { Write(Utf8FromWide(value)); }

} // namespace Qor::Core
