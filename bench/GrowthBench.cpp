// What one entry costs in collections of 1,000 to 10,000,000. "Flat" is judged against the smallest collection: the
// cost may grow by half, beyond what the larger memory alone does to the limit.
#include "Entries.h"

#include <algorithm>
#include <map>
#include <string>

namespace Bench {

namespace {

using Comparison = void (*)(benchmark::State&, double, std::size_t);

struct Cost {
    double limit;
    double ours;
};

void RegisterGrowth(const std::string& name, Comparison compare) {
    static std::map<std::string, Cost> first;
    for (const std::size_t count :
         {std::size_t{1000}, std::size_t{10000}, std::size_t{100000}, std::size_t{1000000}, std::size_t{10000000}}) {
        Register(name + ' ' + std::to_string(count), count < 10000000 ? 15 : 5, [=](benchmark::State& state) {
            compare(state, 0, count);
            const Cost cost{state.counters["limit"].value, state.counters["ours"].value};
            const Cost& base = first.emplace(name, cost).first->second;
            const double growthOfLimit = std::max(1.0, cost.limit / base.limit);
            state.counters["goal"] = 1.5 * growthOfLimit * base.ours / cost.limit;
        });
    }
}

} // namespace

} // namespace Bench

void Bench::RegisterRows() {
    RegisterGrowth("build", CompareBuild);
    RegisterGrowth("write", [](benchmark::State& state, double goal, std::size_t count) {
        CompareWrite(state, goal, count, false);
    });
    RegisterGrowth("read", CompareRead);
    RegisterGrowth("look-up", CompareLookUp);
}
