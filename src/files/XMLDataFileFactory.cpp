#include "XMLDataFileFactory.h"

#include <Tivor/XMLDataFile.h>

namespace Qor::Tivor {

std::shared_ptr<DataFile> XMLDataFileFactory::OpenFile(const std::string& fileName, DataFile::EAccess access,
                                                       DataFile::EOpenBehavior behavior,
                                                       std::shared_ptr<DataContainer> container) {
    return std::make_shared<XMLDataFile>(fileName, access, behavior, std::move(container));
}

std::string XMLDataFileFactory::GetFileType() const { return XMLDataFile::sFILE_TYPE; }

std::string XMLDataFileFactory::DescribeFileType() const { return XMLDataFile::sFILE_DESCRIPTION; }

void XMLDataFileFactory::EnumExtensions(std::vector<std::string>& extensions) const { extensions.push_back("qordml"); }

bool XMLDataFileFactory::IsOfThisType(const std::string& fileName) const {
    return XMLDataFile::IsXMLDataFile(fileName);
}

std::string XMLDataFileFactory::ExplainRefusal(const std::string& fileName) const {
    Core::BinaryFileStream stream;
    if (!stream.Open(fileName, true, DataFile::eOPEN_EXISTING))
        return "it cannot be opened for reading";
    return "it is no XML document whose first element is <DataContainer>";
}

std::shared_ptr<DataFile> XMLDataFileFactory::OpenContent(std::span<const std::byte> content, DataFile::EAccess access,
                                                          std::shared_ptr<DataContainer> container) {
    auto file = std::make_shared<XMLDataFile>();
    file->OpenMemory(content, access, std::move(container));
    return file;
}

bool XMLDataFileFactory::HoldsThisType(std::span<const std::byte> content) const {
    return XMLDataFile::IsXMLDataFile(content);
}

} // namespace Qor::Tivor
