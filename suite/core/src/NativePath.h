#pragma once

#include <QorCore/PathName.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace Qor::Core {

/// UTF-8 both ways; plain strings would pass through the code page on Windows.
inline std::filesystem::path ToNative(const PathName& path) {
    const std::string& text = path.ToString();
    return std::filesystem::path(std::u8string(text.begin(), text.end()));
}

inline PathName FromNative(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return PathName(std::string(text.begin(), text.end()));
}

/// Appends the names in a directory, without "." and "..". Returns the system's number of what went wrong, or 0.
std::int32_t GetNamesIn(const PathName& directory, std::vector<std::string>& names);

} // namespace Qor::Core
