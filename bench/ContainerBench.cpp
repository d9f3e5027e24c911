// A container of 100,000 small entries against the standard library's hash map and memcpy.
#include "Entries.h"

namespace {
constexpr std::size_t count = 100000;
}

void Bench::RegisterRows() {
    using benchmark::State;
    Register("container build", 31, [](State& state) { CompareBuild(state, 0.70, count); });
    Register("container write", 31, [](State& state) { CompareWrite(state, 60, count, false); });
    Register("container write, locked", 31, [](State& state) { CompareWrite(state, 60, count, true); });
    Register("container read", 31, [](State& state) { CompareRead(state, 1.1, count); });
    Register("container look-up", 31, [](State& state) { CompareLookUp(state, 2.2, count); });
}
