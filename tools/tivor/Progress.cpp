#include "Progress.h"

#include "Display.h"

namespace Qor::Tivor::Tool {

Progress::~Progress() {
    try {
        Wipe();
    } catch (const std::exception&) { // a stream that raises loses a line
    }
}

void Progress::Tell(const std::string& text) {
    static constexpr std::size_t widest = 79; // a line that is wrapped cannot be wiped
    static constexpr std::chrono::milliseconds pause(100);
    const auto now = Clock::now();
    if (m_terminal == nullptr || now < m_next)
        return;
    std::string line = OneLine(text);
    if (line.size() > widest) {
        line.resize(widest - 3);
        while (!line.empty() && !IsUtf8(line))
            line.pop_back();
        line += "...";
    }
    const std::size_t former = m_width;
    *m_terminal << '\r' << line << std::string(former > line.size() ? former - line.size() : 0, ' ') << std::flush;
    m_width = line.size();
    m_next = now + pause;
}

void Progress::Wipe() {
    if (m_width == 0)
        return;
    *m_terminal << '\r' << std::string(m_width, ' ') << '\r' << std::flush;
    m_width = 0;
}

} // namespace Qor::Tivor::Tool
