// How the tool shows measured surfaces and profiles.
#include "ToolFixture.h"

#include <Tivor/BinaryDataFile.h>
#include <Tivor/Data1D.h>
#include <Tivor/Data2D.h>

#include <cmath>

namespace Qor::Tivor::Testing {

TEST_F(ToolTest, CarriesWhatWasMeasured) {
    struct Row {
        std::string text, key, described, statistics;
        std::size_t samples;
    };
    const Row rows[] = {
        {surfaceText.ToString(), "Surface",
         "256 x 256 double, spacing 0.0390625 um x 0.0390625 um, kind ZSensor, scale 1 m, no points missing",
         "samples from -1.6861e-07 to 2.4022e-07, mean -1.87909e-08, rms 3.52229e-08", 65536},
        {profileText.ToString(), "Profile",
         "10001 double, spacing 9.956130815e-05, kind Unknown, scale 1, no points missing",
         "samples from -0.053303 to 0.003775, mean -0.00380682, rms 0.00864185", 10001},
        {unevenProfileText.ToString(), "Profile",
         "134 double, positions from 39.199303 to 1723.8003, kind Unknown, scale 1, no points missing",
         "samples from 166.48382 to 227.8895, mean 187.633, rms 14.0292", 134},
    };
    for (const Row& row : rows)
        for (const char* const name : {"data.dataset", "data.qordml"}) {
            SCOPED_TRACE(row.text + " as " + name);
            file = Name(name);
            const Outcome made = RunWords({"import", row.text, file, "--force"});
            EXPECT_EQ(made.out.rfind(row.key + ": " + row.described + '\n' + row.statistics + "\nWritten: ", 0), 0u)
                << made.out << made.err;
            EXPECT_NE(Say("ls").find("  " + row.described + '\n'), std::string::npos) << Say("ls");
            EXPECT_NE(Say("info").find("Measured:    " + row.key + ": " + row.described + "\n             " +
                                       row.statistics + '\n'),
                      std::string::npos)
                << Say("info");
            const std::string of = (row.key == "Surface" ? "Data2D of " : "Data1D of ") + row.described + '\n';
            EXPECT_EQ(Say("get", {row.key}).rfind(of + row.statistics + '\n', 0), 0u);
            EXPECT_NE(Say("get").find(row.key + ": " + of + "  " + row.statistics + '\n'), std::string::npos);
            EXPECT_EQ(RunWords({"import", row.text, file, "--check"}).out,
                      "All " + std::to_string(row.samples) + " samples are those of the text, bit by bit\n");

            const Json info = SayJson("info");
            EXPECT_EQ(info["largest"]["path"], Json({row.key}));
            EXPECT_EQ(info["fileBytes"], ReadFileText(Core::PathName(file)).size());

            Json before = SayJson("get");
            EXPECT_EQ(Say("set", {"Comments", "Review", "Checks", "1"}), "Comments/Review/Checks, int32: 0 -> 1\n");
            before["Comments"]["Review"]["Checks"] = 1;
            EXPECT_EQ(SayJson("get"), before);
        }
    EXPECT_EQ(directory.GetNames(), Words({"data.dataset", "data.qordml"}));
}

TEST_F(ToolTest, ReadsLargeFilesByTheirHeaders) {
    {
        BinaryDataFile made(file, DataFile::eREAD_WRITE, DataFile::eCREATE_NEW, nullptr);
        made.Put("Surface", MakeData(Data2D(MakeData(RowMajorMatrix<float>(4096, 4096)))));
        made.Flush();
    }
    EXPECT_EQ(Say("ls").find("4096"), std::string::npos) << Say("ls");
    EXPECT_EQ(SayJson("info")["largest"]["path"], Json({"Surface"}));
}

TEST_F(ToolTest, ReachesIntoMeasuredArrays) {
    {
        BinaryDataFile made(file, DataFile::eREAD_WRITE, DataFile::eCREATE_NEW, nullptr);
        ColumnMajorMatrix<float> heights(2, 2);
        for (std::size_t i = 0; i < 4; ++i)
            heights.data()[i] = i == 1 ? NAN : static_cast<float>(i);
        const auto surface = Data2D::Create(MakeData(heights));
        const auto positions = AllocateArray<double>(2);
        positions.get()[0] = 1;
        positions.get()[1] = 4;
        const auto mm = UnitizedDouble(1.0, "Millimeter").GetUnits()->Clone();
        surface->SetPositionFunction(std::make_shared<ArrayPosition2D>(positions, positions, 2, 2, mm, mm));
        made.GetSubData({"a"}, true)->Put("s", ValueTraits<Data2D>::MakeData(surface));
        made.Put("c",
                 ValueTraits<Data2D>::MakeData(Data2D::Create(MakeData(RowMajorMatrix<std::complex<double>>(1, 1)))));
        made.Put("none", ValueTraits<Data1D>::MakeData(Data1D::Create()));
        made.Flush();
    }
    const struct {
        Words keys;
        std::string text, json;
    } rows[] = {
        {{"a", "s", "Matrix"}, "0\t2\nnan\t3\n", R"({"rows":2,"columns":2,"values":[[0.0,2.0],["nan",3.0]]})"},
        {{"a", "s", "DataKind"}, "Unknown\n", "\"Unknown\""},
        {{"a", "s", "Dimension2Points"}, "2\n", "2"},
        {{"a", "s", "PositionFunction"}, "1 mm\n4 mm\n1 mm\n4 mm\n", ""},
        {{"none", "NumPoints"}, "0\n", "0"},
    };
    for (const auto& [keys, text, json] : rows) {
        EXPECT_EQ(Say("get", keys), text);
        EXPECT_TRUE(json.empty() || SayJson("get", keys).dump() == json) << SayJson("get", keys);
    }
    EXPECT_EQ(SayJson("get", {"a", "s", "PositionFunction"})[1]["positions"].dump(), "[1.0,4.0]");
    const std::string listing = Say("ls");
    for (const char* const line :
         {"  2 x 2 float, positions from 1 mm to 4 mm, from 1 mm to 4 mm, kind Unknown, scale 1, 1 point missing\n",
          "  1 x 1 complex, no positions, kind Unknown, scale 1\n",
          "  0 Unknown Type, no positions, kind Unknown, scale 1, no points missing\n"})
        EXPECT_NE(listing.find(line), std::string::npos) << listing;
    const Json measured = SayJson("ls", {"a", "s"})["entries"][0]["measured"];
    EXPECT_EQ(measured["missing"], 1);
    EXPECT_EQ(measured["axes"][0]["last"]["value"], 4);
    EXPECT_EQ(SayJson("info")["measured"][1]["path"], Json({"c"}));
    ExpectError({"get", file, "a", "s", "x"}, "a/s/x: no such key; the keys there: Matrix, ");
    ExpectError({"set", file, "a", "s", "MatrixType", "3"}, "a/s/MatrixType: expected a property that can be set");
}

} // namespace Qor::Tivor::Testing
