// What an item of a data set of 1,000 to 40,000 surfaces costs, against a container of the same ones. "Flat" is judged
// against the smallest set: the cost may grow by half, beyond what the larger memory alone does to the container.
#include "Comparison.h"

#include <QorCore/MemoryStreams.h>
#include <Tivor/Codec.h>

#include <algorithm>
#include <map>
#include <vector>

namespace Bench {

namespace {

using namespace Qor::Tivor;
using Surfaces = std::vector<std::shared_ptr<Data2D>>;

Surfaces MakeSurfaces(std::size_t count) {
    Surfaces surfaces;
    for (std::size_t i = 0; i < count; ++i) {
        surfaces.push_back(Data2D::Create(MakeData(RowMajorMatrix<float>(2, 2))));
        surfaces.back()->SetDataKind(sHEIGHT_DATA);
    }
    return surfaces;
}

std::string KeyOf(std::size_t number) { return "Surface/" + std::to_string(number); }

void Put(DataContainer& container, const Surfaces& surfaces) {
    for (std::size_t i = 0; i < surfaces.size(); ++i)
        container.Put(KeyOf(i), ValueTraits<Data2D>::MakeData(surfaces[i]));
}

void Store(IDataSet& set, const Surfaces& surfaces) {
    for (std::size_t i = 0; i < surfaces.size(); ++i)
        set.StoreData(surfaces[i], KeyOf(i));
}

/// With what was made of the surfaces before.
template <class Prepare, class Work>
Run OnSurfaces(std::size_t count, Prepare prepare, Work work) {
    return [=](Stopwatch& watch) {
        const Surfaces surfaces = MakeSurfaces(count);
        const auto prepared = prepare(surfaces);
        watch.Start();
        work(*prepared, surfaces);
        watch.Stop();
    };
}

std::shared_ptr<DataContainer> MakeEmptyContainer(const Surfaces&) { return DataContainer::Create(); }
std::shared_ptr<DataContainer> MakeContainer(const Surfaces& surfaces) {
    auto container = DataContainer::Create();
    Put(*container, surfaces);
    return container;
}
std::shared_ptr<DataSet> MakeEmptySet(const Surfaces&) { return std::make_shared<DataSet>(); }
std::shared_ptr<DataSet> MakeSet(const Surfaces& surfaces) {
    auto set = std::make_shared<DataSet>();
    Store(*set, surfaces);
    return set;
}

std::vector<std::byte> Write(const DataContainer& container) {
    Qor::Core::MemoryOutputStream stream;
    container.OutputData(stream, true);
    return {stream.GetBytes().begin(), stream.GetBytes().end()};
}

std::shared_ptr<DataContainer> Read(const std::vector<std::byte>& bytes) {
    Qor::Core::MemoryInputStream stream(bytes);
    return DataContainer::Create(stream);
}

void ChangeKinds(const Surfaces& surfaces) {
    for (const auto& surface : surfaces)
        surface->SetDataKind(sPHASE_DATA);
}

using Sides = std::pair<Run, Run>; // a container, a set

Sides CompareStore(std::size_t count) {
    return {OnSurfaces(count, MakeEmptyContainer, [](auto& container, auto& surfaces) { Put(container, surfaces); }),
            OnSurfaces(count, MakeEmptySet, [](auto& set, auto& surfaces) { Store(set, surfaces); })};
}

Sides CompareChange(std::size_t count) {
    return {OnSurfaces(count, MakeContainer, [](auto&, auto& surfaces) { ChangeKinds(surfaces); }),
            OnSurfaces(count, MakeSet, [](auto& set, auto& surfaces) {
                ChangeKinds(surfaces);
                Keep(set.GetData2DChannel(sPHASE_DATA)->GetDataAt(surfaces.size() - 1));
            })};
}

Sides CompareWrite(std::size_t count) {
    return {OnSurfaces(count, MakeContainer, [](auto& container, auto&) { Keep(Write(container)); }),
            OnSurfaces(count, MakeSet, [](auto& set, auto&) {
                DataContainer target;
                Encode(set, target, DataSet::sFORMAT);
                Keep(Write(target));
            })};
}

Sides CompareRead(std::size_t count) {
    const auto bytesOf = [](auto make) {
        return [make](const Surfaces& surfaces) {
            return std::make_shared<std::vector<std::byte>>(Write(*make(surfaces)));
        };
    };
    const auto makeContent = [](const Surfaces& surfaces) { return MakeSet(surfaces)->GetContent(); };
    return {OnSurfaces(count, bytesOf(MakeContainer), [](auto& bytes, auto&) { Keep(Read(bytes)); }),
            OnSurfaces(count, bytesOf(makeContent), [](auto& bytes, auto&) { Keep(Decode(Read(bytes), "")); })};
}

} // namespace

} // namespace Bench

void Bench::RegisterRows() {
    static std::map<std::string, std::pair<double, double>> first; // container, set
    const std::pair<const char*, Sides (*)(std::size_t)> rows[] = {
        {"store", CompareStore}, {"change kinds", CompareChange}, {"write", CompareWrite}, {"read", CompareRead}};
    for (const auto& [name, sides] : rows)
        for (const std::size_t count : {std::size_t{1000}, std::size_t{10000}, std::size_t{40000}})
            Register(std::string(name) + ' ' + std::to_string(count), count < 40000 ? 7 : 3,
                     [=, name = std::string(name), sides = sides](benchmark::State& state) {
                         const auto [limit, ours] = sides(count);
                         Compare(state, 0, limit, ours, static_cast<double>(count));
                         const double cost = state.counters["limit"].value;
                         const auto& base = first.try_emplace(name, cost, state.counters["ours"].value).first->second;
                         state.counters["goal"] = 1.5 * std::max(1.0, cost / base.first) * base.second / cost;
                     });
}
