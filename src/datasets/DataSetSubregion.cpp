#include "DataSetKeys.h"

#include <QorCore/Message.h>
#include <Tivor/CollectionSerialization.h>
#include <Tivor/Data2DOperation.h>
#include <Tivor/DataSet.h>

#include <map>

namespace Qor::Tivor {

OmittingSurface::~OmittingSurface() = default;

namespace {

struct Range {
    std::uint64_t begin1, end1, begin2, end2;
};

/// What the surfaces of the source are called in the result.
using NewKeys = std::map<std::string, std::string>;

std::shared_ptr<Data2D> Cut(const Data2D& surface, const std::string& key, const Range& range) {
    try {
        if (auto block = CreateSubregion(surface, range.begin1, range.end1, range.begin2, range.end2))
            return block;
    } catch (Core::Error& error) {
        error.AddVariable("Key", key);
        throw;
    }
    Core::Warning::RaiseWarning(OmittingSurface(Core::FormatText("The surface <%1%>, a %2%, cannot be cut, and is left "
                                                                 "out",
                                                                 {key, surface.ToString()})),
                                QOR_CODE_CONTEXT("DataSet"), "Qor.Tivor.DataSet.CreateSubregion");
    return nullptr;
}

std::string NewKeyOf(const std::string& key, const std::string* primary, const DataContainer& surfaces) {
    if (primary != nullptr && key == *primary)
        return primary2DKey;
    std::string free = key;
    for (int number = 2; free == primary2DKey || (free != key && surfaces.Exists(free)); ++number)
        free = key + '_' + std::to_string(number);
    return free;
}

std::shared_ptr<DataContainer> CutAll(DataContainer& surfaces, const std::string* primary, const Range& range,
                                      NewKeys& newKeys) {
    auto blocks = DataContainer::Create();
    for (const auto& [key, object] : surfaces) {
        const auto surface = surfaces.GetPtr<Data2D>(key);
        if (!surface) {
            blocks->Put(NewKeyOf(key, primary, surfaces), object);
        } else if (auto block = Cut(*surface, key, range)) {
            const std::string& newKey = newKeys[key] = NewKeyOf(key, primary, surfaces);
            blocks->Put(newKey, ValueTraits<Data2D>::MakeData(std::move(block)));
        }
    }
    return blocks;
}

void RenameInChannels(DataContainer& metaData, const NewKeys& newKeys) {
    const auto config = metaData.GetPtr<DataContainer>(channels2DKey);
    if (!config)
        return;
    for (const auto& entry : *config) {
        const std::vector<std::string> former = Data2DChannel::ReadConfig(*config, entry.key);
        std::list<std::string> keys;
        for (const std::string& key : former)
            if (const auto found = newKeys.find(key); found != newKeys.end())
                keys.push_back(found->second);
        if (!keys.empty())
            config->PutValue(entry.key, keys);
        else if (!former.empty())
            config->Remove(entry.key);
    }
}

// Sets of other classes might name a channel that they do not have.
void RequireChannels(IDataSet& dataSet) {
    std::unordered_set<std::string> names;
    dataSet.GetData2DChannels(names);
    for (const std::string& name : names) {
        const auto spData2D = dataSet.GetData2DChannel(name);
        QOR_ASSERT((spData2D != nullptr), "Data2DOperation");
    }
}

} // namespace

std::shared_ptr<DataSet> CreateSubregion(const IDataSet& dataSet, std::uint64_t begin1, std::uint64_t end1,
                                         std::uint64_t begin2, std::uint64_t end2) {
    auto& source = const_cast<IDataSet&>(dataSet); // which asks without changing
    RequireChannels(source);
    DataContainer layout; // with metadata that are copies, and items that are shared
    DataSet(source).StoreDataSet(layout);
    const auto result = DataSet::Create(layout);
    std::string recorded; // or that of the first one
    const std::string* const primary =
        result->GetPrimaryData2D() && result->GetPrimaryData2DKey(recorded) ? &recorded : nullptr;
    NewKeys newKeys;
    layout.Put(DataSet::s2D_DATA, CutAll(result->AllData2D(), primary, {begin1, end1, begin2, end2}, newKeys));
    RenameInChannels(result->MetaData(), newKeys);
    if (primary != nullptr && newKeys.count(*primary) != 0)
        result->SetPrimaryData2DKey(primary2DKey);
    else
        result->MetaData().Remove(DataSet::sPRIMARY_2D_DATA_KEY);
    result->LoadDataSet(layout);
    return result;
}

} // namespace Qor::Tivor
