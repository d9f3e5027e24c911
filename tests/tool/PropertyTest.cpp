// Properties of measured arrays, set and shown, and what is told of plug-ins.
#include "ToolFixture.h"

#include <Tivor/DataFileTypeManager.h>
#include <Tivor/DataSet.h>

namespace Qor::Tivor::Testing {

namespace {

class PropertyTest : public ToolTest {
protected:
    void SetUp() override {
        const auto saved = DataFile::Open(file, DataFile::eREAD_WRITE, DataFile::eCREATE_ALWAYS, "", nullptr);
        DataSet set(Data2D::Create(MakeData(RowMajorMatrix<float>(2, 3))), "S");
        set.StoreData(Data2D::Create(MakeData(RowMajorMatrix<float>(2, 3))), "T");
        set.StoreDataSet(*saved);
        saved->Flush();
    }
    static Words Behind(const Words& property) {
        Words words{"2D_Data", "S"};
        words.insert(words.end(), property.begin(), property.end());
        return words;
    }
};

} // namespace

TEST_F(PropertyTest, AreSetByTextsNumbersAndUnits) {
    const struct {
        Words set;
        std::string shown;
    } rows[] = {
        {{"DataKind", "Height"}, "Height"},
        {{"Origin", "Lower Left"}, "Lower Left"},
        {{"Origin", "3"}, "Lower Right"},
        {{"DataScale", "1 um"}, "1 um"},
        {{"DataScale", "1e-6 m"}, "1e-06 m"},
        {{"DataScale", "2.5 Millimeter"}, "2.5 mm"},
        {{"DataScale", "3"}, "3"},
        {{"Aspect", "0.5"}, "0.5"},
        {{"Operator", "me"}, "me"},
        {{"Count", "7", "--type", "int32"}, "7"},
        {{"Count", "8"}, "8"},
    };
    for (const auto& [set, shown] : rows) {
        Say("set", Behind(set));
        EXPECT_EQ(Say("get", Behind({set[0]})), shown + '\n');
    }
    EXPECT_EQ(SayJson("get", Behind({}))["Origin"], "Lower Right");
    EXPECT_EQ(SayJson("get", Behind({"Origin"})), "Lower Right");
    EXPECT_NE(Say("get").find("Origin: Lower Right\n"), std::string::npos);
    const Json change = SayJson("set", Behind({"Origin", "Upper Left"}));
    EXPECT_EQ(change["before"], "Lower Right");
    EXPECT_EQ(change["after"], "Upper Left");
    EXPECT_EQ(SayJson("get", {"MetaData", "2D_Channels"}),
              Json({{"Unknown", {"T"}}, {"Height", {"S"}}})); // follows the kind
    EXPECT_EQ(SayJson("get", {"2D_Data"}).begin().key(), "S");
    Say("set", {"MetaData", "Step", "1 um", "--type", "UnitizedValue"});
    EXPECT_EQ(Say("get", {"MetaData", "Step"}), "1 um\n");
}

TEST_F(PropertyTest, AreRefusedWithWhatWasExpected) {
    const std::string before = ReadFileText(Core::PathName(file));
    const struct {
        Words set;
        std::string said;
    } rows[] = {
        {{"Origin", "Top"}, "2D_Data/S/Origin: expected one of Upper Left, Lower Left, Upper Right, Lower Right, or"},
        {{"Origin", "4"}, "or the number of one, found 4"},
        {{"DataScale", "1 parsnip"}, "2D_Data/S/DataScale: Expected a number, or a number, a blank and a unit"},
        {{"DataScale", "much"}, "found much"},
        {{"Version", "2"}, "2D_Data/S/Version: expected a property that can be set, found one that can only be read"},
        {{"Matrix", "2"}, "2D_Data/S/Matrix: expected a property that can be set"},
        {{"DataKind", "Height", "--type", "double"}, "expected an entry of class double, found a AsciiString"},
        {{"Aspect", "wide"}, "2D_Data/S/Aspect: Expected a number in the range of float"},
        {{"Aspect", "x", "1"}, "2D_Data/S/Aspect: expected a container or a measured array, found a float"},
    };
    for (const auto& [set, said] : rows) {
        Words words{"set", file};
        const Words behind = Behind(set);
        words.insert(words.end(), behind.begin(), behind.end());
        ExpectError(words, said);
    }
    EXPECT_EQ(ReadFileText(Core::PathName(file)), before);
}

TEST_F(PropertyTest, PlugInsThatWereRefusedAreTold) {
    const auto plugIns = [](int status) {
        const Outcome outcome = RunWords({"plugins", "--json"});
        EXPECT_EQ(outcome.status, status) << outcome.out;
        return Json::parse(outcome.out);
    };
    const Json before = plugIns(0);
    EXPECT_EQ(before["loaded"], before["found"]);
    EXPECT_TRUE(before["searched"][0]["path"].get<std::string>().ends_with("DataFiles"));
    std::set<std::string> types;
    for (const Json& type : before["fileTypes"])
        types.insert(type["name"].get<std::string>());
    EXPECT_TRUE(types.contains("X3P") && !types.contains("QOR Binary Data File"));
    WriteFileText(directory / "Broken.dll", "no library");
    DataFileTypeManager::Instance().LoadPlugIn(Name("Broken.dll"));
    const Json after = plugIns(1);
    EXPECT_EQ(after["plugIns"].back()["outcome"], "not loaded");
    EXPECT_NE(after["plugIns"].back()["reason"], "");
    EXPECT_NE(RunWords({"plugins"}).out.find("Broken.dll: not loaded, "), std::string::npos);
}

} // namespace Qor::Tivor::Testing
