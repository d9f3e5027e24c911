#include "TemporaryDirectory.h"

#include "OpenFiles.h"

#include <QorCore/System.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace Qor::Core::Testing {

namespace fs = std::filesystem;

fs::path Native(const PathName& path) {
    return fs::path(std::u8string(path.ToString().begin(), path.ToString().end()));
}

namespace {

std::string Utf8(const fs::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

} // namespace

TemporaryDirectory::TemporaryDirectory() {
    const fs::path base = fs::temp_directory_path();
    const std::string prefix = "tivor-test-" + std::to_string(System::GetProcessNumber()) + "-";
    for (int n = 0;; ++n) {
        const fs::path path = base / (prefix + std::to_string(n));
        if (fs::create_directory(path)) {
            m_path = PathName(Utf8(path));
            return;
        }
    }
}

TemporaryDirectory::~TemporaryDirectory() {
    std::error_code ignored;
    fs::remove_all(Native(m_path), ignored);
}

std::vector<std::string> TemporaryDirectory::GetNames() const {
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(Native(m_path)))
        names.push_back(Utf8(entry.path().filename()));
    std::sort(names.begin(), names.end());
    return names;
}

void WriteFileText(const PathName& path, const std::string& content) {
    std::ofstream file(Native(path), std::ios::binary | std::ios::trunc);
    file.write(content.data(), static_cast<std::streamsize>(content.size()));
    if (!file.flush())
        throw std::runtime_error("cannot write " + path.ToString());
}

std::string ReadFileText(const PathName& path) {
    if (auto content = OpenFiles::ReadWritten(path))
        return std::move(*content);
    std::ifstream file(Native(path), std::ios::binary);
    if (!file)
        throw std::runtime_error("cannot read " + path.ToString());
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

} // namespace Qor::Core::Testing
