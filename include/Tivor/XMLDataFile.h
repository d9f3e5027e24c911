#pragma once

#include <Tivor/DataFile.h>

namespace Qor::Tivor {

/// A data file that holds the XML form of a container: one document, as `DataContainer::OutputXML` writes it.
///
/// Opened with `eCREATE_ALWAYS`, an existing file keeps what it holds until the first `Flush`.
class TIVOR_API XMLDataFile final : public StreamedDataFile {
public:
    static const std::string sFILE_TYPE;
    static const std::string sFILE_DESCRIPTION;

    XMLDataFile();
    /// Opens at once; `IsOpen` tells whether that succeeded.
    XMLDataFile(const std::string& fileName, EAccess access, EOpenBehavior behavior,
                std::shared_ptr<DataContainer> container);
    ~XMLDataFile() override;

    std::string GetFileType() const override;
    std::string DescribeFileType() const override;

    /// Whether the file exists and its first element is that of a container; raises nothing. Of a large file no more is
    /// read than its beginning.
    static bool IsXMLDataFile(const std::string& fileName);
    static bool IsXMLDataFile(std::span<const std::byte> content);

protected:
    /// Raises what `DataContainer::InputXML` raises.
    void ReadContent(Core::BinaryInputStream& stream, const std::string& fileName, DataContainer& content) override;
    void WriteContent(Core::BinaryOutputStream& stream) const override;
};

} // namespace Qor::Tivor
