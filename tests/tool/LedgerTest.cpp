// What a conversion tells of that which it did not keep, and what it is asked to choose.
#include "ToolFixture.h"

#include <QorCore/System.h>
#include <Tivor/DataFile.h>
#include <Tivor/DataSet.h>

namespace Qor::Tivor::Testing {

namespace {

class LedgerTest : public ToolTest {
protected:
    template <class T>
    static std::shared_ptr<Data2D> Surface(const std::vector<T>& samples, const std::string& kind,
                                           const UnitizedDouble& scale) {
        RowMajorMatrix<T> matrix(1, samples.size());
        std::copy(samples.begin(), samples.end(), matrix.data());
        const auto surface = Data2D::Create(MakeData(std::move(matrix)));
        surface->SetFixedSpacing(UnitizedDouble(1e-6, "Meter"), UnitizedDouble(1e-6, "Meter"));
        surface->SetDataKind(kind);
        surface->SetDataScale(scale);
        return surface;
    }
    void Save(DataSet set) const {
        const auto saved = DataFile::Open(file, DataFile::eREAD_WRITE, DataFile::eCREATE_ALWAYS, "", nullptr);
        set.StoreDataSet(*saved);
        saved->Flush();
    }
    void Save(const std::shared_ptr<Data2D>& surface) const { Save(DataSet(surface, "S")); }

    /// The ledger's entries as "kind place: text".
    Words Ledger(const std::string& target, const Words& options = {}) const {
        Words words{"convert", "--json", file, Name(target), "--force"};
        words.insert(words.end(), options.begin(), options.end());
        const Outcome outcome = RunWords(words);
        Words entries;
        if (outcome.status == 2)
            return {outcome.err};
        const Json converted = Json::parse(outcome.out)["converted"][0];
        for (const Json& entry : converted["ledger"])
            entries.push_back(entry["kind"].get<std::string>() + ' ' + entry["place"].get<std::string>() + ": " +
                              entry["text"].get<std::string>());
        EXPECT_EQ(outcome.status, entries.empty() ? 0 : 1) << target;
        return entries;
    }
};

const UnitizedDouble metres(1, "Meter");
const double third = 1.0 / 3;

} // namespace

TEST_F(LedgerTest, TellsWhatBecameOfTheSamples) {
    const std::string retyped = "retyped S: samples of double are written as float";
    const std::string differ = " of 3 samples differ, by at most 9.93e-09 m";
    const std::int64_t wide = (std::int64_t{1} << 53) + 1;
    const struct {
        std::shared_ptr<Data2D> surface;
        std::string target;
        Words options;
        Words expected;
    } rows[] = {
        {Surface<float>({1, NAN, 2}, "Height", metres), "x.gsf", {}, {}},
        {Surface<double>({third, NAN, 2}, "Height", metres),
         "x.gsf",
         {},
         {"rounded S: 1 of 3 samples are rounded to 32-bit floats in \"Meter\"; 1" + differ, retyped}},
        {Surface<double>({third, NAN, 2}, "Height", metres),
         "x.dataset",
         {"--type", "float"},
         {retyped, "rounded S: 1" + differ}},
        {Surface<float>({1, 2}, "Height", UnitizedDouble(2, "Meter")),
         "x.gsf",
         {},
         {"rescaled S: the scale 2 m is written as 1 m"}},
        {Surface<std::int64_t>({wide, -1}, "Height", metres),
         "x.qordml",
         {"--type", "double"},
         {"retyped S: samples of int64 are written as double", "rounded S: 1 of 2 samples differ, by at most 1 m"}},
        {Surface<double>({-32768, 32767}, "Height", metres),
         "x.dataset",
         {"--type", "int16"},
         {"retyped S: samples of double are written as int16"}},
        {Surface<float>({1}, "Height", metres), "x.dataset", {"--type", "float"}, {}},
        {Surface<double>({1, 2}, "Height", metres),
         "x.sdf",
         {},
         {"retyped S: a surface of a single row is a profile to the format's readers"}},
        {Surface<float>({1}, "Phase", metres),
         "x.gsf",
         {},
         {"dropped S: the format does not say what kind of data it holds; this is \"Phase\""}},
    };
    for (const auto& [surface, target, options, expected] : rows) {
        Save(surface);
        EXPECT_EQ(Ledger(target, options), expected);
    }
}

TEST_F(LedgerTest, RefusesSamplesThatATypeDoesNotHave) {
    const struct {
        std::vector<double> samples;
        std::string type, said;
    } rows[] = {
        {{1, 0.5}, "int16", "S, row 0, column 1: expected a sample that int16 has exactly, found 0.5"},
        {{32768}, "int16", "found 32768"},
        {{-1}, "uint8", "found -1"},
        {{NAN}, "int32", "found nan"},
        {{18446744073709551616.0}, "uint64", "found 18446744073709551616"},
        {{1e39}, "float", "expected a sample that float has, found 1e+39"},
        {{1}, "real", "Expected one of the element types int8, uint8,"},
    };
    for (const auto& [samples, type, said] : rows) {
        Save(Surface<double>(samples, "Height", metres));
        ExpectError({"convert", file, Name("x.dataset"), "--type", type}, said);
        EXPECT_FALSE(Core::PathName(Name("x.dataset")).Exists());
    }
}

TEST_F(LedgerTest, SavesNothingStrictlyThatLosesSomething) {
    Save(Surface<double>({third}, "Height", metres));
    ExpectError({"convert", file, Name("x.gsf"), "--strict"}, "found 1 retyped, 1 rounded; nothing is saved");
    EXPECT_FALSE(Core::PathName(Name("x.gsf")).Exists());
    EXPECT_EQ(RunWords({"convert", file, Name("x.qordml"), "--strict"}).status, 0);

    Core::System::MakeDirectories(Core::PathName(Name("from")));
    for (const char* const name : {"from/a.dataset", "from/b.dataset"})
        WriteFileText(directory / name, ReadFileText(Core::PathName(file)));
    const Outcome folder = RunWords({"convert", Name("from"), Name("to"), "--to", "gsf"});
    EXPECT_EQ(folder.status, 1) << folder.err;
    EXPECT_TRUE(folder.out.ends_with("kind\tentries\ndropped\t0\nretyped\t2\nrounded\t2\nrescaled\t0\n")) << folder.out;
    EXPECT_EQ(RunWords({"convert", Name("from"), Name("to2"), "--to", "gsf", "--strict"}).status, 2);
    EXPECT_FALSE(Core::PathName(Name("to2/a.gsf")).Exists());
}

TEST_F(LedgerTest, KeepsTheChannelsThatAreWanted) {
    DataSet set(Surface<float>({1}, "Height", metres), "H");
    set.StoreData(Surface<float>({2}, "Intensity", metres), "I");
    set.StoreData(Surface<float>({3}, "Intensity", metres), "J");
    Save(set);
    EXPECT_EQ(Ledger("x.dataset", {"--channel", "Intensity"}), Words());
    const auto kept = DataFile::Open(Name("x.dataset"), DataFile::eREAD_ONLY, DataFile::eOPEN_EXISTING, "", nullptr);
    DataSet read(*kept);
    EXPECT_EQ(read.GetNumData2DItems(), 2u);
    std::unordered_set<std::string> names;
    read.GetData2DChannels(names);
    EXPECT_EQ(names, std::unordered_set<std::string>({"Intensity"}));
    EXPECT_EQ(read.MetaData().GetPtr<std::string>(DataSet::sPRIMARY_2D_DATA_KEY) != nullptr, true);
    EXPECT_EQ(*read.MetaData().GetPtr<std::string>(DataSet::sPRIMARY_2D_DATA_KEY), "I");
    EXPECT_EQ(Ledger("y.gsf", {"--channel", "Height", "--strict"}), Words());
    EXPECT_EQ(Ledger("z.dataset", {"--channel", "H", "--channel", "J"}), Words());
    ExpectError({"convert", file, Name("w.dataset"), "--channel", "Phase"},
                "channel or the key Phase, found 2D_Data/H (Height), 2D_Data/I (Intensity), 2D_Data/J (Intensity)");
}

TEST_F(LedgerTest, ShowsProgressOnATerminalOnly) {
    Save(Surface<float>({1}, "Height", metres));
    Core::System::MakeDirectories(Core::PathName(Name("from")));
    WriteFileText(directory / "from/a.dataset", ReadFileText(Core::PathName(file)));
    for (const bool isTerminal : {false, true}) {
        std::ostringstream out, err;
        EXPECT_EQ(
            Tool::RunTool({"convert", Name("from"), Name("to"), "--to", "qordml", "--force"}, out, err, isTerminal), 0);
        EXPECT_EQ(err.str().starts_with("\r1 of 1: "), isTerminal);
        EXPECT_EQ(err.str().ends_with(" \r"), isTerminal);
        EXPECT_EQ(err.str().empty(), !isTerminal);
    }
}

} // namespace Qor::Tivor::Testing
