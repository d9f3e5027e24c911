#include "Commands.h"
#include "Display.h"

#include <Tivor/DataFileTypeManager.h>

#include <algorithm>

namespace Qor::Tivor::Tool {

namespace {

const char* NameOf(EHeaderKind kind) {
    switch (kind) {
    case EHeaderKind::external:
        return "external";
    case EHeaderKind::nameCarrying:
        return "name";
    case EHeaderKind::fixedSize:
        return "fixed";
    case EHeaderKind::sized:
        return "sized";
    case EHeaderKind::never:
        return "never";
    }
    return "";
}

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

Json FileTypesJson(DataFileTypeManager& manager) {
    const std::string byDefault = manager.GetDefaultFactory()->GetFileType();
    Json json = Json::array();
    for (const auto& factory : manager.GetFactories()) {
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

Json ClassesJson() {
    Json json = Json::array();
    for (const TypeFacts& facts : builtInTypeFacts)
        json.push_back({{"code", static_cast<std::uint32_t>(facts.id)},
                        {"class", facts.className},
                        {"header", NameOf(facts.header)}});
    return json;
}

Json PlugInsJson(const std::vector<DataFilePlugIn>& plugIns) {
    Json json = Json::array();
    for (const DataFilePlugIn& plugIn : plugIns)
        json.push_back({{"file", TextJson(plugIn.fileName)},
                        {"outcome", NameOf(plugIn.outcome)},
                        {"reason", TextJson(plugIn.reason)}});
    return json;
}

void PrintFileTypes(std::ostream& out, DataFileTypeManager& manager) {
    const std::string byDefault = manager.GetDefaultFactory()->GetFileType();
    out << "File types:\n";
    for (const auto& factory : manager.GetFactories()) {
        const std::string name = factory->GetFileType();
        out << "  " << Show(name) << (name == byDefault ? " (default):" : ":");
        std::vector<std::string> extensions;
        factory->EnumExtensions(extensions);
        for (const std::string& extension : extensions)
            out << " ." << OneLine(extension);
        out << "; " << OneLine(factory->DescribeFileType()) << '\n';
    }
}

void PrintClasses(std::ostream& out) {
    out << "Classes (code, name, header):\n";
    for (const TypeFacts& facts : builtInTypeFacts)
        out << "  " << facts.id << '\t' << (facts.className.empty() ? "(its own)" : facts.className) << '\t'
            << NameOf(facts.header) << '\n';
}

void PrintPlugIns(std::ostream& out, const std::vector<DataFilePlugIn>& plugIns) {
    out << "Plug-ins:" << (plugIns.empty() ? " none\n" : "\n");
    for (const DataFilePlugIn& plugIn : plugIns)
        out << "  " << Show(plugIn.fileName) << ": " << NameOf(plugIn.outcome)
            << (plugIn.reason.empty() ? "" : ", " + OneLine(plugIn.reason)) << '\n';
    out << "Known plug-ins:";
    for (const std::string& name : DataFileTypeManager::GetKnownPlugIns())
        out << ' ' << name;
    out << '\n';
}

} // namespace

EStatus ShowTypes(const Arguments& arguments, Console& console) {
    DataFileTypeManager& manager = DataFileTypeManager::Instance();
    const auto plugIns = manager.GetPlugIns();
    if (arguments.asJson) {
        Print(console.out, {{"fileTypes", FileTypesJson(manager)},
                            {"classes", ClassesJson()},
                            {"plugIns", PlugInsJson(plugIns)},
                            {"knownPlugIns", DataFileTypeManager::GetKnownPlugIns()}});
    } else {
        PrintFileTypes(console.out, manager);
        PrintClasses(console.out);
        PrintPlugIns(console.out, plugIns);
    }
    const bool areAllLoaded = std::all_of(plugIns.begin(), plugIns.end(), [](const DataFilePlugIn& plugIn) {
        return plugIn.outcome == DataFilePlugIn::eLOADED;
    });
    return areAllLoaded ? eFINE : eDEVIATES;
}

} // namespace Qor::Tivor::Tool
