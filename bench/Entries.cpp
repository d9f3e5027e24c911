#include "Entries.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <random>

namespace Bench {

namespace {

const char* const text = "twelve bytes";

// Enough entries that a run is long beside the clock's own cost.
constexpr std::size_t leastPerRun = 20000;

std::size_t RoundsFor(std::size_t count) { return std::max<std::size_t>(1, leastPerRun / count); }

/// Runs `work` on each of as many fresh objects as one run takes; they die outside the timed part.
template <class T, class Work>
Run OnFresh(std::size_t count, Work work) {
    return [=](Stopwatch& watch) {
        std::vector<T> objects(RoundsFor(count));
        watch.Start();
        for (T& object : objects)
            work(object);
        watch.Stop();
    };
}

template <class Work>
Run Repeatedly(std::size_t count, Work work) {
    return [=](Stopwatch& watch) {
        watch.Start();
        for (std::size_t i = 0; i < RoundsFor(count); ++i)
            work();
        watch.Stop();
    };
}

double Operations(std::size_t count) { return static_cast<double>(count * RoundsFor(count)); }

} // namespace

std::vector<std::string> MakeKeys(std::size_t count) {
    std::vector<std::string> keys;
    for (std::size_t i = 0; i < count; ++i) {
        const std::string number = std::to_string(i);
        keys.push_back("Channel/" + std::string(number.size() < 6 ? 6 - number.size() : 0, '0') + number);
    }
    return keys;
}

std::vector<std::string> Shuffle(std::vector<std::string> keys) {
    std::shuffle(keys.begin(), keys.end(), std::mt19937_64(1));
    return keys;
}

void Fill(Map& map, const std::vector<std::string>& keys) {
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (i % 4 < 2)
            map.emplace(keys[i], static_cast<double>(i));
        else if (i % 4 == 2)
            map.emplace(keys[i], static_cast<int>(i));
        else
            map.emplace(keys[i], std::string(text));
    }
}

void Fill(Qor::Tivor::DataContainer& container, const std::vector<std::string>& keys) {
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (i % 4 < 2)
            container.PutValue(keys[i], static_cast<double>(i));
        else if (i % 4 == 2)
            container.PutValue(keys[i], static_cast<int>(i));
        else
            container.PutValue(keys[i], std::string(text));
    }
}

void CompareBuild(benchmark::State& state, double goal, std::size_t count) {
    const std::vector<std::string> keys = MakeKeys(count);
    const auto build = [&](auto& collection) {
        Fill(collection, keys);
        Keep(collection);
    };
    Compare(state, goal, OnFresh<Map>(count, build), OnFresh<Qor::Tivor::DataContainer>(count, build),
            Operations(count));
}

void CompareWrite(benchmark::State& state, double goal, std::size_t count, bool lock) {
    Qor::Tivor::DataContainer container;
    Fill(container, MakeKeys(count));
    Qor::Core::MemoryOutputStream stream;
    container.OutputData(stream, lock);
    const std::vector<std::byte> source(stream.GetBytes().begin(), stream.GetBytes().end());
    std::vector<std::byte> target(source.size());
    const auto copy = [&] {
        std::memcpy(target.data(), source.data(), source.size());
        Keep(target);
    };
    const auto write = [&] {
        stream.Clear();
        container.OutputData(stream, lock);
        Keep(stream);
    };
    Compare(state, goal, Repeatedly(count, copy), Repeatedly(count, write), Operations(count));
    if (stream.GetSize() != source.size())
        state.SkipWithError("the sizes of two writes differ");
}

void CompareRead(benchmark::State& state, double goal, std::size_t count) {
    const std::vector<std::string> keys = MakeKeys(count);
    Qor::Core::MemoryOutputStream written;
    {
        Qor::Tivor::DataContainer container;
        Fill(container, keys);
        container.OutputData(written, false);
    }
    std::vector<std::byte> target(written.GetSize());
    const auto copyAndFill = [&](Map& map) {
        std::memcpy(target.data(), written.GetBytes().data(), target.size());
        Keep(target);
        map.reserve(count);
        Fill(map, keys);
        Keep(map);
    };
    bool complete = true;
    const auto read = [&](Qor::Tivor::DataContainer& container) {
        Qor::Core::MemoryInputStream stream(written.GetBytes());
        container.InputData(stream);
        Keep(container);
        complete = complete && container.NumDataObjects() == count;
    };
    Compare(state, goal, OnFresh<Map>(count, copyAndFill), OnFresh<Qor::Tivor::DataContainer>(count, read),
            Operations(count));
    if (!complete)
        state.SkipWithError("entries were lost");
}

void CompareLookUp(benchmark::State& state, double goal, std::size_t count) {
    Map map;
    Qor::Tivor::DataContainer container;
    {
        const std::vector<std::string> keys = MakeKeys(count);
        Fill(map, keys);
        Fill(container, keys);
    }
    const std::vector<std::string> keys = Shuffle(MakeKeys(count));
    bool complete = true;
    const auto find = [&] {
        for (const std::string& key : keys) {
            const auto found = map.find(key);
            benchmark::DoNotOptimize(found);
            complete = complete && found != map.end();
        }
    };
    const auto get = [&] {
        for (const std::string& key : keys) {
            const auto object = container.Get(key);
            benchmark::DoNotOptimize(object.get());
            complete = complete && object != nullptr;
        }
    };
    Compare(state, goal, Repeatedly(count, find), Repeatedly(count, get), Operations(count));
    if (!complete)
        state.SkipWithError("keys were not found");
}

} // namespace Bench
