// Surfaces turned, flipped and cut, against memcpy of as many bytes; and what others make of it, where they are
// installed (libopencv-core-dev, libeigen3-dev). Source and target lie in memory as matrices do, touched before; in the
// rows named "fresh" the result is allocated, too.
#include "../src/arrays/SampleKernels.h"
#include "Comparison.h"

#include <Tivor/Data2DOperation.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#ifdef TIVOR_BENCH_EIGEN
#include <Eigen/Core>
#endif
#ifdef TIVOR_BENCH_OPENCV
#include <opencv2/core.hpp>
#endif

namespace Bench {

namespace {

using namespace Qor::Tivor;

constexpr int runs = 15;

template <class T>
using Work = std::function<void(const T* source, T* target)>;

/// The operations on square blocks of so many lines, as one library has them.
template <class T>
struct Library {
    std::string name;
    Work<T> flip1, flip2, rotate180, transpose, rotate90, rotate270, cut;
};

/// The block that is cut out begins here, off the lines of the cache.
constexpr std::size_t Begin(std::size_t count) { return count / 4 + 3; }

template <class T>
Library<T> Ours(std::size_t n) {
    namespace K = SampleKernels;
    return {"",
            [=](const T* from, T* to) { K::ReverseLines(from, to, n, n); },
            [=](const T* from, T* to) { K::ReverseElements(from, to, n, n); },
            [=](const T* from, T* to) { K::ReverseElements(from, to, 1, n * n); },
            [=](const T* from, T* to) { K::Transpose(from, to, n, n, false, false); },
            [=](const T* from, T* to) { K::Transpose(from, to, n, n, true, false); },
            [=](const T* from, T* to) { K::Transpose(from, to, n, n, false, true); },
            [=](const T* from, T* to) { K::CopyLines(from + Begin(n) * (n + 1), n, to, n / 2, n / 2); }};
}

#ifdef TIVOR_BENCH_OPENCV
template <class T>
Library<T> OpenCV(std::size_t n) {
    constexpr int type = sizeof(T) == 1 ? CV_8U : sizeof(T) == 2 ? CV_16U : sizeof(T) == 4 ? CV_32F : CV_64F;
    const auto matrix = [=](const T* data, std::size_t count) {
        return cv::Mat(static_cast<int>(count), static_cast<int>(count), type, const_cast<T*>(data));
    };
    const auto flip = [=](int code) {
        return [=](const T* from, T* to) { cv::flip(matrix(from, n), matrix(to, n), code); };
    };
    const auto rotate = [=](int code) {
        return [=](const T* from, T* to) { cv::rotate(matrix(from, n), matrix(to, n), code); };
    };
    const int begin = static_cast<int>(Begin(n));
    const int extent = static_cast<int>(n / 2);
    return {" OpenCV",
            flip(0),
            flip(1),
            flip(-1),
            [=](const T* from, T* to) { cv::transpose(matrix(from, n), matrix(to, n)); },
            rotate(cv::ROTATE_90_CLOCKWISE),
            rotate(cv::ROTATE_90_COUNTERCLOCKWISE),
            [=](const T* from, T* to) {
                matrix(from, n)(cv::Rect(begin, begin, extent, extent)).copyTo(matrix(to, n / 2));
            }};
}
#endif

#ifdef TIVOR_BENCH_EIGEN
template <class T>
Library<T> Eigen3(std::size_t n) {
    using Array = Eigen::Array<T, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
    const auto size = static_cast<Eigen::Index>(n);
    const auto begin = static_cast<Eigen::Index>(Begin(n));
    const auto assign = [=](auto expression) {
        return [=](const T* from, T* to) {
            Eigen::Map<Array>(to, size, size) = expression(Eigen::Map<const Array>(from, size, size));
        };
    };
    return {" Eigen",
            assign([](const auto& in) { return in.colwise().reverse(); }),
            assign([](const auto& in) { return in.rowwise().reverse(); }),
            assign([](const auto& in) { return in.reverse(); }),
            assign([](const auto& in) { return in.transpose(); }),
            assign([](const auto& in) { return in.colwise().reverse().transpose(); }),
            assign([](const auto& in) { return in.rowwise().reverse().transpose(); }),
            [=](const T* from, T* to) {
                Eigen::Map<Array>(to, size / 2, size / 2) =
                    Eigen::Map<const Array>(from, size, size).block(begin, begin, size / 2, size / 2);
            }};
}
#endif

template <class T>
std::vector<Library<T>> Libraries(std::size_t n) {
    std::vector<Library<T>> all{Ours<T>(n)};
#ifdef TIVOR_BENCH_OPENCV
    all.push_back(OpenCV<T>(n));
#endif
#ifdef TIVOR_BENCH_EIGEN
    all.push_back(Eigen3<T>(n));
#endif
    return all;
}

template <class T>
RowMajorMatrix<T> MakeTouched(std::size_t n) {
    RowMajorMatrix<T> matrix(n, n);
    for (std::size_t i = 0; i < matrix.size(); ++i)
        matrix.data()[i] = static_cast<T>(i * 2654435761u >> 7);
    return matrix;
}

/// Whether both do the same; `bytes` of it count.
template <class T>
bool AreAlike(const RowMajorMatrix<T>& source, std::size_t bytes, const Work<T>& one, const Work<T>& other) {
    RowMajorMatrix<T> results[] = {source, source};
    one(source.data(), results[0].data());
    other(source.data(), results[1].data());
    return std::memcmp(results[0].data(), results[1].data(), bytes) == 0;
}

template <class T>
void CompareTouched(benchmark::State& state, double goal, std::size_t n, const Work<T>& limit, const Work<T>& work) {
    const auto source = MakeTouched<T>(n);
    auto target = MakeTouched<T>(n);
    const auto run = [&](const Work<T>& one) {
        return [&](Stopwatch& watch) {
            watch.Start();
            one(source.data(), target.data());
            watch.Stop();
            Keep(target.data());
        };
    };
    Compare(state, goal, run(limit), run(work));
}

template <class T>
void AddRows(const std::string& type, std::size_t n, double turnGoal) {
    const std::string size = ' ' + type + ' ' + std::to_string(n);
    const auto all = Libraries<T>(n);
    const auto copy = [](std::size_t bytes) { return [=](const T* from, T* to) { std::memcpy(to, from, bytes); }; };
    const auto add = [&](const std::string& name, double goal, std::size_t bytes, Work<T> Library<T>::*work) {
        for (const Library<T>& library : all)
            Register(name + size + library.name, runs,
                     [=, goal = library.name.empty() ? goal : 0, done = library.*work,
                      ours = all.front().*work](benchmark::State& state) {
                         if (AreAlike<T>(MakeTouched<T>(n), bytes, done, ours))
                             CompareTouched<T>(state, goal, n, copy(bytes), done);
                         else
                             state.SkipWithError("does other than ours");
                     });
    };
    const std::size_t bytes = n * n * sizeof(T);
    add("flip 1", 0.95, bytes, &Library<T>::flip1);
    add("flip 2", 0.95, bytes, &Library<T>::flip2);
    add("rotate 180", 0.95, bytes, &Library<T>::rotate180);
    add("transpose", turnGoal, bytes, &Library<T>::transpose);
    add("rotate 90", turnGoal, bytes, &Library<T>::rotate90);
    add("rotate 270", turnGoal, bytes, &Library<T>::rotate270);
    add("sub-region", 0, bytes / 4, &Library<T>::cut);
    for (const Library<T>& other : all) // of which the best is the goal
        if (!other.name.empty())
            Register("sub-region" + size + " to" + other.name, runs,
                     [=, limit = other.cut, ours = all.front().cut](benchmark::State& state) {
                         CompareTouched<T>(state, 1.0, n, limit, ours);
                     });
}

/// As a user has it: the result is new memory. It is freed outside of the time.
void CompareFresh(benchmark::State& state, std::size_t n) {
    const auto surface = Data2D::Create(MakeData(MakeTouched<double>(n)));
    const auto source = surface->GetContent()->GetPtr<const RowMajorMatrix<double>>("Matrix");
    const auto limit = [&](Stopwatch& watch) {
        const std::size_t bytes = source->size() * sizeof(double);
        watch.Start();
        const std::unique_ptr<void, decltype(&std::free)> fresh(std::malloc(bytes), &std::free);
        std::memcpy(fresh.get(), source->data(), bytes);
        watch.Stop();
        Keep(fresh.get());
    };
    Compare(state, 0.40, limit, [&](Stopwatch& watch) {
        watch.Start();
        const auto result = Data2DOperation<Data2DOp::Transpose>::Execute(*surface);
        watch.Stop();
        Keep(result.get());
    });
}

} // namespace

} // namespace Bench

void Bench::RegisterRows() {
#ifdef TIVOR_BENCH_OPENCV
    cv::setNumThreads(1);
#endif
    for (const std::size_t n : {4096u, 4032u}) {
        AddRows<std::uint8_t>("u8", n, 4.0);
        AddRows<std::uint16_t>("u16", n, 2.7);
        AddRows<std::uint32_t>("f32", n, 2.0);
        AddRows<std::uint64_t>("f64", n, 1.8);
        Register("transpose f64 " + std::to_string(n) + " fresh", runs,
                 [=](benchmark::State& state) { CompareFresh(state, n); });
    }
}
