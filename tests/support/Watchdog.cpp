#include "Watchdog.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <iostream>

namespace Qor::Core::Testing {

Watchdog::Watchdog() : m_thread([this] { Watch(); }) {}

Watchdog::~Watchdog() {
    {
        const std::lock_guard lock(m_mutex);
        m_isDone = true;
    }
    m_done.notify_all();
    m_thread.join();
}

void Watchdog::Watch() {
    std::unique_lock lock(m_mutex);
    if (m_done.wait_for(lock, std::chrono::seconds(30), [this] { return m_isDone; }))
        return;
    std::cerr << "The threads hang in " << testing::UnitTest::GetInstance()->current_test_info()->name() << std::endl;
    std::abort();
}

} // namespace Qor::Core::Testing
