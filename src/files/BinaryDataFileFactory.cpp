#include "BinaryDataFileFactory.h"

#include <QorCore/Message.h>

namespace Qor::Tivor {

void BinaryDataFileFactory::EnumExtensions(std::vector<std::string>& extensions) const {
    extensions.insert(extensions.end(), {"SRFx", "dataset", "qordata"});
}

bool BinaryDataFileFactory::IsOfThisType(const std::string& fileName) const {
    return BinaryDataFile::IsBinaryDataFile(fileName);
}

bool BinaryDataFileFactory::HoldsThisType(std::span<const std::byte> content) const {
    return BinaryDataFile::IsBinaryDataFile(content);
}

void BinaryDataFileFactory::VisitHeaders(const std::string& fileName, const DataContainer::HeaderVisitor& visit) {
    BinaryDataFile::ForEachHeader(fileName, visit);
}

std::string BinaryDataFileFactory::ExplainRefusalOf(const Core::BinaryFileStream& file) const {
    return Core::FormatText("its %1% bytes do not begin with a header of 12 bytes, the first of them \"QOR DATA\"",
                            {file.GetSize()});
}

} // namespace Qor::Tivor
