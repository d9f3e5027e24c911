#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace Qor::Core::Testing {

/// Lets so many threads go when the last of them has come. (A `std::barrier` loses wake-ups where the library has no
/// call of the system to wait by an address, as MinGW's.)
class StartingLine {
public:
    explicit StartingLine(int count) : m_missing(count) {}

    void ArriveAndWait() {
        std::unique_lock lock(m_mutex);
        if (--m_missing == 0)
            m_complete.notify_all();
        m_complete.wait(lock, [this] { return m_missing == 0; });
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_complete;
    int m_missing;
};

/// Long enough for a thread to come to where it should wait, or does not although it should.
inline void LetOthersRun() { std::this_thread::sleep_for(std::chrono::milliseconds(20)); }

/// Does the work on so many threads, which begin together; each is told its number. What they throw is a failure.
template <class Work>
void OnThreads(int count, const Work& work) {
    StartingLine start(count);
    std::vector<std::thread> threads;
    for (int number = 0; number < count; ++number)
        threads.emplace_back([&start, &work, number] {
            start.ArriveAndWait();
            try {
                work(number);
            } catch (const std::exception& error) {
                ADD_FAILURE() << error.what();
            }
        });
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace Qor::Core::Testing
