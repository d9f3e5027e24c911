#include "XMLDataFileFactory.h"

namespace Qor::Tivor {

void XMLDataFileFactory::EnumExtensions(std::vector<std::string>& extensions) const { extensions.push_back("qordml"); }

bool XMLDataFileFactory::IsOfThisType(const std::string& fileName) const {
    return XMLDataFile::IsXMLDataFile(fileName);
}

bool XMLDataFileFactory::HoldsThisType(std::span<const std::byte> content) const {
    return XMLDataFile::IsXMLDataFile(content);
}

std::string XMLDataFileFactory::ExplainRefusalOf(const Core::BinaryFileStream&) const {
    return "it is no XML document whose first element is <DataContainer>";
}

} // namespace Qor::Tivor
