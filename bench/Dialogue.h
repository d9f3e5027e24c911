#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <sys/types.h>

namespace Bench {

/// A program that answers line by line.
class Dialogue {
public:
    /// `command`: one of the shell.
    explicit Dialogue(const std::string& command);
    Dialogue(const Dialogue&) = delete;
    Dialogue& operator=(const Dialogue&) = delete;
    ~Dialogue();

    void Say(const std::string& line);
    std::string Hear();

private:
    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    std::unique_ptr<std::FILE, Close> m_to;
    std::unique_ptr<std::FILE, Close> m_from;
    pid_t m_process = 0;
};

} // namespace Bench
