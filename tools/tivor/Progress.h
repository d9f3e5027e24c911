#pragma once

#include <chrono>
#include <cstdint>
#include <ostream>
#include <string>

namespace Qor::Tivor::Tool {

/// A line on a terminal that tells how far long work is, redrawn at most ten times a second; it is gone when other
/// things are printed there, and at the end. Without a terminal nothing is drawn.
class Progress {
public:
    /// Null: no terminal.
    explicit Progress(std::ostream* terminal) : m_terminal(terminal) {}
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    void Tell(const std::string& text);
    void Wipe();

    /// Work on less takes no time to speak of.
    static constexpr std::uint64_t fewestBytes = std::uint64_t{8} << 20;

private:
    using Clock = std::chrono::steady_clock;

    std::ostream* m_terminal;
    std::size_t m_width = 0; // of what stands there
    Clock::time_point m_next{};
};

} // namespace Qor::Tivor::Tool
