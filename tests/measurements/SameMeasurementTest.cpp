// One measurement in the formats of others: compared, hashed and checked as what it means.
#include <Tivor/Data2D.h>
#include <Tivor/DataFile.h>

#include <set>
#include <tool/ToolFixture.h>

namespace Qor::Tivor::Testing {

namespace {

const std::string bullet = TIVOR_PROJECT "/data/bullet_sample-land.x3p";
const std::string millimetres = TIVOR_PROJECT "/data/tmd_testing.x3p";

} // namespace

using SameMeasurementTest = ToolTest;

TEST_F(SameMeasurementTest, HasOneHashInEveryFileType) {
    const std::string expected = "e7fde05210b98ee6a6de4d6f593b69b2  Surface\n7e1973e5f95ca31aa63ab2927731262a  all\n";
    EXPECT_EQ(RunWords({"hash", bullet}).out, expected);
    std::string from = bullet;
    for (const char* const name : {"a.dataset", "a.qordml", "a.x3p", "b.dataset"}) {
        EXPECT_NE(RunWords({"convert", from, Name(name)}).status, 2) << name;
        from = Name(name);
        EXPECT_EQ(RunWords({"hash", from}).out, expected) << name;
        EXPECT_EQ(RunWords({"diff", bullet, from, "--data"}).out, "") << name;
    }
    const auto made = DataFile::Open(file, DataFile::eREAD_WRITE, DataFile::eCREATE_NEW, "", nullptr);
    RowMajorMatrix<float> heights(2, 3);
    for (std::size_t i = 0; i < 6; ++i)
        heights.data()[i] = 1e-7F * static_cast<float>(i);
    const auto surface = Data2D::Create(MakeData(heights));
    surface->SetDataScale({1, "Meter"});
    surface->SetFixedSpacing({0.5, "Micrometer"}, {0.7, "Micrometer"});
    made->Put("Surface", ValueTraits<Data2D>::MakeData(surface));
    made->Flush();
    made->Close(); // so that others may open it, on each system
    for (const char* const name : {"float.x3p", "float.gsf", "float.sdf"}) {
        EXPECT_NE(RunWords({"convert", file, Name(name)}).status, 2) << name;
        EXPECT_EQ(RunWords({"hash", Name(name)}).out, Say("hash")) << name;
    }
}

TEST_F(SameMeasurementTest, TellsOnceWhatIsImplausible) {
    const Outcome outcome = RunWords({"check", "--json", millimetres});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "");
    std::multiset<std::string> kinds;
    for (const Json& finding : Json::parse(outcome.out))
        kinds.insert(finding["kind"].get<std::string>() + " at " + finding["place"].get<std::string>());
    EXPECT_EQ(kinds.count("implausible at Surface"), 2u) << outcome.out;
    EXPECT_EQ(kinds.size(), 6u) << outcome.out;
    RunWords({"convert", millimetres, file});
    EXPECT_EQ(Json::parse(Run("check", {"--json"}).out).size(), 2u);
}

} // namespace Qor::Tivor::Testing
