#pragma once

#include "Comparison.h"

#include <QorCore/MemoryStreams.h>
#include <Tivor/DataContainer.h>

#include <cstddef>
#include <string>
#include <unordered_map>
#include <variant>
#include <vector>

namespace Bench {

/// A collection of many small entries, as a container and as what the standard library has for it: half of the entries
/// are doubles, a quarter ints, a quarter texts of 12 bytes.
using Map = std::unordered_map<std::string, std::variant<double, int, std::string>>;

std::vector<std::string> MakeKeys(std::size_t count);
std::vector<std::string> Shuffle(std::vector<std::string> keys);
void Fill(Map& map, const std::vector<std::string>& keys);
void Fill(Qor::Tivor::DataContainer& container, const std::vector<std::string>& keys);

/// The four comparisons of containers with the standard library; they give the cost of one entry.
void CompareBuild(benchmark::State& state, double goal, std::size_t count);
void CompareWrite(benchmark::State& state, double goal, std::size_t count, bool lock);
void CompareRead(benchmark::State& state, double goal, std::size_t count);
void CompareLookUp(benchmark::State& state, double goal, std::size_t count);

} // namespace Bench
