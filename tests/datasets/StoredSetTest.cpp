#include "Alerts.h"
#include "Channels.h"
#include "Samples.h"
#include "StoredBytes.h"

#include <gtest/gtest.h>

namespace Qor::Tivor::Testing {

namespace {

using Core::Testing::Warnings;
using Path = std::vector<std::string>;

/// Where something stands in the container, or in one of those inside.
std::vector<Path> PathsIn(const DataContainer& container, const Path& above = {}) {
    std::vector<Path> paths;
    for (const auto& entry : container) {
        paths.push_back(above);
        paths.back().push_back(entry.key);
        if (const auto inner = container.GetPtr<DataContainer>(entry.key))
            for (const Path& path : PathsIn(*inner, Path(paths.back())))
                paths.push_back(path);
    }
    return paths;
}

/// What a set holds that is read as the layout in a container, or as a data object.
std::shared_ptr<IDataSet> ReadSet(const std::string& bytes, bool asObject) {
    if (asObject) {
        const auto object = MakeData(DataSet());
        EXPECT_EQ(Fill(*object, bytes, bytes.size()), bytes.size());
        EXPECT_EQ(Stored(*object->GetValue().GetContent()), bytes); // until it is asked for something
        object->GetData()->GetMetaData();
        return object->GetData();
    }
    DataContainer read;
    ReadInto(read, bytes);
    return DataSet::Create(read);
}

template <class Item>
void CheckItems(IDataSet& set, IDataSet& again, const DataContainer& items, const DataContainer* expected) {
    EXPECT_EQ(ItemKeys<Item>(items), expected != nullptr ? ItemKeys<Item>(*expected) : std::multiset<std::string>());
    EXPECT_EQ(ListedKeys<Item>(set), ItemKeys<Item>(items));
    EXPECT_EQ(ChannelsOf<Item>(again), ChannelsOf<Item>(set));
}

} // namespace

// What is still an item is reached, and nothing fails; only what has to be a container is replaced.
TEST(StoredSets, SurviveObjectsOfOtherTypes) {
    const auto sample = std::dynamic_pointer_cast<Data<DataSet, GenericWrapper<IDataSet>>>(DataSets().back().second);
    const DataContainer& whole = *ValueTraits<IDataSet>::GetContent(*sample->GetData());
    for (const Path& path : PathsIn(whole))
        for (const auto& object : StrangeObjects())
            for (const bool asObject : {false, true}) {
                SCOPED_TRACE(path.front() + " ... " + path.back() + ": " + object->GetTypeName());
                const auto content = whole.Clone();
                const auto parent = content->GetSubData({path.begin(), path.end() - 1}, false);
                (parent ? parent : content)->Put(path.back(), object);

                const Warnings warnings;
                const auto set = ReadSet(Stored(*content), asObject);
                const bool isReplaced =
                    path.size() == 1 && path[0] != "Note" && !content->GetPtr<DataContainer>(path[0]);
                EXPECT_EQ(warnings.GetNames(), std::vector<std::string>(isReplaced ? 1 : 0, "InvalidDataSetEntry"));
                EXPECT_EQ(set->GetPrimaryData2D() != nullptr, set->GetNumData2DItems() != 0);

                DataContainer stored;
                set->StoreDataSet(stored);
                EXPECT_TRUE(DataSet::IsDataSetFormat(stored));
                const auto again = ReadSet(Stored(stored), asObject);
                CheckItems<Data2D>(*set, *again, *set->GetAllData2DItems(),
                                   content->GetPtr<DataContainer>(DataSet::s2D_DATA).get());
                CheckItems<Data1D>(*set, *again, *set->GetAllData1DItems(),
                                   content->GetPtr<DataContainer>(DataSet::s1D_DATA).get());
            }
}

} // namespace Qor::Tivor::Testing
