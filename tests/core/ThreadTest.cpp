#include "Alerts.h"
#include "Platform.h"
#include "Threads.h"

#include <QorCore/Context.h>
#include <QorCore/Mutex.h>
#include <QorCore/Thread.h>

#include <gtest/gtest.h>

#include <atomic>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <thread>

namespace {

using namespace Qor::Core;

class Work final : public Task {
public:
    explicit Work(std::function<void()> work) : m_work(std::move(work)) {}
    void Run() override { m_work(); }

private:
    std::function<void()> m_work;
};

std::shared_ptr<Task> MakeTask(std::function<void()> work) { return std::make_shared<Work>(std::move(work)); }

TEST(TaskThreads, JoinThrowsWhatTheTaskThrewOnce) {
    const void* thrown = nullptr;
    Thread failing("failing", MakeTask([&] {
                       try {
                           Error::RaiseError(IOError("text"), QOR_CODE_CONTEXT("Test"), "Test.Category");
                       } catch (const Error& error) {
                           thrown = &error;
                           throw;
                       }
                   }));
    failing.Join();
    failing.Start();
    try {
        failing.Join();
        ADD_FAILURE() << "nothing was thrown";
    } catch (const IOError& error) {
        EXPECT_EQ(&error, thrown);
        EXPECT_EQ(error.GetCategory(), "Test.Category");
    }
    failing.Join();
    EXPECT_THROW(failing.Start(), LogicError);

    Thread odd("odd", MakeTask([] { throw 7; }));
    odd.Start();
    EXPECT_THROW(odd.Join(), int);
    EXPECT_THROW(Thread("none", nullptr), NullPointerError);
}

TEST(TaskThreads, TheDestructorWaitsAndDropsTheException) {
    std::atomic<bool> isDone{false};
    {
        Thread thread("slow", MakeTask([&] {
                          Testing::LetOthersRun();
                          isDone = true;
                          throw Error("dropped");
                      }));
        thread.Start();
        EXPECT_THROW(thread.Start(), LogicError);
    }
    EXPECT_TRUE(isDone);
    const Thread notStarted("not started", MakeTask([&] { isDone = false; }));
    EXPECT_TRUE(isDone);
}

TEST(TaskThreads, TheTaskWorksOnBehalfOfTheStarter) {
    Testing::Warnings warnings;
    Mutex mutex;
    const MutexGuard guard(mutex);
    const Context::ScopedLimits scope({.nesting = 17});
    std::thread::id worker;
    std::string name;
    Thread thread("A name of 15 bytes or more", MakeTask([&] {
                      worker = std::this_thread::get_id();
                      const MutexGuard again(mutex);
                      EXPECT_EQ(Context::Current().limits.nesting, 17u);
                      Warning::RaiseWarning(Warning("from the task"), QOR_CODE_CONTEXT("Test"), "Test");
                      std::getline(std::ifstream("/proc/thread-self/comm"), name);
                  }));
    thread.Start();
    {
        const Context::ScopedLimits laterLimits((ReadLimits()));
        thread.Join();
    }
    EXPECT_NE(worker, std::this_thread::get_id());
    EXPECT_EQ(warnings.seen.size(), 1u);
    if (!Testing::isWindows) {
        EXPECT_EQ(name, "A name of 15 by");
    }
}

} // namespace
