#include "BinaryDataFileFactory.h"
#include "DataFileConfiguration.h"
#include "XMLDataFileFactory.h"

#include <QorCore/Log.h>
#include <QorCore/System.h>
#include <QorCore/SystemLibrary.h>
#include <Tivor/BinaryDataFile.h>
#include <Tivor/DataFileTypeManager.h>
#include <Tivor/XMLDataFile.h>

#include <algorithm>
#include <atomic>
#include <mutex>

namespace Qor::Tivor {

namespace {

const char* const category = "Qor.Tivor.DataFile";

Core::PathName GetPlugInDirectory() { return Core::System::GetProcessDirectory() / "Plugins" / "DataFiles"; }

/// Runs `work`, and gives the text of what it raises, or "".
template <class Work>
std::string CatchAll(Work work) {
    try {
        work();
        return {};
    } catch (const std::exception& error) {
        return error.what();
    } catch (...) {
        return "an exception of unknown type";
    }
}

std::string Locate(const std::string& name) {
    for (const Core::PathName& directory : {GetPlugInDirectory(), Core::System::GetProcessDirectory()})
        if (const Core::PathName file = directory / name; file.IsFile()) // an absolute name stays itself
            return file.ToString();
    return name;
}

} // namespace

/// Makes the one manager. What plug-ins do while they are loaded, on the thread that loads them, finds it as it is by
/// then; other threads wait until it is complete.
class DataFileTypeManager::Creation {
public:
    static DataFileTypeManager& Get() {
        static auto* const creation = new Creation;
        DataFileTypeManager* const complete = creation->m_complete.load(std::memory_order_acquire);
        return complete != nullptr ? *complete : creation->Make();
    }

private:
    struct Deleter {
        void operator()(DataFileTypeManager* manager) const { delete manager; }
    };

    DataFileTypeManager& Make() {
        const std::lock_guard guard(m_mutex);
        if (!m_made) {
            std::shared_ptr<DataFileTypeManager> made(new DataFileTypeManager, Deleter());
            made->SetFactory(typeid(BinaryDataFile), std::make_shared<BinaryDataFileFactory>());
            made->SetFactory(typeid(XMLDataFile), std::make_shared<XMLDataFileFactory>());
            m_made = std::move(made);
            LoadWhatStandsBesideTheProgram(*m_made);
            m_complete.store(m_made.get(), std::memory_order_release);
        }
        return *m_made;
    }

    static void LoadWhatStandsBesideTheProgram(DataFileTypeManager& manager) {
        const std::string failure = CatchAll([&] {
            manager.LoadPlugIns(GetPlugInDirectory().ToString());
            const Core::PathName configuration = Core::System::GetProcessDirectory() / "Config" / "DataFileConfig.xml";
            if (configuration.Exists())
                manager.ReadConfiguration(configuration.ToString());
        });
        if (!failure.empty())
            Core::Log(category, failure);
    }

    std::recursive_mutex m_mutex;
    std::shared_ptr<DataFileTypeManager> m_made;
    std::atomic<DataFileTypeManager*> m_complete{nullptr};
};

DataFileTypeManager::DataFileTypeManager() = default;
DataFileTypeManager::~DataFileTypeManager() = default;

DataFileTypeManager& DataFileTypeManager::Instance() { return Creation::Get(); }

const std::array<std::string, 5>& DataFileTypeManager::GetKnownPlugIns() {
    static const auto* const names = new std::array<std::string, 5>{
        "ArchiveDataFile.dll", "BlockDataFile.dll", "ObjectDataFile.dll", "ProbeDataFile.dll", "ScanDataFile.dll"};
    return *names;
}

void DataFileTypeManager::LoadPlugIns(const std::string& directory) {
    std::vector<Core::PathName> files;
    Core::System::EnumFiles(Core::PathName(directory).GetAbsolute(), "*.dll", files);
    for (const Core::PathName& file : files)
        LoadPlugIn(file.ToString());
}

void DataFileTypeManager::LoadPlugIn(const std::string& fileName) {
    using EntryPoint = void (*)(DataFileTypeManager&);
    std::string failure;
    const auto library = Core::SystemLibrary::Load(Core::PathName(fileName), failure);
    if (!library)
        return Report(fileName, DataFilePlugIn::eNOT_LOADED, failure);
    const auto entryPoint = reinterpret_cast<EntryPoint>(library->GetProcAddress("RegisterDataFileTypes"));
    if (entryPoint == nullptr)
        return Report(fileName, DataFilePlugIn::eNO_ENTRY_POINT, "it has no function \"RegisterDataFileTypes\"");
    if (!Keep(library))
        return;
    Report(fileName, DataFilePlugIn::eLOADED, {});
    failure = CatchAll([&] { entryPoint(*this); });
    if (!failure.empty()) {
        Report(fileName, DataFilePlugIn::eFAILED, failure);
        Core::Log(category, "The data file plug-in " + fileName + " failed with the error: " + failure);
    }
}

bool DataFileTypeManager::Keep(const std::shared_ptr<Core::SystemLibrary>& library) {
    const Core::WriterLock lock(m_mutex);
    const bool isNew = std::none_of(m_libraries.begin(), m_libraries.end(),
                                    [&](const auto& former) { return former->IsSameAs(*library); });
    if (isNew)
        m_libraries.push_back(library);
    return isNew;
}

void DataFileTypeManager::Report(const std::string& fileName, DataFilePlugIn::EOutcome outcome,
                                 const std::string& reason) {
    const Core::WriterLock lock(m_mutex);
    const auto former = std::find_if(m_plugIns.begin(), m_plugIns.end(),
                                     [&](const DataFilePlugIn& one) { return one.fileName == fileName; });
    if (former != m_plugIns.end())
        *former = {fileName, outcome, reason};
    else
        m_plugIns.push_back({fileName, outcome, reason});
}

void DataFileTypeManager::ReadConfiguration(const std::string& fileName) {
    const DataFileConfiguration configuration = ParseDataFileConfiguration(fileName);
    for (const std::string& plugIn : configuration.plugIns)
        LoadPlugIn(Locate(plugIn));
    if (!configuration.defaultFileType.empty())
        SetDefault(configuration.defaultFileType);
}

} // namespace Qor::Tivor
