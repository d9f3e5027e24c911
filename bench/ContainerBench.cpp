// A container of 100,000 small entries against the standard library's hash map and memcpy.
#include "Entries.h"

void Bench::RegisterRows() {
    constexpr std::size_t count = 100000;
    Register("container build", 31, [](auto& state) { CompareBuild(state, 0.70, count); });
    Register("container write", 31, [](auto& state) { CompareWrite(state, 60, count, false); });
    Register("container write, locked", 31, [](auto& state) { CompareWrite(state, 60, count, true); });
    Register("container read", 31, [](auto& state) { CompareRead(state, 1.1, count); });
    Register("container look-up", 31, [](auto& state) { CompareLookUp(state, 2.2, count); });
}
