#pragma once

#include <QorCore/PathName.h>

#include <filesystem>
#include <string>
#include <vector>

namespace Qor::Core::Testing {

/// A directory of its own for one test, removed with everything in it.
class TemporaryDirectory {
public:
    TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
    ~TemporaryDirectory();

    const PathName& GetPath() const { return m_path; }
    PathName operator/(const std::string& name) const { return m_path / name; }
    /// The names of everything in it, sorted.
    std::vector<std::string> GetNames() const;

private:
    PathName m_path;
};

/// The name for the standard library.
std::filesystem::path Native(const PathName& path);

/// Whole files, past the library under test.
void WriteFileText(const PathName& path, const std::string& content);
std::string ReadFileText(const PathName& path);

} // namespace Qor::Core::Testing
