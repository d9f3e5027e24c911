#include "BinaryDataFileFactory.h"

#include <QorCore/Message.h>
#include <Tivor/BinaryDataFile.h>

namespace Qor::Tivor {

std::shared_ptr<DataFile> BinaryDataFileFactory::OpenFile(const std::string& fileName, DataFile::EAccess access,
                                                          DataFile::EOpenBehavior behavior,
                                                          std::shared_ptr<DataContainer> container) {
    return std::make_shared<BinaryDataFile>(fileName, access, behavior, std::move(container));
}

std::string BinaryDataFileFactory::GetFileType() const { return BinaryDataFile::sFILE_TYPE; }

std::string BinaryDataFileFactory::DescribeFileType() const { return BinaryDataFile::sFILE_DESCRIPTION; }

void BinaryDataFileFactory::EnumExtensions(std::vector<std::string>& extensions) const {
    extensions.insert(extensions.end(), {"SRFx", "dataset", "qordata"});
}

bool BinaryDataFileFactory::IsOfThisType(const std::string& fileName) const {
    return BinaryDataFile::IsBinaryDataFile(fileName);
}

std::string BinaryDataFileFactory::ExplainRefusal(const std::string& fileName) const {
    Core::BinaryFileStream stream;
    if (!stream.Open(fileName, true, DataFile::eOPEN_EXISTING))
        return "it cannot be opened for reading";
    return Core::FormatText("its %1% bytes do not begin with a header of 12 bytes, the first of them \"QOR DATA\"",
                            {stream.GetSize()});
}

std::shared_ptr<DataFile> BinaryDataFileFactory::OpenContent(std::span<const std::byte> content,
                                                             DataFile::EAccess access,
                                                             std::shared_ptr<DataContainer> container) {
    auto file = std::make_shared<BinaryDataFile>();
    file->OpenMemory(content, access, std::move(container));
    return file;
}

bool BinaryDataFileFactory::HoldsThisType(std::span<const std::byte> content) const {
    return BinaryDataFile::IsBinaryDataFile(content);
}

void BinaryDataFileFactory::VisitHeaders(const std::string& fileName, const DataContainer::HeaderVisitor& visit) {
    BinaryDataFile::ForEachHeader(fileName, visit);
}

} // namespace Qor::Tivor
