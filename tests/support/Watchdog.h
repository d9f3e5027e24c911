#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>

namespace Qor::Core::Testing {

/// Ends the program when it lives longer than 30 s: a hang is not seen by any sanitizer.
class Watchdog {
public:
    Watchdog();
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;
    ~Watchdog();

private:
    void Watch();

    std::mutex m_mutex;
    std::condition_variable m_done;
    bool m_isDone = false;
    std::thread m_thread;
};

} // namespace Qor::Core::Testing
