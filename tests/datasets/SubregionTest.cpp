#include "Alerts.h"
#include "Sets.h"
#include "StoredBytes.h"

#include <Tivor/CollectionSerialization.h>
#include <Tivor/Data2DOperation.h>
#include <Tivor/MatrixView.h>

#include <gtest/gtest.h>

#include <complex>
#include <list>
#include <sstream>

namespace Qor::Tivor::Testing {

namespace {

using Core::Testing::RaisedBy;
using Core::Testing::Warnings;

/// A surface whose samples are 10 i + j.
std::shared_ptr<Data2D> Grid(std::size_t rows, std::size_t columns, const std::string& kind) {
    RowMajorMatrix<int> matrix(rows, columns);
    for (std::size_t i = 0; i < rows; ++i)
        for (std::size_t j = 0; j < columns; ++j)
            matrix(i, j) = static_cast<int>(10 * i + j);
    auto surface = Data2D::Create(MakeData(std::move(matrix)));
    surface->SetDataKind(kind);
    return surface;
}

/// Each word is an item "key=kind" of 4 x 5 points; of complex numbers for the kind "Complex", and no surface for none.
DataSet SetOf(const std::string& items) {
    DataSet set;
    std::istringstream words(items);
    for (std::string word; words >> word;) {
        const std::string key = word.substr(0, word.find('='));
        const std::string kind = word.substr(key.size() + 1);
        auto surface = Grid(4, 5, kind);
        if (kind == "Complex")
            surface->SetMatrixDataObject(MakeData(RowMajorMatrix<std::complex<double>>(4, 5)));
        if (kind.empty())
            set.AllData2D().PutValue(key, 7);
        else
            set.StoreData(surface, key);
    }
    return set;
}

std::string PrimaryOf(const IDataSet& set) {
    std::string key = "none";
    set.GetPrimaryData2DKey(key);
    return key;
}

/// Stores what it has, without copying it.
class SharingSet final : public ForeignSet {
public:
    using ForeignSet::ForeignSet;
    void StoreDataSet(DataContainer& container) override {
        container.Put(sMETA_DATA, GetMetaData());
        container.Put(DataSet::s2D_DATA, GetAllData2DItems());
        container.Put(DataSet::s1D_DATA, GetAllData1DItems());
    }
};

/// Names a channel that it does not have.
class NamingSet final : public ForeignSet {
public:
    void GetData2DChannels(std::unordered_set<std::string>& names) override { names.insert("Ghost"); }
};

std::string StoredForm(IDataSet& set) {
    DataContainer container;
    set.StoreDataSet(container);
    return Stored(container);
}

} // namespace

TEST(DataSetSubregions, KeepKeysAndChannels) {
    const std::string omitting = "OmittingSurface [Qor.Tivor.DataSet.CreateSubregion] The surface <x>, a Data2D of 4 x "
                                 "5 complex, cannot be cut, and is left out";
    const struct {
        const char *items, *primary, *keys, *channels, *newPrimary;
        bool omits = false;
    } rows[] = {
        {"a=H b=H c=P", "b", "a Primary2D c ", "H: a Primary2D; P: c; ", "Primary2D"},
        {"a=H b=P", "gone", "Primary2D b ", "H: Primary2D; P: b; ", "Primary2D"},
        {"n= a=H", "", "n Primary2D ", "H: Primary2D; ", "Primary2D"},
        {"n= a=H", "n", "n Primary2D ", "H: Primary2D; ", "Primary2D"},
        {"", "gone", "", "", "none"},
        {"n=", "n", "n ", "", "none"},
        {"a=H Primary2D=H", "Primary2D", "a Primary2D ", "H: a Primary2D; ", "Primary2D"},
        {"Primary2D=H a=H", "a", "Primary2D_2 Primary2D ", "H: Primary2D_2 Primary2D; ", "Primary2D"},
        {"Primary2D_2=H Primary2D=H a=P", "a", "Primary2D_2 Primary2D_3 Primary2D ",
         "H: Primary2D_2 Primary2D_3; P: Primary2D; ", "Primary2D"},
        {"Primary2D= a=H", "a", "Primary2D_2 Primary2D ", "H: Primary2D; ", "Primary2D"},
        {"a=H x=Complex b=H", "b", "a Primary2D ", "H: a Primary2D; ", "Primary2D", true},
        {"x=Complex a=H", "x", "a ", "H: a; ", "none", true},
        {"x=Complex a=H", "", "a ", "H: a; ", "none", true},
        {"Primary2D=H x=Complex", "x", "Primary2D_2 ", "H: Primary2D_2; ", "none", true},
    };
    for (const auto& [items, primary, keys, channels, newPrimary, omits] : rows) {
        SCOPED_TRACE(std::string(items) + ", " + primary);
        DataSet own = SetOf(items);
        if (*primary != '\0')
            own.SetPrimaryData2DKey(primary);
        ForeignSet foreign(own);
        SharingSet sharing(own.Clone());
        for (IDataSet* const source :
             {static_cast<IDataSet*>(&own), static_cast<IDataSet*>(&foreign), static_cast<IDataSet*>(&sharing)}) {
            const std::string before = StoredForm(*source);
            const Warnings warnings;
            const auto result = CreateSubregion(*source, 1, 3, 2, 5);
            EXPECT_EQ(Keys(result->AllData2D()), keys);
            EXPECT_EQ(TellChannels(*result), channels);
            EXPECT_EQ(TellChannels(*std::make_unique<DataSet>(*result->GetContent()->Clone())), channels);
            EXPECT_EQ(PrimaryOf(*result), newPrimary);
            EXPECT_EQ(warnings.Tell(), std::vector<std::string>(omits ? 1 : 0, omitting));
            for (const auto& entry : result->AllData2D())
                if (const auto surface = result->GetData2D(entry.key)) {
                    const MatrixView<const int> view(*surface);
                    EXPECT_EQ(std::vector(view.GetElements().begin(), view.GetElements().end()),
                              (std::vector{12, 13, 14, 22, 23, 24}));
                } else {
                    EXPECT_EQ(result->AllData2D().GetValue<int>(entry.key), 7);
                }
            EXPECT_TRUE(StoredForm(*source) == before);
            EXPECT_TRUE(DataSet::IsDataSetFormat(*result->GetContent()));
        }
    }
}

TEST(DataSetSubregions, BelieveWhatIsListed) {
    DataContainer stored;
    SetOf("a=H b=H c=P x=Complex").StoreDataSet(stored);
    const auto config = stored.GetSubData({"MetaData", "2D_Channels"}, false);
    config->Clear();
    config->PutValue("Mine", std::list<std::string>{"c", "a"});
    config->PutValue("Complex only", std::list<std::string>{"x"});
    const Warnings warnings;
    const auto result = CreateSubregion(DataSet(stored), 0, 1, 0, 1);
    EXPECT_EQ(TellChannels(*result), "H: b; Mine: c Primary2D; ");
    EXPECT_EQ(Keys(*result->GetContent()->GetSubData({"MetaData", "2D_Channels"}, false)), "Mine H ");
}

TEST(DataSetSubregions, ShareProfilesAndCopyMetaData) {
    DataSet own = SetOf("a=H b=H");
    own.StoreData(Profile("Height"), "p");
    own.MetaData().GetSubData({"Deep"}, true)->PutValue("Operator", "Emmy");
    own.GetContent()->PutValue("Extra", 1);
    SharingSet sharing(own.Clone());
    for (IDataSet* const source : {static_cast<IDataSet*>(&own), static_cast<IDataSet*>(&sharing)}) {
        const std::string before = StoredForm(*source);
        const auto result = CreateSubregion(*source, 0, 2, 0, 2);
        EXPECT_EQ(Keys(*result->GetContent()), "MetaData 2D_Data 1D_Data ");
        EXPECT_EQ(result->GetData1D("p"), source->GetData1D("p"));
        EXPECT_EQ(result->GetData1DChannel("Height")->GetKeyForDataAt(0), "p");
        const auto deep = result->MetaData().GetSubData({"Deep"}, false);
        EXPECT_EQ(deep->GetValue<std::string>("Operator"), "Emmy");
        *deep->GetPtr<std::string>("Operator") = "Lise";
        result->MetaData().PutValue(sDATASET_NAME, "block");
        result->StoreData(Surface("P"), "b");
        result->StoreData(Profile("P"), "q");
        DataSet copy(*source);
        copy.StoreData(Surface("P"), "b");
        copy.SetPrimaryData2DKey("other");
        MatrixView<int> (*result->GetData2D("Primary2D"))(0, 0) = 99;
        EXPECT_TRUE(StoredForm(*source) == before);
    }
}

TEST(DataSetSubregions, LieWithinEverySurface) {
    DataSet set = SetOf("large=H");
    set.StoreData(Grid(3, 4, "H"), "small");
    set.StoreData(Surface("H"), "smallest");
    const std::string before = Stored(*set.GetContent());
    const struct {
        std::uint64_t begin1, end1, begin2, end2;
        const char* key;
    } rows[] = {{0, 3, 0, 4, "smallest"}, {0, 4, 0, 4, "small"}, {0, 1, 4, 5, "small"},
                {2, 5, 0, 1, "large"},    {1, 0, 0, 1, "large"}, {0, 1, 0, ~0ull, "large"}};
    for (const auto& [begin1, end1, begin2, end2, key] : rows) {
        SCOPED_TRACE(testing::Message() << begin1 << ' ' << end1 << ' ' << begin2 << ' ' << end2);
        const auto error = RaisedBy<Core::OutOfRangeError>(
            [&, b1 = begin1, e1 = end1, b2 = begin2, e2 = end2] { CreateSubregion(set, b1, e1, b2, e2); });
        EXPECT_EQ(error.GetVariable("Key"), key);
        EXPECT_TRUE(Stored(*set.GetContent()) == before);
        EXPECT_NO_THROW(CreateSubregion(DataSet(), begin1, end1, begin2, end2));
    }
    EXPECT_EQ(RaisedBy<Core::AssertionError>([] { CreateSubregion(NamingSet(), 0, 1, 0, 1); }).GetText(),
              "(spData2D != nullptr)");
    const auto empty = CreateSubregion(set, 2, 2, 0, 1);
    EXPECT_EQ(TellChannels(*empty), "H: Primary2D small smallest; ");
    EXPECT_EQ(empty->GetPrimaryData2D()->ToString(), "Data2D of 0 x 1 int32");
}

} // namespace Qor::Tivor::Testing
