#include "Comparison.h"

#include <algorithm>
#include <iomanip>
#include <iostream>
#include <vector>

namespace Bench {

namespace {

double Median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

double Time(const Run& run) {
    Stopwatch watch;
    run(watch);
    return watch.GetSeconds();
}

std::string FormatSeconds(double seconds) {
    constexpr struct {
        double factor;
        const char* unit;
    } units[] = {{1, "s"}, {1e3, "ms"}, {1e6, "us"}, {1e9, "ns"}};
    const auto* unit = std::begin(units);
    while (unit + 1 != std::end(units) && seconds * unit->factor < 1)
        ++unit;
    std::ostringstream text;
    text << std::fixed << std::setprecision(2) << seconds * unit->factor << ' ' << unit->unit;
    return text.str();
}

/// One line for each comparison instead of Google Benchmark's own columns, which `--benchmark_out` still writes.
class Table final : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context&) override {
        std::cout << std::left << std::setw(30) << "row" << std::right << std::setw(12) << "limit" << std::setw(12)
                  << "ours" << std::setw(10) << "ratio" << std::setw(8) << "goal"
                  << "  met\n";
        return true;
    }

    void ReportRuns(const std::vector<BenchmarkReporter::Run>& runs) override {
        for (const BenchmarkReporter::Run& run : runs)
            Print(run);
    }

private:
    static void Print(const BenchmarkReporter::Run& run) {
        std::string name = run.run_name.function_name;
        std::cout << std::left << std::setw(30) << name << std::right;
        if (run.error_occurred) {
            std::cout << "  FAILED: " << run.error_message << std::endl;
            return;
        }
        const auto get = [&](const char* counter) { return run.counters.at(counter).value; };
        const double goal = get("goal");
        std::cout << std::setw(12) << FormatSeconds(get("limit")) << std::setw(12) << FormatSeconds(get("ours"))
                  << std::fixed << std::setprecision(3) << std::setw(10) << get("ratio");
        if (goal != 0)
            std::cout << std::setprecision(2) << std::setw(8) << goal << (get("ratio") <= goal ? "  yes" : "  NO");
        std::cout << std::endl;
    }
};

} // namespace

void Compare(benchmark::State& state, double goal, const Bench::Run& limit, const Bench::Run& subject,
             double operations) {
    Time(limit); // both once unmeasured, so that caches, pools and files are as in all later runs
    Time(subject);
    std::vector<double> limits;
    std::vector<double> ours;
    for (auto _ : state) {
        limits.push_back(Time(limit));
        ours.push_back(Time(subject));
        state.SetIterationTime(ours.back());
    }
    const double limitMedian = Median(limits);
    const double ourMedian = Median(ours);
    state.counters["limit"] = limitMedian / operations;
    state.counters["ours"] = ourMedian / operations;
    state.counters["ratio"] = ourMedian / limitMedian;
    state.counters["goal"] = goal;
}

} // namespace Bench

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    Bench::RegisterRows();
    Bench::Table table;
    return benchmark::RunSpecifiedBenchmarks(&table) == 0 ? 1 : 0;
}
