// Uses the manager of file types for the first time, and prints what there is then, one thing a line. Stands in a
// directory of its own with plug-ins and a configuration.
//
//     FileTypesProgram                     only that
//     FileTypesProgram load <directory>... loads the plug-ins of directories
//     FileTypesProgram threads             the first use is that of several threads at once

#include "MarkedFile.h"
#include "Threads.h"

#include <QorCore/Log.h>
#include <QorCore/System.h>
#include <Tivor/DataFileTypeManager.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <mutex>

using namespace Qor;
using namespace Qor::Tivor;

namespace {

void Print(const std::string& line) {
    static std::mutex mutex;
    const std::lock_guard guard(mutex);
    std::cout << line << '\n';
}

std::string WithSlashes(std::string fileName) {
    std::replace(fileName.begin(), fileName.end(), '\\', '/');
    return fileName;
}

std::string SeenFromHere(const std::string& fileName) {
    const std::string seen = WithSlashes(fileName);
    const std::string here = WithSlashes(Core::System::GetProcessDirectory().ToString()) + '/';
    return seen.starts_with(here) ? seen.substr(here.size()) : seen;
}

void Report() {
    const DataFileTypeManager& manager = DataFileTypeManager::Instance();
    for (const auto& factory : manager.GetFactories())
        Print("type " + factory->GetFileType());
    for (const DataFilePlugIn& plugIn : manager.GetPlugIns()) {
        const char* const outcomes[] = {"loaded", "not loaded", "no entry point", "failed"};
        const std::string reason = plugIn.outcome == DataFilePlugIn::eNOT_LOADED && !plugIn.reason.empty()
                                       ? "the system's reason"
                                       : plugIn.reason;
        Print("plug-in " + SeenFromHere(plugIn.fileName) + ": " + outcomes[plugIn.outcome] + ": " + reason);
    }
    Print("default " + manager.GetDefaultFileType());
}

void PrintCount() {
    std::unordered_map<std::string, std::string> fileTypes;
    DataFile::EnumFileTypes(fileTypes);
    Print("count " + std::to_string(fileTypes.size()));
}

void UseByManyThreads() {
    const std::string here = Core::System::GetProcessDirectory().ToString();
    const std::function<void()> uses[] = {
        PrintCount,
        PrintCount,
        [] { Print("default " + DataFile::GetDefaultFileType()); },
        [&] { DataFile::LoadPlugIns(here + "/Plugins/DataFiles"); },
        [&] { DataFile::LoadPlugIns(here + "/More"); },
        [&] { DataFileTypeManager::Instance().ReadConfiguration(here + "/Config/DataFileConfig.xml"); },
        [] { DataFile::SetFactory<Testing::MarkedFile>(std::make_shared<Testing::MarkedFileFactory>("own", "own")); },
        [&] {
            const auto file =
                DataFile::Open(here + "/new", DataFile::eREAD_WRITE, DataFile::eCREATE_ALWAYS, "", nullptr);
            Print("opened " + (file ? file->GetFileType() : "nothing"));
        },
    };
    Core::Testing::OnThreads(static_cast<int>(std::size(uses)), [&](int number) { uses[number](); });
}

} // namespace

int main(int count, char** arguments) {
    Core::SetLogSink(
        [](const std::string& category, const std::string& text) { Print("log " + category + ' ' + text); });
    try {
        const std::string mode = count > 1 ? arguments[1] : "";
        if (mode == "threads")
            UseByManyThreads();
        for (int i = 2; i < count; ++i)
            DataFile::LoadPlugIns(arguments[i]);
        Report();
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        Print(std::string("raised ") + error.what());
        return EXIT_FAILURE;
    }
}
