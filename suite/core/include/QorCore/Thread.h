#pragma once

#include <QorCore/Task.h>

#include <exception>
#include <memory>
#include <string>
#include <thread>

namespace Qor::Core {

/// Runs a task on a thread of its own, on behalf of the thread that starts it: with a copy of that one's `Context` as
/// it is at the start, so the task may enter what the starter has locked, and its warnings reach the starter's alert
/// handlers (on the new thread). All of that must last until the thread is joined.
///
/// Thread rule: belongs to one thread, which starts it and joins it.
class QOR_CORE_API Thread {
public:
    /// The name is for debuggers; systems may cut it.
    Thread(std::string name, std::shared_ptr<Task> task);
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;
    /// Waits for the end of the task, and drops what it threw.
    ~Thread();

    /// Starting it again is a `LogicError`.
    void Start();

    /// Waits for the end of the task, and throws what that has thrown, the first time. Where there is nothing to wait
    /// for, nothing happens.
    void Join();

private:
    void RunTask() noexcept;

    std::string m_name;
    std::shared_ptr<Task> m_task;
    std::exception_ptr m_failure;
    std::thread m_thread;
    bool m_isStarted = false;
};

} // namespace Qor::Core
