#include <QorCore/Log.h>
#include <QorCore/Message.h>
#include <QorCore/PathName.h>
#include <Tivor/BinaryDataFile.h>
#include <Tivor/DataFileTypeManager.h>

#include <algorithm>

namespace Qor::Tivor {

DataFileConfigParseError::~DataFileConfigParseError() = default;
ReplacingDataFileFactory::~ReplacingDataFileFactory() = default;
NoDefaultDataFile::~NoDefaultDataFile() = default;

namespace {

const char* const category = "Qor.Tivor.DataFile";

using FactoryPtr = std::shared_ptr<DataFile::Factory>;

std::string InLowerCase(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return text;
}

std::string ExtensionOf(const std::string& fileName) { return InLowerCase(Core::PathName(fileName).GetExtension()); }

bool IsEmptyFile(const std::string& fileName) {
    Core::BinaryFileStream stream;
    return Core::PathName(fileName).IsFile() && stream.Open(fileName, true, DataFile::eOPEN_EXISTING) &&
           stream.GetSize() == 0;
}

[[noreturn]] void RaiseInvalidType(const std::string& fileType) {
    Core::Error::RaiseError(InvalidDataFileType(Core::FormatText("Missing installed data file type: %1%", {fileType})),
                            QOR_CODE_CONTEXT("DataFile"), category);
}

UnknownDataFileType MakeUnknownType(const std::string& fileName) {
    return UnknownDataFileType(
        Core::FormatText("Failed to determine file type of %1%, unable to open file", {fileName}));
}

/// Whether the factory takes what `accepts` tests; if not, the error learns why.
template <class Test, class Explanation>
bool IsAccepted(DataFile::Factory& factory, UnknownDataFileType& error, Test accepts, Explanation explain) {
    try {
        if (accepts())
            return true;
        error.AddVariable(factory.GetFileType(), explain());
    } catch (const std::exception& failure) {
        error.AddVariable(factory.GetFileType(), failure.what());
    } catch (...) {
        error.AddVariable(factory.GetFileType(), "an exception of unknown type");
    }
    return false;
}

} // namespace

const DataFileTypeManager::Registration* DataFileTypeManager::Find(const std::string& fileType) const {
    const auto found = std::find_if(m_registrations.begin(), m_registrations.end(),
                                    [&](const Registration& one) { return one.fileType == fileType; });
    return found != m_registrations.end() ? &*found : nullptr;
}

FactoryPtr DataFileTypeManager::GetFactory(const std::string& fileType) const {
    const Core::ReaderLock lock(m_mutex);
    if (const Registration* const registration = Find(fileType))
        return registration->factory;
    RaiseInvalidType(fileType);
}

std::string DataFileTypeManager::GetFileType(const std::type_info& dataFileClass) const {
    const Core::ReaderLock lock(m_mutex);
    for (const Registration& one : m_registrations)
        if (one.dataFileClass != nullptr && *one.dataFileClass == dataFileClass)
            return one.fileType;
    RaiseInvalidType(dataFileClass.name());
}

FactoryPtr DataFileTypeManager::GetFactory(const std::type_info& dataFileClass) const {
    return GetFactory(GetFileType(dataFileClass));
}

FactoryPtr DataFileTypeManager::GetDefaultFactory() {
    if (const std::string fileType = GetDefaultFileType(); !fileType.empty())
        return GetFactory(fileType);
    Core::WriterLock lock(m_mutex);
    if (const Registration* const former = Find(m_defaultFileType))
        return former->factory; // set meanwhile
    if (m_registrations.empty())
        Core::Error::RaiseError(NoRegisteredDataFileTypes("No DataFile types have been registered"),
                                QOR_CODE_CONTEXT("DataFile"), category);
    const Registration* const binary = Find(BinaryDataFile::sFILE_TYPE);
    const Registration chosen = binary != nullptr ? *binary : m_registrations.front();
    m_defaultFileType = chosen.fileType;
    lock.Release();
    Core::Log(category, "Default DataFile type automatically set to " + chosen.fileType);
    Core::Warning::RaiseWarning(NoDefaultDataFile(Core::FormatText(
                                    "Default DataFile type was not set, auto setting it to %1%", {chosen.fileType})),
                                QOR_CODE_CONTEXT("DataFile"), category);
    return chosen.factory;
}

std::vector<FactoryPtr> DataFileTypeManager::GetFactories() const {
    const Core::ReaderLock lock(m_mutex);
    std::vector<FactoryPtr> factories;
    for (const Registration& one : m_registrations)
        factories.push_back(one.factory);
    return factories;
}

DataFileTypeManager::Candidates DataFileTypeManager::GetCandidates(const std::string& fileName) const {
    const std::string extension = ExtensionOf(fileName);
    const Core::ReaderLock lock(m_mutex);
    Candidates candidates;
    for (const Registration& one : m_registrations) {
        const auto& all = one.extensions;
        const bool fits = !extension.empty() && std::find(all.begin(), all.end(), extension) != all.end();
        (fits ? candidates.withExtension : candidates.others).push_back(one.factory);
    }
    return candidates;
}

FactoryPtr DataFileTypeManager::FindFactoryByExtension(const std::string& fileName) const {
    const Candidates candidates = GetCandidates(fileName);
    return candidates.withExtension.empty() ? nullptr : candidates.withExtension.front();
}

FactoryPtr DataFileTypeManager::FindFactoryFor(const std::string& fileName) const {
    const Candidates candidates = GetCandidates(fileName);
    UnknownDataFileType error = MakeUnknownType(fileName);
    if (IsEmptyFile(fileName)) {
        if (!candidates.withExtension.empty())
            return candidates.withExtension.front();
        error.AddVariable("All", "the file is empty, and no type has its extension");
        Core::Error::RaiseError(std::move(error), QOR_CODE_CONTEXT("DataFile"), category);
    }
    for (const auto* const factories : {&candidates.withExtension, &candidates.others})
        for (const FactoryPtr& factory : *factories)
            if (IsAccepted(
                    *factory, error, [&] { return factory->IsOfThisType(fileName); },
                    [&] { return factory->ExplainRefusal(fileName); }))
                return factory;
    Core::Error::RaiseError(std::move(error), QOR_CODE_CONTEXT("DataFile"), category);
}

FactoryPtr DataFileTypeManager::FindFactoryFor(std::span<const std::byte> content) const {
    UnknownDataFileType error = MakeUnknownType("(in memory)");
    for (const FactoryPtr& factory : GetFactories())
        if (IsAccepted(
                *factory, error, [&] { return factory->HoldsThisType(content); },
                [] { return "it does not take this content from memory"; }))
            return factory;
    Core::Error::RaiseError(std::move(error), QOR_CODE_CONTEXT("DataFile"), category);
}

void DataFileTypeManager::SetFactory(FactoryPtr factory) { Register(nullptr, std::move(factory)); }

void DataFileTypeManager::SetFactory(const std::type_info& dataFileClass, FactoryPtr factory) {
    Register(&dataFileClass, std::move(factory));
}

void DataFileTypeManager::Register(const std::type_info* dataFileClass, FactoryPtr factory) {
    if (!factory)
        Core::Error::RaiseError(Core::NullPointerError("Expected a factory of data files, found none"),
                                QOR_CODE_CONTEXT("DataFile"), category);
    Registration made{factory->GetFileType(), factory, {}, dataFileClass};
    if (made.fileType.empty())
        Core::Error::RaiseError(Core::LogicError("Expected the name of a file type, found an empty one"),
                                QOR_CODE_CONTEXT("DataFile"), category);
    factory->EnumExtensions(made.extensions);
    std::transform(made.extensions.begin(), made.extensions.end(), made.extensions.begin(), InLowerCase);
    const std::string fileType = made.fileType;
    if (!Add(made, false)) {
        Core::Warning::RaiseWarning(
            ReplacingDataFileFactory(Core::FormatText("Replacing registered DataFile::Factory for %1%", {fileType})),
            QOR_CODE_CONTEXT("DataFile"), category);
        Add(made, true);
    }
    Core::Log(category, "Registered DataFile type: " + fileType);
}

bool DataFileTypeManager::Add(Registration& made, bool replaces) {
    const Core::WriterLock lock(m_mutex);
    auto* const former = const_cast<Registration*>(Find(made.fileType));
    if (former != nullptr && !replaces)
        return false;
    if (made.dataFileClass != nullptr)
        for (Registration& one : m_registrations)
            if (one.dataFileClass != nullptr && *one.dataFileClass == *made.dataFileClass)
                one.dataFileClass = nullptr;
    if (former == nullptr) {
        m_registrations.push_back(std::move(made));
    } else {
        if (made.dataFileClass == nullptr)
            made.dataFileClass = former->dataFileClass;
        *former = std::move(made);
    }
    return true;
}

void DataFileTypeManager::SetDefault(const std::string& fileType) {
    const Core::WriterLock lock(m_mutex);
    if (!fileType.empty() && Find(fileType) == nullptr)
        RaiseInvalidType(fileType);
    m_defaultFileType = fileType;
}

void DataFileTypeManager::SetDefault(const std::type_info& dataFileClass) { SetDefault(GetFileType(dataFileClass)); }

std::string DataFileTypeManager::GetDefaultFileType() const {
    const Core::ReaderLock lock(m_mutex);
    return m_defaultFileType;
}

void DataFileTypeManager::EnumFileTypes(std::unordered_map<std::string, std::string>& fileTypes) const {
    for (const FactoryPtr& factory : GetFactories())
        fileTypes[factory->GetFileType()] = factory->DescribeFileType();
}

std::vector<DataFilePlugIn> DataFileTypeManager::GetPlugIns() const {
    const Core::ReaderLock lock(m_mutex);
    return m_plugIns;
}

} // namespace Qor::Tivor
