#pragma once

#include <cstdlib>
#include <string>
#include <unistd.h>

namespace Bench {

/// A file in the directory for those of benchmarks; removed at the end of the row.
struct ScratchFile {
    explicit ScratchFile(const std::string& fileName) : name(GetDirectory() + "/tivor-bench-" + fileName) { Remove(); }
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;
    ~ScratchFile() { Remove(); }
    void Remove() const { unlink(name.c_str()); }

    const std::string name;

private:
    static std::string GetDirectory() {
        const char* const directory = std::getenv("TIVOR_BENCH_DIRECTORY");
        return directory != nullptr ? directory : TIVOR_BENCH_DIRECTORY;
    }
};

} // namespace Bench
