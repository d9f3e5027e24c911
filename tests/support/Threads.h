#pragma once

#include <gtest/gtest.h>

#include <barrier>
#include <thread>
#include <vector>

namespace Qor::Core::Testing {

/// Does the work on so many threads, which begin together; each is told its number. What they throw is a failure.
template <class Work>
void OnThreads(int count, const Work& work) {
    std::barrier start(count);
    std::vector<std::thread> threads;
    for (int number = 0; number < count; ++number)
        threads.emplace_back([&start, &work, number] {
            start.arrive_and_wait();
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
