#include "Commands.h"
#include "Display.h"
#include "PlugIns.h"

#include <Tivor/TypeFacts.h>

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

Json ClassesJson() {
    Json json = Json::array();
    for (const TypeFacts& facts : builtInTypeFacts)
        json.push_back({{"code", static_cast<std::uint32_t>(facts.id)},
                        {"class", facts.className},
                        {"header", NameOf(facts.header)}});
    return json;
}

void PrintClasses(std::ostream& out) {
    out << "Classes (code, name, header):\n";
    for (const TypeFacts& facts : builtInTypeFacts)
        out << "  " << facts.id << '\t' << (facts.className.empty() ? "(its own)" : facts.className) << '\t'
            << NameOf(facts.header) << '\n';
}

} // namespace

EStatus ShowTypes(const Arguments& arguments, Console& console) {
    DataFileTypeManager& manager = DataFileTypeManager::Instance();
    const auto plugIns = manager.GetPlugIns();
    if (arguments.asJson) {
        Print(console.out, {{"fileTypes", ToJson(manager.GetFactories())},
                            {"classes", ClassesJson()},
                            {"plugIns", ToJson(plugIns)},
                            {"knownPlugIns", DataFileTypeManager::GetKnownPlugIns()}});
    } else {
        console.out << "File types:\n";
        PrintText(console.out, manager.GetFactories());
        PrintClasses(console.out);
        PrintText(console.out, plugIns);
    }
    return AreAllLoaded(plugIns) ? eFINE : eDEVIATES;
}

} // namespace Qor::Tivor::Tool
