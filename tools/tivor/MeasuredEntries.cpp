#include "MeasuredEntries.h"

#include "Files.h"
#include "Values.h"

#include <Tivor/DataSet.h>

namespace Qor::Tivor::Tool {

namespace {

void Find(const std::shared_ptr<DataObject>& object, const Path& path, std::vector<MeasuredEntry>& all);

void FindIn(const DataContainer& container, const Path& above, std::vector<MeasuredEntry>& all) {
    for (const auto& [key, object] : container) {
        Path path = above;
        path.push_back(key);
        Find(object, path, all);
    }
}

void Find(const std::shared_ptr<DataObject>& object, const Path& path, std::vector<MeasuredEntry>& all) {
    MeasuredEntry entry{path, object, nullptr, nullptr};
    if (auto* const surface = dynamic_cast<GenericWrapper<Data2D>*>(object.get()))
        entry.surface = surface->GetData();
    else if (auto* const profile = dynamic_cast<GenericWrapper<Data1D>*>(object.get()))
        entry.profile = profile->GetData();
    if (entry.surface || entry.profile)
        all.push_back(std::move(entry));
    else if (const auto entries = EntriesIn(*object))
        FindIn(*entries, path, all);
}

} // namespace

std::vector<MeasuredEntry> FindMeasured(DataFile& file, const Path& keys) {
    std::vector<MeasuredEntry> all;
    if (const auto object = FindObject(file, keys))
        Find(object, keys, all);
    else
        FindIn(file, {}, all);
    return all;
}

Path FindPrimary(const DataFile& file) {
    const auto metaData = file.GetPtr<const DataContainer>("MetaData");
    const auto key = metaData ? metaData->GetPtr<const std::string>(DataSet::sPRIMARY_2D_DATA_KEY) : nullptr;
    return key ? Path{DataSet::s2D_DATA, *key} : Path{};
}

std::string TitleOf(const MeasuredEntry& entry) {
    const std::string kind = entry.surface ? entry.surface->GetDataKind() : entry.profile->GetDataKind();
    return (kind.empty() || kind == "Unknown" ? "" : Show(kind) + ": ") + ShowPath(entry.path);
}

} // namespace Qor::Tivor::Tool
