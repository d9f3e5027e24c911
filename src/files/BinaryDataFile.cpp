#include "NamingFile.h"

#include <QorCore/BufferedStreams.h>
#include <QorCore/Log.h>
#include <QorCore/Message.h>
#include <QorCore/PathName.h>
#include <QorCore/System.h>
#include <Tivor/BinaryDataFile.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace Qor::Tivor {

InvalidFileHeader::~InvalidFileHeader() = default;
IncompatibleCharacterSet::~IncompatibleCharacterSet() = default;

namespace {

const char* const category = "Qor.Tivor.BinaryDataFile";

using FileHeader = std::array<char, 12>;

constexpr FileHeader writtenHeader{'Q', 'O', 'R', ' ', 'D', 'A', 'T', 'A', 1, 0, 0, 'A'};
constexpr std::size_t magicSize = 8;
constexpr std::size_t characterSet = 11;

bool HasMagic(const FileHeader& header) {
    return std::equal(header.begin(), header.begin() + magicSize, writtenHeader.begin());
}

std::uint64_t GetBufferSize() {
    return std::max<std::uint64_t>(16 * Core::System::GetPageSize(), std::uint64_t{64} * 1024);
}

void ReadHeader(Core::BinaryInputStream& stream, const std::string& fileName) {
    FileHeader header{};
    if (stream.Read(header.data(), header.size()) != header.size() || !HasMagic(header))
        Core::Error::RaiseError(
            InvalidFileHeader(Core::FormatText("%1% does not have a valid QOR Binary Data File header", {fileName})),
            QOR_CODE_CONTEXT("BinaryDataFile"), category);
    if (header[characterSet] == 'U')
        Core::Error::RaiseError(
            IncompatibleCharacterSet(Core::FormatText("%1% was saved with a Unicode compiled executable, cannot open "
                                                      "with the current ASCII compiled executable",
                                                      {fileName})),
            QOR_CODE_CONTEXT("BinaryDataFile"), category);
}

} // namespace

const std::string BinaryDataFile::sFILE_TYPE = "QOR Binary Data File";
const std::string BinaryDataFile::sFILE_DESCRIPTION = "Stores binary data serialized by the QOR Binary Data File";

BinaryDataFile::BinaryDataFile() : StreamedDataFile(category) {}

BinaryDataFile::BinaryDataFile(const std::string& fileName, EAccess access, EOpenBehavior behavior,
                               std::shared_ptr<DataContainer> container)
    : BinaryDataFile() {
    Open(fileName, access, behavior, std::move(container));
}

BinaryDataFile::~BinaryDataFile() { StopChanges(); }

std::string BinaryDataFile::GetFileType() const { return sFILE_TYPE; }

std::string BinaryDataFile::DescribeFileType() const { return sFILE_DESCRIPTION; }

bool BinaryDataFile::IsBinaryDataFile(const std::string& fileName) {
    try {
        if (!Core::PathName(fileName).Exists()) {
            Core::Log(category, "The file to be tested does not exist: " + fileName);
            return false;
        }
        Core::BinaryFileStream stream;
        FileHeader header{};
        return stream.Open(fileName, true, eOPEN_EXISTING) &&
               stream.Read(header.data(), header.size()) == header.size() && HasMagic(header);
    } catch (const std::exception&) {
        return false;
    }
}

bool BinaryDataFile::IsBinaryDataFile(std::span<const std::byte> content) {
    FileHeader header{};
    if (content.size() < header.size())
        return false;
    std::memcpy(header.data(), content.data(), header.size());
    return HasMagic(header);
}

void BinaryDataFile::ForEachHeader(const std::string& fileName, const HeaderVisitor& visit) {
    NamingFile(fileName, [&] { VisitFile(fileName, visit); });
}

void BinaryDataFile::VisitFile(const std::string& fileName, const HeaderVisitor& visit) {
    Core::BinaryFileStream file;
    if (!file.Open(fileName, true, eOPEN_EXISTING))
        Core::Error::RaiseError(Core::IOError(Core::FormatText("%1% cannot be opened for reading", {fileName})),
                                QOR_CODE_CONTEXT("BinaryDataFile"), category);
    if (file.GetSize() == 0)
        return;
    // Small, since most of what it would read ahead is skipped.
    Core::BufferedInputStream stream(file, Core::System::GetPageSize());
    ReadHeader(stream, fileName);
    DataContainer::ForEachHeader(stream, visit);
}

void BinaryDataFile::ReadContent(Core::BinaryInputStream& file, const std::string& fileName, DataContainer& content) {
    Core::BufferedInputStream stream(file, GetBufferSize());
    ReadHeader(stream, fileName);
    content.InputData(stream);
}

void BinaryDataFile::WriteContent(Core::BinaryOutputStream& stream) const {
    stream.Write(writtenHeader.data(), writtenHeader.size());
    OutputData(stream, true);
}

} // namespace Qor::Tivor
