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

void BinaryDataFile::ReadContent(Core::BinaryFileStream& file, DataContainer& content) {
    Core::BufferedInputStream stream(file, GetBufferSize());
    FileHeader header{};
    if (stream.Read(header.data(), header.size()) != header.size() || !HasMagic(header))
        Core::Error::RaiseError(
            InvalidFileHeader(
                Core::FormatText("%1% does not have a valid QOR Binary Data File header", {file.GetPath().ToString()})),
            QOR_CODE_CONTEXT("BinaryDataFile"), category);
    if (header[characterSet] == 'U')
        Core::Error::RaiseError(IncompatibleCharacterSet(Core::FormatText(
                                    "%1% was saved with a Unicode compiled executable, cannot open with "
                                    "the current ASCII compiled executable",
                                    {file.GetPath().ToString()})),
                                QOR_CODE_CONTEXT("BinaryDataFile"), category);
    content.InputData(stream);
}

void BinaryDataFile::WriteContent(Core::BinaryOutputStream& stream) const {
    stream.Write(writtenHeader.data(), writtenHeader.size());
    OutputData(stream, true);
}

} // namespace Qor::Tivor
