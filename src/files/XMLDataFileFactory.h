#pragma once

#include <Tivor/DataFile.h>

namespace Qor::Tivor {

class XMLDataFileFactory final : public DataFile::Factory {
public:
    std::shared_ptr<DataFile> OpenFile(const std::string& fileName, DataFile::EAccess access,
                                       DataFile::EOpenBehavior behavior,
                                       std::shared_ptr<DataContainer> container) override;
    std::string GetFileType() const override;
    std::string DescribeFileType() const override;
    void EnumExtensions(std::vector<std::string>& extensions) const override;
    bool IsOfThisType(const std::string& fileName) const override;
    std::string ExplainRefusal(const std::string& fileName) const override;
    std::shared_ptr<DataFile> OpenContent(std::span<const std::byte> content, DataFile::EAccess access,
                                          std::shared_ptr<DataContainer> container) override;
    bool HoldsThisType(std::span<const std::byte> content) const override;
};

} // namespace Qor::Tivor
