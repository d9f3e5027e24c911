#include <QorCore/Message.h>
#include <Tivor/DataFile.h>

namespace Qor::Tivor {

DataFile::Factory::Factory() = default;
DataFile::Factory::~Factory() = default;

std::string DataFile::Factory::ExplainRefusal(const std::string&) const { return "it is not a file of this type"; }

std::shared_ptr<DataFile> DataFile::Factory::OpenContent(std::span<const std::byte>, EAccess,
                                                         std::shared_ptr<DataContainer>) {
    return nullptr;
}

bool DataFile::Factory::HoldsThisType(std::span<const std::byte>) const { return false; }

void DataFile::Factory::VisitHeaders(const std::string& fileName, const HeaderVisitor& visit) {
    const std::shared_ptr<DataFile> file = OpenFile(fileName, eREAD_ONLY, eOPEN_EXISTING, nullptr);
    if (!file || !file->IsOpen())
        Core::Error::RaiseError(Core::IOError(Core::FormatText("%1% cannot be opened for reading", {fileName})),
                                QOR_CODE_CONTEXT("DataFile"), "Qor.Tivor.DataFile");
    DataContainer::ForEachHeader(*file, visit, file->GetUnreadEntries());
}

} // namespace Qor::Tivor
