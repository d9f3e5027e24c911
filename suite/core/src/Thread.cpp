#include "platform/ThreadName.h"

#include <QorCore/Alert.h>
#include <QorCore/Context.h>
#include <QorCore/Message.h>
#include <QorCore/Thread.h>

#include <system_error>
#include <utility>

namespace Qor::Core {

namespace {

const char* const category = "Qor.Core.Thread";

} // namespace

Task::~Task() = default;

Thread::Thread(std::string name, std::shared_ptr<Task> task) : m_name(std::move(name)), m_task(std::move(task)) {
    if (!m_task)
        Error::RaiseError(NullPointerError("A thread needs a task; a null one was given"), QOR_CODE_CONTEXT("Thread"),
                          category);
}

Thread::~Thread() {
    if (m_thread.joinable())
        m_thread.join();
}

void Thread::Start() {
    if (m_isStarted)
        Error::RaiseError(LogicError(FormatText("The thread \"%1%\" was started before", {m_name})),
                          QOR_CODE_CONTEXT("Thread"), category);
    try {
        // Copied here: the starter goes on to change its own record.
        m_thread = std::thread([this, lender = Context::Current()] {
            const Context::Loan loan(lender);
            RunTask();
        });
    } catch (const std::system_error& error) {
        Error::RaiseError(
            Error(FormatText("The system did not start the thread \"%1%\": %2%", {m_name, error.code().message()})),
            QOR_CODE_CONTEXT("Thread"), category);
    }
    m_isStarted = true;
}

void Thread::RunTask() noexcept {
    SetThreadName(m_name);
    try {
        m_task->Run();
    } catch (...) {
        m_failure = std::current_exception();
    }
}

void Thread::Join() {
    if (m_thread.joinable())
        m_thread.join();
    if (const std::exception_ptr failure = std::exchange(m_failure, nullptr))
        std::rethrow_exception(failure);
}

} // namespace Qor::Core
