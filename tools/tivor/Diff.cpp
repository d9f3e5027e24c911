#include "Commands.h"
#include "Differences.h"
#include "Files.h"

namespace Qor::Tivor::Tool {

namespace {

using Entries = std::vector<Differences::Entry>;

void PrintEntries(const char* what, const Entries& entries, std::ostream& out) {
    for (const auto& [path, text] : entries)
        out << what << (path.empty() ? "" : ShowPath(path) + ": ") << OneLine(text) << '\n';
}

void PrintText(const Differences& differences, std::ostream& out) {
    for (const auto& [path, pathInB, found] : differences.measured)
        for (const MeasuredDifference& difference : found)
            out << ShowPath(path) << ": " << difference.text << '\n';
    for (const auto& [path, a, b] : differences.values)
        out << ShowPath(path) << ": " << OneLine(a) << (a == b ? ", of another value" : ", " + OneLine(b)) << '\n';
    PrintEntries("only in A: ", differences.onlyInA, out);
    PrintEntries("only in B: ", differences.onlyInB, out);
    PrintEntries("not read: ", differences.unread, out);
    PrintEntries("note: ", differences.notes, out);
}

Json EntriesJson(const Entries& entries) {
    Json json = Json::array();
    for (const auto& [path, text] : entries)
        json.push_back({{"path", PathJson(path)}, {"text", TextJson(text)}});
    return json;
}

Json MeasuredJson(const Differences& differences) {
    Json json = Json::array();
    for (const auto& [path, pathInB, found] : differences.measured) {
        Json list = Json::array();
        for (const MeasuredDifference& difference : found)
            list.push_back(difference.json);
        json.push_back({{"path", PathJson(path)}, {"pathInB", PathJson(pathInB)}, {"differences", std::move(list)}});
    }
    return json;
}

Json ToJson(const Differences& differences, const Arguments& arguments) {
    Json values = Json::array();
    for (const auto& [path, a, b] : differences.values)
        values.push_back({{"path", PathJson(path)}, {"a", TextJson(a)}, {"b", TextJson(b)}});
    return {{"a", TextJson(arguments.file)},
            {"b", TextJson(arguments.target)},
            {"same", differences.AreNone()},
            {"measured", MeasuredJson(differences)},
            {"values", std::move(values)},
            {"onlyInA", EntriesJson(differences.onlyInA)},
            {"onlyInB", EntriesJson(differences.onlyInB)},
            {"notRead", EntriesJson(differences.unread)},
            {"notes", EntriesJson(differences.notes)}};
}

std::shared_ptr<DataFile> Open(const std::string& fileName, Console& console) {
    console.warnsOf = fileName;
    return OpenFile(fileName, DataFile::eREAD_ONLY);
}

} // namespace

EStatus Diff(const Arguments& arguments, Console& console) {
    std::optional<Tolerance> tolerance;
    if (!arguments.number.empty())
        tolerance = ParseTolerance(arguments.number);
    const auto a = Open(arguments.file, console);
    const auto b = Open(arguments.target, console);
    const Differences differences = FindDifferences(*a, *b, tolerance ? &*tolerance : nullptr, arguments.onlyMeasured);
    if (arguments.asJson)
        Print(console.out, ToJson(differences, arguments));
    else
        PrintText(differences, console.out);
    return differences.AreNone() ? eFINE : eDEVIATES;
}

} // namespace Qor::Tivor::Tool
