#pragma once

#include <Tivor/DataFile.h>

#include <span>

namespace Qor::Tivor {

/// The factory of a type of files that are read from and written to streams.
template <class File>
class StreamedFileFactory : public DataFile::Factory {
public:
    std::shared_ptr<DataFile> OpenFile(const std::string& fileName, DataFile::EAccess access,
                                       DataFile::EOpenBehavior behavior,
                                       std::shared_ptr<DataContainer> container) final {
        return std::make_shared<File>(fileName, access, behavior, std::move(container));
    }
    std::string GetFileType() const final { return File::sFILE_TYPE; }
    std::string DescribeFileType() const final { return File::sFILE_DESCRIPTION; }
    std::shared_ptr<DataFile> OpenContent(std::span<const std::byte> content, DataFile::EAccess access,
                                          std::shared_ptr<DataContainer> container) final {
        auto file = std::make_shared<File>();
        file->OpenMemory(content, access, std::move(container));
        return file;
    }
    std::string ExplainRefusal(const std::string& fileName) const final {
        Core::BinaryFileStream stream;
        return stream.Open(fileName, true, DataFile::eOPEN_EXISTING) ? ExplainRefusalOf(stream)
                                                                     : "it cannot be opened for reading";
    }

protected:
    virtual std::string ExplainRefusalOf(const Core::BinaryFileStream& file) const = 0;
};

} // namespace Qor::Tivor
