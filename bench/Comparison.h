#pragma once

#include <benchmark/benchmark.h>

#include <chrono>
#include <functional>
#include <stdexcept>
#include <string>

namespace Bench {

/// Times the part of a run that counts: set-up stands before `Start`, destruction after `Stop`.
class Stopwatch {
public:
    void Start() { m_begin = Clock::now(); }
    void Stop() { m_seconds = std::chrono::duration<double>(Clock::now() - m_begin).count(); }
    /// What somebody else measured counts instead.
    void Take(double seconds) { m_seconds = seconds; }
    double GetSeconds() const { return m_seconds; }

private:
    using Clock = std::chrono::steady_clock;

    Clock::time_point m_begin;
    double m_seconds = 0;
};

using Run = std::function<void(Stopwatch&)>;

/// Runs limit and subject in turns, as often as the benchmark has iterations, and puts the medians into the counters
/// "limit" and "ours" (seconds for each of `operations`), their ratio into "ratio", and the ratio to be reached into
/// "goal" (0: none).
void Compare(benchmark::State& state, double goal, const Run& limit, const Run& subject, double operations = 1);

/// Names a comparison; at least 15 runs of each side.
template <class Function>
void Register(const std::string& name, int runs, Function function) {
    benchmark::RegisterBenchmark(name.c_str(), std::move(function))->Iterations(runs)->UseManualTime();
}

/// Keeps the compiler from leaving out what made the value.
template <class T>
void Keep(const T& value) {
    benchmark::DoNotOptimize(value);
    benchmark::ClobberMemory();
}

/// A row whose work fails ends the program.
inline void Require(bool condition, const char* what) {
    if (!condition)
        throw std::runtime_error(what);
}

/// Each program registers its rows here; `main` then runs them and prints the table.
void RegisterRows();

} // namespace Bench
