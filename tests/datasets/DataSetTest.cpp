#include "Alerts.h"
#include "Sets.h"
#include "StoredBytes.h"
#include "Threads.h"

#include <Tivor/CollectionSerialization.h>

#include <gtest/gtest.h>

#include <functional>
#include <list>

namespace Qor::Tivor::Testing {

namespace {

using Core::Testing::ErrorOf;
using Core::Testing::Warnings;

} // namespace

TEST(DataSets, CompleteWhatTheyLoad) {
    DataContainer container;
    container.PutValue(sDATA_FORMAT, DataSet::sFORMAT); // at the top it says nothing
    EXPECT_FALSE(DataSet::IsDataSetFormat(container));
    DataSet set(container);
    EXPECT_TRUE(DataSet::IsDataSetFormat(container));
    EXPECT_EQ(Keys(container), "DataFormat MetaData 2D_Data 1D_Data ");
    EXPECT_EQ(Keys(set.MetaData()), "DataFormat ");
    EXPECT_EQ(TellChannels(set) + Keys(set.AllData2D()) + Keys(set.AllData1D()), "");
    EXPECT_EQ(set.GetPrimaryData2D(), nullptr);
    set.StoreData(Surface("Height"), "a");
    EXPECT_EQ(Keys(*container.GetPtr<DataContainer>(DataSet::s2D_DATA)), "a ");
    set.MetaData().PutValue(sDATA_FORMAT, "Other");
    EXPECT_FALSE(DataSet::IsDataSetFormat(container));
}

TEST(DataSets, KeepChannelsInStep) {
    DataSet set;
    const struct {
        std::function<void()> change;
        const char* channels;
    } rows[] = {
        {[&] { EXPECT_TRUE(set.StoreData(Surface("Height"), "b")); }, "Height: b; "},
        {[&] { set.StoreData(Surface("Height"), "a"); }, "Height: b a; "},
        {[&] { set.StoreData(Surface(""), "u"); }, "Height: b a; Unknown: u; "},
        {[&] { set.StoreData(Surface("Height", 1), "b"); }, "Height: b a; Unknown: u; "},
        {[&] { set.StoreData(Surface("Phase"), "b"); }, "Height: a; Phase: b; Unknown: u; "},
        {[&] { set.AllData2D().Remove("u"); }, "Height: a; Phase: b; "},
        {[&] { set.AllData2D().PutValue("a", 5); }, "Phase: b; "},
        {[&] { set.AllData2D().Put("c", MakeData(*Surface("Height"))); }, "Height: c; Phase: b; "},
        {[&] { set.GetData2D("c")->SetDataKind("Phase"); }, "Phase: b c; "},
        {[&] { set.AllData2D().Put("b", MakeData(*Surface("Phase", 2))); }, "Phase: b c; "},
        {[&] { EXPECT_FALSE(set.StoreData(std::shared_ptr<Data2D>(), "n")); }, "Phase: b c; "},
        {[&] { set.MetaData().Remove("2D_Channels"), set.StoreData(Surface("X"), "x"); }, "Phase: b c; X: x; "},
        {[&] { set.Clear(); }, ""},
    };
    for (const auto& [change, channels] : rows) {
        change();
        // What is stored says the same, and does so before anybody asks the set.
        DataSet again(*set.GetContent()->Clone());
        EXPECT_EQ(TellChannels(again), channels);
        EXPECT_EQ(TellChannels(set), channels);
    }
    EXPECT_EQ(Keys(set.MetaData()), "DataFormat ");
}

// Whoever changes an item does not hear of what fails in the set then. Hooks are called with no lock of the set held.
TEST(DataSets, TryAgainWhatFailed) {
    class Refusing final : public DataContainer {
    public:
        Refusing() { ReceiveChanges(); }
        ~Refusing() override { StopChanges(); }
        std::function<void()> onChange = [] {};

    protected:
        void OnDataObjectChanged(const std::string&, std::shared_ptr<DataObject>) override { onChange(); }
    };
    const auto config = std::make_shared<Refusing>();
    DataContainer container;
    container.GetSubData({sMETA_DATA}, true)->Put("2D_Channels", std::shared_ptr<DataContainer>(config));
    DataSet set(container);
    int numRefused = 0;
    config->onChange = [&] {
        std::thread([&] { set.GetNumData2DItems(); }).join();
        ++numRefused;
        throw Core::LogicError("No");
    };
    const auto items = set.GetAllData2DItems();
    items->Put("a", MakeData(*Surface("Height")));
    EXPECT_EQ(numRefused, 1);
    items->GetPtr<Data2D>("a")->SetDataKind("Phase"); // the first of two channels is refused
    EXPECT_GT(numRefused, 1);
    config->onChange = [] {};
    EXPECT_EQ(TellChannels(set), "Phase: a; ");
    EXPECT_EQ(Keys(*config), "Phase ");
}

TEST(DataSets, BelieveWhatIsListed) {
    DataContainer stored;
    DataSet first;
    for (const char* const key : {"a", "b", "c"})
        first.StoreData(Surface("Height"), key);
    first.StoreDataSet(stored);
    const auto config = stored.GetSubData({"MetaData", "2D_Channels"}, false);
    config->Clear();
    config->PutValue("Mine", std::list<std::string>{"c", "gone", "a", "c"});
    config->PutValue("Vector", std::vector<std::string>{"a"});
    config->PutValue("Number", 7);
    DataSet set(stored);
    EXPECT_EQ(TellChannels(set), "Height: b; Mine: c a; ");
    set.StoreData(Surface("Height", 3), "c");
    EXPECT_EQ(TellChannels(set), "Height: b; Mine: c a; ");
    set.StoreData(Surface("Phase"), "c");
    EXPECT_EQ(TellChannels(set), "Height: b; Mine: a; Phase: c; ");
    set.StoreData(Surface("Phase"), "gone"); // what lists it did so for another
    for (const std::string& channels : {TellChannels(set), TellChannels(*DataSet::Create(stored))})
        EXPECT_EQ(channels, "Height: b; Mine: a; Phase: c gone; ");
    EXPECT_EQ(Keys(*config), "Mine Number Height Phase ");
}

TEST(DataSets, ReplaceWhatIsNoContainer) {
    for (const std::string& key : {sMETA_DATA, DataSet::s2D_DATA, DataSet::s1D_DATA}) {
        DataContainer container;
        container.PutValue(key, 7);
        const Warnings warnings;
        DataSet set(container);
        EXPECT_EQ(warnings.Tell(), std::vector<std::string>{
                                       "InvalidDataSetEntry [Qor.Tivor.DataSet] Expected a container under the key " +
                                       key + " of a data set, found an object of type int32, which is replaced"});
        EXPECT_TRUE(DataSet::IsDataSetFormat(container) && DataSet::IsDataSetFormat(*set.GetContent()));
    }
    DataContainer container;
    container.PutValue(sMETA_DATA, 7);
    const Warnings refusing(true);
    DataSet set(Surface("Height"), "s");
    EXPECT_NE(ErrorOf([&] { set.LoadDataSet(container); }), "");
    EXPECT_EQ(TellChannels(set) + Keys(container), "Height: s; MetaData ");
    EXPECT_EQ(container.GetValue<int>(sMETA_DATA), 7);
}

TEST(DataSets, HaveAPrimarySurface) {
    DataSet set;
    std::string key = "untouched";
    EXPECT_FALSE(set.GetPrimaryData2DKey(key));
    EXPECT_EQ(key, "untouched");
    set.AllData2D().PutValue("no surface", 1);
    set.StoreData(Surface("Height"), "z");
    set.StoreData(Surface("Height"), "a");
    EXPECT_TRUE(set.SetPrimaryData2DKey("none") && set.GetPrimaryData2DKey(key));
    EXPECT_EQ(key, "none");
    EXPECT_EQ(set.GetPrimaryData2D(), set.GetData2D("z"));
    EXPECT_TRUE(set.GetPrimaryData2DKey(key) && key == "z");
    set.SetPrimaryData2DKey("a");
    EXPECT_EQ(set.GetPrimaryData2D(), set.GetData2D("a"));
    EXPECT_EQ(set.GetNumData2DItems(), 2u);
    const DataSet made(Surface("Height"), "only");
    EXPECT_TRUE(made.GetPrimaryData2DKey(key) && key == "only");
}

TEST(DataSets, RefuseIndicesBeyondAChannel) {
    DataSet set(Surface("Height"), "s");
    set.StoreData(Profile("Height"), "p");
    EXPECT_EQ(
        ErrorOf([&] { set.GetData2DChannel("Height")->GetDataAt(1); }),
        "OutOfRangeError [Qor.Tivor.Data2DChannel] Out of bounds index of 1 for Height data channel with size of 1");
    EXPECT_EQ(
        ErrorOf([&] { set.GetData1DChannel("Height")->GetKeyForDataAt(7); }),
        "OutOfRangeError [Qor.Tivor.Data1DChannel] Out of bounds index of 7 for Height data channel with size of 1");
    EXPECT_EQ(set.GetData1DChannel("Phase"), nullptr);
    EXPECT_EQ(set.ToString(), "DataSet of 1 surface and 1 profile");
}

TEST(DataChannels, AreMadeOfContainers) {
    DataContainer items, config;
    for (const char* const key : {"a", "b", "c"})
        items.Put(key, MakeData(*Surface(*key == 'b' ? "Phase" : "Height")));
    items.PutValue("number", 1);
    config.PutValue("Mine", std::vector<std::string>{"c", "gone", "number", "a"});
    Data2DChannel growing("Height", "own", Surface("Height"));
    growing.AddData("null", nullptr);
    growing.AddData(items);
    const auto listed = std::make_unique<Data2DChannel>("Mine", items, config);
    const auto none = std::make_unique<Data2DChannel>("None", items, config);
    const auto ofKind = std::make_unique<Data2DChannel>("Height", items, true);
    const auto all = std::make_unique<Data2DChannel>("Height", items, false);
    const std::pair<const Data2DChannel*, std::vector<std::string>> rows[] = {{&growing, {"own", "a", "b", "c"}},
                                                                              {listed.get(), {"c", "a"}},
                                                                              {none.get(), {}},
                                                                              {ofKind.get(), {"a", "c"}},
                                                                              {all.get(), {"a", "b", "c"}}};
    for (const auto& [channel, keys] : rows) {
        DataContainer stored;
        channel->StoreConfig(stored);
        ASSERT_EQ(stored.NumDataObjects(), 1u);
        EXPECT_EQ(Data2DChannel::ReadConfig(stored, stored.begin()->key), keys);
        EXPECT_EQ(channel->GetSize(), keys.size());
    }
}

TEST(DataSets, AreCopiedSharedAndCloned) {
    ForeignSet foreign;
    DataSet own(Surface("Height"), "s");
    own.MetaData().PutValue(sDATASET_NAME, "name");
    const std::function<DataSet(DataSet&)> ways[] = {
        [](DataSet& set) { return DataSet(set); },
        [](DataSet& set) { return DataSet(static_cast<IDataSet&>(set)); },
        [&](DataSet&) { return DataSet(foreign); },
        [](DataSet& set) { return set.Clone(); },
        [](DataSet& set) { return DataSet(std::move(set)); },
        [](DataSet& set) {
            DataSet target(Surface("Phase"), "former");
            target = set;
            return target;
        },
    };
    for (const auto& way : ways) {
        const bool isForeign = &way == &ways[2], isClone = &way == &ways[3];
        DataSet source(own);
        const auto surface = isForeign ? foreign.GetData2D("s") : source.GetData2D("s");
        DataSet copy = way(source);
        EXPECT_EQ(TellChannels(copy), "Height: s; ");
        EXPECT_EQ(copy.GetData2D("s") == surface, !isClone);
        EXPECT_EQ(copy.MetaData().GetValue<std::string>(sDATASET_NAME).value_or("none"), isForeign ? "none" : "name");
        copy.StoreData(Surface("Phase"), "t");
        copy.MetaData().PutValue(sDATASET_NAME, "other");
        EXPECT_EQ(TellChannels(source), &way == &ways[4] ? "" : "Height: s; ");
        EXPECT_EQ(source.MetaData().Exists("2D_Channels"), &way != &ways[4]);
    }
}

// What one thread stores, others put, remove and make another kind, while somebody goes through the channels.
TEST(DataSetThreads, ChannelsFollowAllOfThem) {
    constexpr int rounds = 300;
    DataSet set;
    const auto items = set.GetAllData2DItems();
    Core::Testing::OnThreads(4, [&](int thread) {
        for (int i = 0; i < rounds; ++i) {
            const std::string key = std::to_string(thread) + '/' + std::to_string(i % 7);
            const char* const kind = i % 3 == 0 ? "Height" : "Phase";
            if (thread == 0) {
                set.StoreData(Surface(kind), key);
                const auto channel = set.GetData2DChannel(kind);
                EXPECT_TRUE(channel && channel->GetSize() != 0 && channel->GetDataAt(0));
            } else if (i % 5 == 0) {
                items->Remove(key);
            } else if (const auto present = items->GetPtr<Data2D>(key); present && i % 2 == 0) {
                present->SetDataKind(kind);
            } else {
                items->Put(key, MakeData(*Surface(kind)));
            }
        }
    });
    EXPECT_EQ(TellChannels(set).find("another"), std::string::npos);
    EXPECT_EQ(ListedKeys<Data2D>(set), ItemKeys<Data2D>(*items));
    for (const auto& [kind, keys] : ChannelsOf<Data2D>(set))
        for (const std::string& key : keys)
            EXPECT_EQ(set.GetData2D(key)->GetDataKind(), kind);
    DataSet again(*set.GetContent()->Clone());
    EXPECT_EQ(TellChannels(again), TellChannels(set));
}

} // namespace Qor::Tivor::Testing
