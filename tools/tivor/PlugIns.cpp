#include "PlugIns.h"

#include "Commands.h"

#include <QorCore/PathName.h>
#include <QorCore/System.h>
#include <Tivor/BinaryDataFile.h>
#include <Tivor/XMLDataFile.h>

#include <algorithm>

namespace Qor::Tivor::Tool {

namespace {

const char* NameOf(DataFilePlugIn::EOutcome outcome) {
    switch (outcome) {
    case DataFilePlugIn::eLOADED:
        return "loaded";
    case DataFilePlugIn::eNOT_LOADED:
        return "not loaded";
    case DataFilePlugIn::eNO_ENTRY_POINT:
        return "no plug-in";
    case DataFilePlugIn::eFAILED:
        return "failed";
    }
    return "";
}

std::string DefaultFileType() { return DataFileTypeManager::Instance().GetDefaultFactory()->GetFileType(); }

/// Where plug-ins are looked for, and the file that names others.
struct Place {
    const char* what;
    Core::PathName path;
    bool exists;
};

std::vector<Place> ListPlaces() {
    const Core::PathName program = Core::System::GetProcessDirectory();
    std::vector<Place> places{{"all libraries", program / "Plugins" / "DataFiles", false},
                              {"what the configuration names", program, false},
                              {"configuration", program / "Config" / "DataFileConfig.xml", false}};
    for (Place& place : places)
        place.exists = place.path.Exists();
    return places;
}

FileTypes TypesOfPlugIns() {
    FileTypes types = DataFileTypeManager::Instance().GetFactories();
    std::erase_if(types, [](const auto& factory) {
        return factory->GetFileType() == BinaryDataFile::sFILE_TYPE ||
               factory->GetFileType() == XMLDataFile::sFILE_TYPE;
    });
    return types;
}

Json PlacesJson() {
    Json json = Json::array();
    for (const Place& place : ListPlaces())
        json.push_back({{"path", TextJson(place.path.ToString())}, {"for", place.what}, {"exists", place.exists}});
    return json;
}

void PrintPlaces(std::ostream& out) {
    out << "Searched:\n";
    for (const Place& place : ListPlaces())
        out << "  " << Show(place.path.ToString()) << " (" << place.what << ')' << (place.exists ? "" : ": not there")
            << '\n';
}

} // namespace

Json ToJson(const FileTypes& types) {
    const std::string byDefault = DefaultFileType();
    Json json = Json::array();
    for (const auto& factory : types) {
        std::vector<std::string> names;
        factory->EnumExtensions(names);
        Json extensions = Json::array();
        for (const std::string& name : names)
            extensions.push_back(TextJson(name));
        json.push_back({{"name", TextJson(factory->GetFileType())},
                        {"extensions", std::move(extensions)},
                        {"description", TextJson(factory->DescribeFileType())},
                        {"isDefault", factory->GetFileType() == byDefault}});
    }
    return json;
}

void PrintText(std::ostream& out, const FileTypes& types) {
    const std::string byDefault = DefaultFileType();
    for (const auto& factory : types) {
        const std::string name = factory->GetFileType();
        out << "  " << Show(name) << (name == byDefault ? " (default):" : ":");
        std::vector<std::string> extensions;
        factory->EnumExtensions(extensions);
        for (const std::string& extension : extensions)
            out << " ." << OneLine(extension);
        out << "; " << OneLine(factory->DescribeFileType()) << '\n';
    }
}

Json ToJson(const std::vector<DataFilePlugIn>& plugIns) {
    Json json = Json::array();
    for (const DataFilePlugIn& plugIn : plugIns)
        json.push_back({{"file", TextJson(plugIn.fileName)},
                        {"outcome", NameOf(plugIn.outcome)},
                        {"reason", TextJson(plugIn.reason)}});
    return json;
}

void PrintText(std::ostream& out, const std::vector<DataFilePlugIn>& plugIns) {
    out << "Plug-ins:" << (plugIns.empty() ? " none\n" : "\n");
    for (const DataFilePlugIn& plugIn : plugIns)
        out << "  " << Show(plugIn.fileName) << ": " << NameOf(plugIn.outcome)
            << (plugIn.reason.empty() ? "" : ", " + OneLine(plugIn.reason)) << '\n';
    out << "Known plug-ins:";
    for (const std::string& name : DataFileTypeManager::GetKnownPlugIns())
        out << ' ' << name;
    out << '\n';
}

bool AreAllLoaded(const std::vector<DataFilePlugIn>& plugIns) {
    return std::all_of(plugIns.begin(), plugIns.end(),
                       [](const DataFilePlugIn& plugIn) { return plugIn.outcome == DataFilePlugIn::eLOADED; });
}

EStatus ShowPlugIns(const Arguments& arguments, Console& console) {
    const auto plugIns = DataFileTypeManager::Instance().GetPlugIns();
    const FileTypes types = TypesOfPlugIns();
    const auto numLoaded = std::count_if(plugIns.begin(), plugIns.end(),
                                         [](const auto& one) { return one.outcome == DataFilePlugIn::eLOADED; });
    if (arguments.asJson) {
        Print(console.out, {{"found", plugIns.size()},
                            {"loaded", numLoaded},
                            {"plugIns", ToJson(plugIns)},
                            {"fileTypes", ToJson(types)},
                            {"searched", PlacesJson()},
                            {"knownPlugIns", DataFileTypeManager::GetKnownPlugIns()}});
    } else {
        console.out << plugIns.size() << " found, " << numLoaded << " loaded\n";
        PrintText(console.out, plugIns);
        console.out << "File types of plug-ins:" << (types.empty() ? " none\n" : "\n");
        PrintText(console.out, types);
        PrintPlaces(console.out);
    }
    return AreAllLoaded(plugIns) ? eFINE : eDEVIATES;
}

} // namespace Qor::Tivor::Tool
