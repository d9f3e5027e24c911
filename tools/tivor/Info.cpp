#include "Commands.h"
#include "Files.h"
#include "Measured.h"

#include <Tivor/DataObjectFactory.h>

#include <map>
#include <set>

namespace Qor::Tivor::Tool {

namespace {

struct Module {
    std::size_t count = 0;
    std::set<std::string> classes;
};

/// What the headers of a file add up to.
struct Summary {
    std::string fileType;
    std::uint64_t fileSize = 0;
    std::size_t numEntries = 0;
    std::size_t depth = 0;
    std::uint64_t dataSize = 0;
    Path largest;
    std::string largestClass;
    std::uint64_t largestSize = 0;
    std::map<std::string, std::size_t> classes;
    std::map<std::string, Module> modules;
    std::vector<Path> measured;
    std::vector<std::optional<MeasuredFacts>> measuredFacts;
    std::map<std::string, std::size_t> unreadable;                ///< classes
    std::map<std::pair<std::uint16_t, std::string>, bool> judged; ///< codes and classes: whether they can be read
};

bool IsReadableClass(Summary& summary, const DataObjectHeader& header) {
    const auto [place, isNew] = summary.judged.try_emplace({header.typeCode, header.typeName});
    if (isNew)
        place->second = IsReadable(header);
    return place->second;
}

void AddEntry(Summary& summary, const Path& path, const DataObjectHeader& header) {
    ++summary.numEntries;
    summary.depth = std::max(summary.depth, path.size());
    ++summary.classes[header.typeName];
    if (IsForeign(header)) {
        Module& module = summary.modules[header.module];
        ++module.count;
        module.classes.insert(header.typeName);
    } else if (!IsReadableClass(summary, header)) {
        ++summary.unreadable[header.typeName];
    }
    if (IsMeasured(header))
        summary.measured.push_back(path);
    if (WithoutFlag(header.typeCode) == eDATA_CONTAINER)
        return;
    summary.dataSize += header.dataSize;
    if (summary.largest.empty() || header.dataSize > summary.largestSize) {
        summary.largest = path;
        summary.largestClass = header.typeName;
        summary.largestSize = header.dataSize;
    }
}

std::string Fate(const std::string& module) {
    return DataObjectFactory::NamesPlugIn(module) ? "a plug-in; without it they are kept unread"
                                                  : "they are kept unread";
}

std::string ListCounts(const std::map<std::string, std::size_t>& counts) {
    std::string list;
    for (const auto& [name, count] : counts)
        list += (list.empty() ? "" : ", ") + Show(name) + " " + std::to_string(count);
    return list;
}

void PrintText(std::ostream& out, const std::string& fileName, const Summary& summary) {
    out << "File:        " << Show(fileName) << ", " << Count(summary.fileSize, "byte", "bytes") << '\n'
        << "Type:        " << Show(summary.fileType) << '\n'
        << "Entries:     " << summary.numEntries << ", on " << Count(summary.depth, "level", "levels") << '\n'
        << "Data:        " << Count(summary.dataSize, "byte", "bytes") << '\n';
    if (!summary.largest.empty())
        out << "Largest:     " << ShowPath(summary.largest) << ", " << Show(summary.largestClass) << ", "
            << Count(summary.largestSize, "byte", "bytes") << '\n';
    if (!summary.classes.empty())
        out << "Classes:     " << ListCounts(summary.classes) << '\n';
    for (const auto& [name, module] : summary.modules)
        out << "Module:      " << Show(name) << ", " << Count(module.count, "entry", "entries") << ": " << Fate(name)
            << '\n';
    for (std::size_t i = 0; i < summary.measured.size(); ++i) {
        const auto& facts = summary.measuredFacts[i];
        const std::string statistics = facts ? DescribeStatistics(*facts) : std::string();
        out << "Measured:    " << ShowPath(summary.measured[i]) << (facts ? ": " + Describe(*facts) : "") << '\n'
            << (statistics.empty() ? "" : "             ") << statistics;
    }
    if (!summary.unreadable.empty())
        out << "Not to read: " << ListCounts(summary.unreadable) << '\n';
}

Json CountsJson(const std::map<std::string, std::size_t>& counts) {
    Json json = Json::array();
    for (const auto& [name, count] : counts)
        json.push_back({{"class", TextJson(name)}, {"count", count}});
    return json;
}

Json ModulesJson(const std::map<std::string, Module>& modules) {
    Json json = Json::array();
    for (const auto& [name, module] : modules) {
        Json classes = Json::array();
        for (const std::string& one : module.classes)
            classes.push_back(TextJson(one));
        json.push_back({{"module", TextJson(name)},
                        {"isPlugIn", DataObjectFactory::NamesPlugIn(name)},
                        {"count", module.count},
                        {"classes", classes}});
    }
    return json;
}

Json MeasuredJson(const Summary& summary) {
    Json json = Json::array();
    for (std::size_t i = 0; i < summary.measured.size(); ++i) {
        Json entry = {{"path", PathJson(summary.measured[i])}};
        if (const auto& facts = summary.measuredFacts[i])
            entry.update(ToJson(*facts));
        json.push_back(std::move(entry));
    }
    return json;
}

Json ToJson(const std::string& fileName, const Summary& summary) {
    Json largest;
    if (!summary.largest.empty())
        largest = {{"path", PathJson(summary.largest)},
                   {"class", TextJson(summary.largestClass)},
                   {"bytes", summary.largestSize}};
    return {{"file", TextJson(fileName)},
            {"fileType", TextJson(summary.fileType)},
            {"fileBytes", summary.fileSize},
            {"entries", summary.numEntries},
            {"levels", summary.depth},
            {"dataBytes", summary.dataSize},
            {"largest", largest},
            {"classes", CountsJson(summary.classes)},
            {"modules", ModulesJson(summary.modules)},
            {"measured", MeasuredJson(summary)},
            {"unreadable", CountsJson(summary.unreadable)}};
}

} // namespace

EStatus ShowInfo(const Arguments& arguments, Console& console) {
    Summary summary;
    summary.fileType = ForEachHeader(arguments.file, [&](const Path& path, const DataObjectHeader& header) {
        AddEntry(summary, path, header);
        return true;
    });
    summary.measuredFacts = ReadMeasuredFacts(arguments.file, summary.measured, console);
    summary.fileSize = GetFileSize(arguments.file);
    if (arguments.asJson)
        Print(console.out, ToJson(arguments.file, summary));
    else
        PrintText(console.out, arguments.file, summary);
    return summary.unreadable.empty() ? eFINE : eDEVIATES;
}

} // namespace Qor::Tivor::Tool
