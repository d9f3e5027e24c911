#include "FileError.h"
#include "NativePath.h"

#include <QorCore/System.h>

#include <algorithm>
#include <string_view>

namespace Qor::Core {

namespace fs = std::filesystem;

namespace {

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

// Greedy with one point of return, the last '*': linear in practice and never exponential.
bool Fits(std::string_view name, std::string_view pattern) {
    std::size_t n = 0;
    std::size_t p = 0;
    std::size_t star = std::string_view::npos;
    std::size_t resume = 0;
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            resume = n;
        } else if (p < pattern.size() && (pattern[p] == '?' || Lower(pattern[p]) == Lower(name[n]))) {
            ++p;
            ++n;
        } else if (star != std::string_view::npos) {
            p = star + 1;
            n = ++resume;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', p) == std::string_view::npos;
}

void AddFilesBelow(const PathName& directory, const std::string& above, std::vector<PathName>& files) {
    std::vector<std::string> names;
    if (const std::int32_t systemError = GetNamesIn(directory, names))
        RaiseFileError("read a directory", directory, {eFILE_OTHER, systemError}, QOR_CODE_CONTEXT("System"));
    for (const std::string& name : names) {
        const PathName path = directory / name;
        std::error_code error;
        if (fs::is_directory(fs::symlink_status(ToNative(path), error)))
            AddFilesBelow(path, above + name + '/', files);
        else if (path.IsFile())
            files.emplace_back(above + name);
    }
}

} // namespace

void System::EnumFiles(const PathName& directory, const std::string& pattern, std::vector<PathName>& files) {
    std::vector<std::string> names;
    std::vector<PathName> found;
    GetNamesIn(directory, names);
    for (const std::string& name : names)
        if (Fits(name, pattern) && (directory / name).IsFile())
            found.push_back(directory / name);
    std::sort(found.begin(), found.end());
    files.insert(files.end(), found.begin(), found.end());
}

void System::EnumFilesBelow(const PathName& directory, std::vector<PathName>& files) {
    std::vector<PathName> found;
    AddFilesBelow(directory, {}, found);
    std::sort(found.begin(), found.end());
    files.insert(files.end(), found.begin(), found.end());
}

void System::MakeDirectories(const PathName& directory) {
    std::error_code error;
    fs::create_directories(ToNative(directory), error);
    if (error)
        RaiseFileError("make a directory", directory, {eFILE_OTHER, error.value()}, QOR_CODE_CONTEXT("System"));
}

void System::Replace(const PathName& from, const PathName& to) {
    const FileStatus status = FileSystem::Current().Replace(from, to);
    if (!status.IsOk())
        RaiseFileError("give a file the name \"" + to.ToString() + "\"", from, status, QOR_CODE_CONTEXT("System"));
}

} // namespace Qor::Core
