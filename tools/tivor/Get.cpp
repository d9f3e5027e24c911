#include "Commands.h"
#include "Files.h"
#include "Properties.h"
#include "Values.h"

#include <algorithm>

namespace Qor::Tivor::Tool {

namespace {

/// The entries that could not be read at the keys, or below them.
std::vector<UnreadEntry> UnreadBelow(const DataFile& file, const Path& keys) {
    std::vector<UnreadEntry> unread = file.GetUnreadEntries();
    std::erase_if(unread, [&](const UnreadEntry& entry) { return !StartsWith(entry.path, keys); });
    return unread;
}

/// The name of the value where the keys lead to a property whose values have names.
std::optional<std::string> FindNameAt(DataFile& file, const Path& keys) {
    if (keys.size() < 2)
        return std::nullopt;
    const auto owner = FindObject(file, {keys.begin(), keys.end() - 1});
    const auto properties = PropertiesOf(*owner);
    return properties && properties->PropertyExists(keys.back()) ? FindNameOfValue(*properties, keys.back())
                                                                 : std::nullopt;
}

} // namespace

EStatus Get(const Arguments& arguments, Console& console) {
    const Path& keys = arguments.words;
    const auto file = OpenFile(arguments.file, DataFile::eREAD_ONLY);
    const auto unread = UnreadBelow(*file, keys);
    if (!unread.empty() && unread.front().path == keys)
        Fail(ShowPath(keys) + " of class " + Show(unread.front().typeName) +
             " cannot be read: " + unread.front().reason);
    if (const auto name = FindNameAt(*file, keys))
        arguments.asJson ? Print(console.out, TextJson(*name)) : static_cast<void>(console.out << *name << '\n');
    else if (const auto object = FindObject(*file, keys); !object)
        arguments.asJson ? Print(console.out, ToJson(*file)) : PrintText(console.out, *file);
    else
        arguments.asJson ? Print(console.out, ToJson(*object)) : PrintText(console.out, *object);
    if (unread.empty())
        return eFINE;
    console.err << "tivor: " << Count(unread.size(), "entry", "entries") << " could not be read:\n"
                << ListUnread(unread);
    return eDEVIATES;
}

} // namespace Qor::Tivor::Tool
