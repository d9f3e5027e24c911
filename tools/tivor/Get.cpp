#include "Commands.h"
#include "Files.h"
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

} // namespace

EStatus Get(const Arguments& arguments, Console& console) {
    const Path& keys = arguments.words;
    const auto file = OpenFile(arguments.file, DataFile::eREAD_ONLY);
    const auto unread = UnreadBelow(*file, keys);
    if (!unread.empty() && unread.front().path == keys)
        Fail(ShowPath(keys) + " of class " + Show(unread.front().typeName) +
             " cannot be read: " + unread.front().reason);
    if (const auto object = FindObject(*file, keys); !object)
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
