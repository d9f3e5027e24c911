// Surfaces that are turned, flipped and cut, against the copy of as many bytes; and, where they are installed, as
// others do it.
#include "../src/arrays/SampleKernels.h"
#include "Comparison.h"

#include <Tivor/Data2DOperation.h>

#include <cstring>
#include <memory>
#include <string>

#ifdef TIVOR_BENCH_EIGEN
#include <Eigen/Core>
#endif
#ifdef TIVOR_BENCH_OPENCV
#include <opencv2/core.hpp>
#endif

namespace Bench {

namespace {

using namespace Qor::Tivor;

template <class T>
struct Pair {
    explicit Pair(std::size_t count) : source(count, count), target(count, count) {
        std::memset(source.data(), 1, source.size() * sizeof(T));
        std::memset(target.data(), 2, target.size() * sizeof(T));
    }

    RowMajorMatrix<T> source;
    RowMajorMatrix<T> target;
};

template <class T, class Work>
Run Touched(const std::shared_ptr<Pair<T>>& pair, Work work) {
    return [pair, work](Stopwatch& watch) {
        watch.Start();
        work(pair->source.data(), pair->target.data());
        watch.Stop();
        Keep(pair->target.data());
    };
}

template <class T>
void AddRows(const std::string& type, std::size_t count, double turnGoal) {
    const auto row = [=](const std::string& name, double goal, std::size_t bytes, auto work) {
        Register("W4 " + name + ' ' + type + ' ' + std::to_string(count), 15, [=](benchmark::State& state) {
            const auto pair = std::make_shared<Pair<T>>(count);
            Compare(state, goal, Touched(pair, [=](const T* from, T* to) { std::memcpy(to, from, bytes); }),
                    Touched(pair, work));
        });
    };
    const std::size_t all = count * count * sizeof(T);
    row("flip 1", 0.95, all, [=](const T* from, T* to) { SampleKernels::ReverseLines(from, to, count, count); });
    row("flip 2", 0.95, all, [=](const T* from, T* to) { SampleKernels::ReverseElements(from, to, count, count); });
    row("rotate 180", 0.95, all,
        [=](const T* from, T* to) { SampleKernels::ReverseElements(from, to, 1, count * count); });
    row("transpose", turnGoal, all,
        [=](const T* from, T* to) { SampleKernels::Transpose(from, to, count, count, false, false); });
    row("rotate 90", turnGoal, all,
        [=](const T* from, T* to) { SampleKernels::Transpose(from, to, count, count, true, false); });
    row("rotate 270", turnGoal, all,
        [=](const T* from, T* to) { SampleKernels::Transpose(from, to, count, count, false, true); });
    row("sub-region", 1.2, all / 4, [=](const T* from, T* to) {
        SampleKernels::CopyLines(from + count / 4 * count + count / 4, count, to, count / 2, count / 2);
    });
}

} // namespace

} // namespace Bench

void Bench::RegisterRows() {
    for (const std::size_t count : {4096u, 4032u}) {
        AddRows<std::uint8_t>("u8", count, 4.0);
        AddRows<std::uint16_t>("u16", count, 2.7);
        AddRows<std::uint32_t>("f32", count, 2.0);
        AddRows<std::uint64_t>("f64", count, 1.8);
    }
}
