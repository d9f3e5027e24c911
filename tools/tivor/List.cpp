#include "Commands.h"
#include "Files.h"
#include "Measured.h"

#include <algorithm>

namespace Qor::Tivor::Tool {

namespace {

struct Listed {
    Path path;
    DataObjectHeader header;
    bool isReadable = true;
    std::optional<MeasuredFacts> measured = {};
};

struct Listing {
    std::string fileType;
    std::vector<Listed> entries;
    std::vector<std::string> keysWhereItEnds; ///< beside the deepest of the given keys that is there
    std::size_t found = 0;                    ///< of the given keys
};

/// Whether the walk is to go into the entry.
bool Take(Listing& listing, const Path& keys, const Path& path, const DataObjectHeader& header) {
    if (path.size() > keys.size()) {
        listing.entries.push_back({path, header, IsReadable(header)});
        return true;
    }
    if (path.size() == listing.found + 1)
        listing.keysWhereItEnds.push_back(path.back());
    if (!StartsWith(keys, path))
        return false;
    listing.found = path.size();
    listing.keysWhereItEnds.clear();
    if (path.size() == keys.size())
        listing.entries.push_back({path, header, IsReadable(header)});
    return true;
}

void ReadMeasured(const std::string& fileName, std::vector<Listed>& entries, Console& console) {
    std::vector<Path> paths;
    for (const Listed& entry : entries)
        if (IsMeasured(entry.header))
            paths.push_back(entry.path);
    auto facts = ReadMeasuredFacts(fileName, paths, console);
    auto next = facts.begin();
    for (Listed& entry : entries)
        if (IsMeasured(entry.header))
            entry.measured = std::move(*next++);
}

std::string Name(const Listed& entry, std::size_t outermost) {
    return std::string(2 * (entry.path.size() - outermost), ' ') + Show(entry.path.back());
}

void PrintText(std::ostream& out, const std::vector<Listed>& entries) {
    static constexpr std::size_t widest = 40;
    const std::size_t outermost = entries.empty() ? 0 : entries.front().path.size();
    std::size_t nameWidth = 0;
    std::size_t classWidth = 0;
    for (const Listed& entry : entries) {
        nameWidth = std::max(nameWidth, Name(entry, outermost).size());
        classWidth = std::max(classWidth, Show(entry.header.typeName).size());
    }
    const auto pad = [](std::string text, std::size_t width) {
        text.resize(std::max(text.size(), std::min(width, widest)), ' ');
        return text;
    };
    for (const Listed& entry : entries) {
        out << pad(Name(entry, outermost), nameWidth) << "  " << pad(Show(entry.header.typeName), classWidth) << "  "
            << entry.header.dataSize;
        if (IsForeign(entry.header))
            out << "  version " << Show(entry.header.version) << ", module " << Show(entry.header.module);
        if (entry.measured)
            out << "  " << Describe(*entry.measured);
        out << (entry.isReadable ? "\n" : "  cannot be read\n");
    }
}

Json ToJson(const Listed& entry) {
    Json json = {{"path", PathJson(entry.path)},
                 {"class", TextJson(entry.header.typeName)},
                 {"code", WithoutFlag(entry.header.typeCode)},
                 {"bytes", entry.header.dataSize},
                 {"isReadable", entry.isReadable}};
    if (IsForeign(entry.header)) {
        json["version"] = TextJson(entry.header.version);
        json["module"] = TextJson(entry.header.module);
    }
    if (entry.measured)
        json["measured"] = ToJson(*entry.measured);
    return json;
}

Json ToJson(const std::string& fileName, const Listing& listing) {
    Json entries = Json::array();
    for (const Listed& entry : listing.entries)
        entries.push_back(ToJson(entry));
    return {{"file", TextJson(fileName)}, {"fileType", TextJson(listing.fileType)}, {"entries", std::move(entries)}};
}

} // namespace

EStatus List(const Arguments& arguments, Console& console) {
    const Path& keys = arguments.words;
    Listing listing;
    listing.fileType = ForEachHeader(arguments.file, [&](const Path& path, const DataObjectHeader& header) {
        return Take(listing, keys, path, header);
    });
    if (listing.found < keys.size())
        RaiseNoSuchKey({keys.begin(), keys.begin() + static_cast<std::ptrdiff_t>(listing.found) + 1},
                       listing.keysWhereItEnds);
    ReadMeasured(arguments.file, listing.entries, console);
    if (arguments.asJson)
        Print(console.out, ToJson(arguments.file, listing));
    else
        PrintText(console.out, listing.entries);
    const bool areAllReadable = std::all_of(listing.entries.begin(), listing.entries.end(),
                                            [](const Listed& entry) { return entry.isReadable; });
    return areAllReadable ? eFINE : eDEVIATES;
}

} // namespace Qor::Tivor::Tool
