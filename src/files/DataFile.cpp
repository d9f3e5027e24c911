#include "NamingFile.h"

#include <QorCore/PathName.h>
#include <Tivor/DataFileTypeManager.h>

namespace Qor::Tivor {

DataFileError::~DataFileError() = default;
ClosedDataFileError::~ClosedDataFileError() = default;
ReadOnlyDataFileError::~ReadOnlyDataFileError() = default;
UnknownDataFileType::~UnknownDataFileType() = default;
InvalidDataFileType::~InvalidDataFileType() = default;
NoRegisteredDataFileTypes::~NoRegisteredDataFileTypes() = default;
DroppingUnreadEntries::~DroppingUnreadEntries() = default;

namespace {

using FactoryPtr = std::shared_ptr<DataFile::Factory>;

DataFile::Factory& Require(const FactoryPtr& factory) {
    if (!factory)
        Core::AssertFailed("(spFactory != nullptr)", QOR_CODE_CONTEXT("DataFile"));
    return *factory;
}

FactoryPtr ChooseFactory(const std::string& fileName, const std::string& fileType, bool hasContent) {
    DataFileTypeManager& manager = DataFileTypeManager::Instance();
    if (!fileType.empty())
        return manager.GetFactory(fileType);
    return hasContent ? manager.FindFactoryFor(fileName) : manager.GetDefaultFactory();
}

std::shared_ptr<DataFile> IfOpen(std::shared_ptr<DataFile> file) { return file && file->IsOpen() ? file : nullptr; }

} // namespace

DataFile::DataFile() : DataContainer(StandAlone()) {}

DataFile::~DataFile() = default;

std::shared_ptr<DataFile> DataFile::Open(const std::string& fileName, EAccess access, EOpenBehavior behavior,
                                         const std::string& fileType, std::shared_ptr<DataContainer> container) {
    return NamingFile(fileName, [&]() -> std::shared_ptr<DataFile> {
        const bool exists = Core::PathName(fileName).Exists();
        if (behavior == eOPEN_EXISTING && !exists)
            return nullptr;
        const FactoryPtr factory = ChooseFactory(fileName, fileType, exists && behavior != eCREATE_ALWAYS);
        return IfOpen(Require(factory).OpenFile(fileName, access, behavior, std::move(container)));
    });
}

std::shared_ptr<DataFile> DataFile::OpenMemory(std::span<const std::byte> content, EAccess access,
                                               const std::string& fileType, std::shared_ptr<DataContainer> container) {
    DataFileTypeManager& manager = DataFileTypeManager::Instance();
    const FactoryPtr factory = !fileType.empty() ? manager.GetFactory(fileType)
                               : content.empty() ? manager.GetDefaultFactory()
                                                 : manager.FindFactoryFor(content);
    return IfOpen(Require(factory).OpenContent(content, access, std::move(container)));
}

std::string DataFile::ForEachHeader(const std::string& fileName, const std::string& fileType,
                                    const HeaderVisitor& visit) {
    return NamingFile(fileName, [&] {
        const FactoryPtr factory = ChooseFactory(fileName, fileType, true);
        Require(factory).VisitHeaders(fileName, visit);
        return factory->GetFileType();
    });
}

void DataFile::EnumFileTypes(std::unordered_map<std::string, std::string>& fileTypes) {
    DataFileTypeManager::Instance().EnumFileTypes(fileTypes);
}

std::string DataFile::GetDefaultFileType() { return DataFileTypeManager::Instance().GetDefaultFileType(); }

void DataFile::SetDefaultFileType(const std::string& fileType) { DataFileTypeManager::Instance().SetDefault(fileType); }

void DataFile::LoadPlugIns(const std::string& directory) { DataFileTypeManager::Instance().LoadPlugIns(directory); }

FactoryPtr DataFile::GetFactory(const std::type_info* dataFileClass) {
    return DataFileTypeManager::Instance().GetFactory(*dataFileClass);
}

void DataFile::SetFactory(const std::type_info* dataFileClass, FactoryPtr factory) {
    DataFileTypeManager::Instance().SetFactory(*dataFileClass, std::move(factory));
}

void DataFile::SetDefault(const std::type_info* dataFileClass) {
    DataFileTypeManager::Instance().SetDefault(*dataFileClass);
}

bool DataFile::OpenMemory(std::span<const std::byte>, EAccess, std::shared_ptr<DataContainer>) { return false; }

std::vector<std::byte> DataFile::GetContent() const { return {}; }

std::vector<UnreadEntry> DataFile::GetUnreadEntries() const { return {}; }

std::shared_ptr<DataContainer> DataFile::GetMetaData(const std::string& name) {
    return GetSubData({sMETA_DATA, name}, false);
}

void DataFile::SetMetaData(const std::string& name, std::shared_ptr<DataContainer> metaData) {
    if (metaData) {
        if (const auto all = GetSubData({sMETA_DATA}, true))
            all->Put(name, std::move(metaData));
    } else if (const auto all = GetSubData({sMETA_DATA}, false)) {
        all->Remove(name);
    }
}

} // namespace Qor::Tivor
