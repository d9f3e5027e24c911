// A container as a data set, whatever it is laid out as, and every stored set in it. What a set says of itself agrees,
// and so does the set that is stored and loaded again.

#include "Agreement.h"
#include "Channels.h"

#include <Tivor/Codec.h>
#include <Tivor/Data2DOperation.h>

using namespace Qor::Tivor;

namespace {

template <class Item>
void RequireSameItems(IDataSet& set, IDataSet& again, const DataContainer& items, std::uint64_t count) {
    const auto keys = Testing::ItemKeys<Item>(items);
    Require(Testing::ListedKeys<Item>(set) == keys && keys.size() == count, "an item is not in one channel");
    Require(Testing::ChannelsOf<Item>(again) == Testing::ChannelsOf<Item>(set), "other channels are loaded again");
}

void RequireSameSet(IDataSet& set, IDataSet& again) {
    RequireSameItems<Data2D>(set, again, *set.GetAllData2DItems(), set.GetNumData2DItems());
    RequireSameItems<Data1D>(set, again, *set.GetAllData1DItems(), set.GetNumData1DItems());
}

void CheckSet(IDataSet& set) {
    std::string key;
    const auto primary = set.GetPrimaryData2D();
    Require((primary != nullptr) == (set.GetNumData2DItems() != 0), "there is no primary surface");
    Require(primary == nullptr || (set.GetPrimaryData2DKey(key) && set.GetData2D(key) == primary),
            "another primary surface");
    DataContainer stored;
    set.StoreDataSet(stored);
    Require(DataSet::IsDataSetFormat(stored), "what is stored has another format");
    DataSet again;
    again.LoadDataSet(stored);
    RequireSameSet(set, again);
    stored.PutValue("set", again);
    RequireBinaryAgreement(stored);
    RequireSameSet(set, *stored.GetPtr<DataSet>("set"));
    DataContainer encoded;
    Require(Encode(set, encoded, DataSet::sFORMAT), "it is not encoded");
    RequireSameSet(set, *Decode(encoded.Clone(), ""));
}

void CheckSetAndPart(IDataSet& set) {
    CheckSet(set);
    std::shared_ptr<DataSet> part;
    try {
        part = CreateSubregion(set, 0, 1, 0, 1);
    } catch (const Qor::Core::OutOfRangeError&) {
        return;
    } catch (const Qor::Core::AssertionError& error) { // of a surface that has another matrix than it tells
        return Require(error.GetText() == "spInputMatrix", "another assertion");
    }
    CheckSet(*part);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const BareModules limits;
    const auto container = ReadBinaryFile({reinterpret_cast<const std::byte*>(data), size});
    if (!container)
        return 0;
    try {
        CheckSetAndPart(*Decode(container->Clone(), ""));
    } catch (const NoCodecFound&) {
        // of a format that is not served
    }
    CheckSetAndPart(*DefaultDecode(*container->Clone()));
    CheckSetAndPart(*DataSet::Create(*container->Clone()));
    const auto copy = container->Clone();
    for (const auto& entry : *copy)
        if (const auto set = copy->GetPtr<DataSet>(entry.key))
            CheckSetAndPart(*set);
    return 0;
}
