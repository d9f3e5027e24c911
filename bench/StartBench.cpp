// From start to exit of a C++ program that does nothing, with and without the library.
#include "Comparison.h"

#include <spawn.h>
#include <stdexcept>
#include <string>
#include <sys/wait.h>

namespace {

Bench::Run Starting(const char* name) {
    return [program = std::string(TIVOR_BENCH_PROGRAMS "/") + name](Bench::Stopwatch& watch) {
        char* const arguments[] = {const_cast<char*>(program.c_str()), nullptr};
        char* const environment[] = {nullptr};
        pid_t process = 0;
        int status = -1;
        watch.Start();
        const bool started = posix_spawn(&process, program.c_str(), nullptr, nullptr, arguments, environment) == 0 &&
                             waitpid(process, &status, 0) == process;
        watch.Stop();
        if (!started || status != 0)
            throw std::runtime_error("cannot run " + program);
    };
}

} // namespace

void Bench::RegisterRows() {
    Register("program start", 501, [](benchmark::State& state) {
        Compare(state, 1.2, Starting("empty-program"), Starting("empty-program-with-tivor"));
    });
    // What the libraries of C++ cost every program that uses them, to be multiplied with the row above.
    Register("C++ library start", 501,
             [](benchmark::State& state) { Compare(state, 0, Starting("bare-program"), Starting("empty-program")); });
}
