#pragma once

#include <Tivor/DataFile.h>

namespace Qor::Tivor {

/// The file does not begin with the header of a binary data file.
QOR_DECLARE_ALERT(TIVOR_API, InvalidFileHeader, Core::IOError);
/// The file was written by a program of another character set.
QOR_DECLARE_ALERT(TIVOR_API, IncompatibleCharacterSet, Core::IOError);

/// A data file that holds the binary form of a container.
///
/// Layout: the 8 bytes "QOR DATA"; 0x01; 0x00 0x00; the character-set mark, 'A' or 'U' (this library writes 'A' and
/// does not read 'U'); from offset 12 on the container (see `DataContainer`). What follows its end marker is ignored,
/// and cut off by the next save.
class TIVOR_API BinaryDataFile final : public StreamedDataFile {
public:
    static const std::string sFILE_TYPE;
    static const std::string sFILE_DESCRIPTION;

    BinaryDataFile();
    /// Opens at once; `IsOpen` tells whether that succeeded.
    BinaryDataFile(const std::string& fileName, EAccess access, EOpenBehavior behavior,
                   std::shared_ptr<DataContainer> container);
    ~BinaryDataFile() override;

    std::string GetFileType() const override;
    std::string DescribeFileType() const override;

    /// Whether the file exists and begins like a binary data file; raises nothing.
    static bool IsBinaryDataFile(const std::string& fileName);
    static bool IsBinaryDataFile(std::span<const std::byte> content);
    /// `DataFile::ForEachHeader` for such a file.
    static void ForEachHeader(const std::string& fileName, const HeaderVisitor& visit);
    using DataContainer::ForEachHeader;

protected:
    /// Raises `InvalidFileHeader`, `IncompatibleCharacterSet`, and what `DataContainer::InputData` raises.
    void ReadContent(Core::BinaryInputStream& stream, const std::string& fileName, DataContainer& content) override;
    void WriteContent(Core::BinaryOutputStream& stream) const override;

private:
    static void VisitFile(const std::string& fileName, const HeaderVisitor& visit);
};

} // namespace Qor::Tivor
