// How the texts of measured surfaces and profiles become data files.
#include "ToolFixture.h"

#include <Tivor/BinaryDataFile.h>
#include <Tivor/Data1D.h>
#include <Tivor/MatrixView.h>

#include <charconv>

namespace Qor::Tivor::Testing {

namespace {

std::shared_ptr<Data1D> ProfileIn(const std::string& fileName) {
    BinaryDataFile read(fileName, DataFile::eREAD_ONLY, DataFile::eOPEN_EXISTING, nullptr);
    return read.GetPtr<Data1D>("Profile");
}

} // namespace

TEST_F(ToolTest, SaysWhatIsWrongWithAText) {
    const std::string header = "# Channel: Z\n# Width: 2 um\n# Height: 2 um\n# Value units: m\n";
    const struct {
        std::string text, said;
    } rows[] = {
        {header + "1\t2\n3\tx4\n", "line 6: expected a number, found \"x4\""},
        {header + "1\t2\t3\n4\t\t6\n", "line 6: expected a number, found \"\""},
        {header + "1\t2\n3\t4\t5\n", "line 6: expected 2 numbers as in the first row, found 3"},
        {header, "line 4: expected rows of numbers, found none up to the end of the file"},
        {"# Channel: Z\n# Width: wide\n", "line 2: expected a length as a number, found \"wide\""},
        {"# Channel\n", "line 1: expected a header line \"# Name: text\", found no colon"},
        {"# Channel: Z\n1\t2\n", "expected a header line \"# Width: ...\", found none"},
        {"1 2 3\n4 5 6\n", "or lines of two numbers as those of a profile, found no header, and lines of 3 numbers"},
    };
    for (const auto& [text, said] : rows) {
        WriteFileText(directory / "bad.txt", text);
        ExpectError({"import", Name("bad.txt"), file}, said);
    }
    EXPECT_EQ(directory.GetNames(), Words{"bad.txt"});
    WriteFileText(directory / "odd.txt", "# Channel: Z\n# Width: 3 nm\n# Height: 1\n# Value units: furlong\n1\tinf\n");
    const Outcome odd = RunWords({"import", Name("odd.txt"), file});
    EXPECT_EQ(odd.err, "tivor: warning: The unit furlong is not known; its numbers stay plain numbers\n");
    EXPECT_NE(odd.out.find("1 x 2 double, spacing 1 x 1.5 nm, kind Z, scale 1, 1 point missing"), std::string::npos);
}

// A spacing takes the place of the positions only where it tells them to the last digit of the text.
TEST_F(ToolTest, KeepsThePositionsOfATextThatNoSpacingTells) {
    const struct {
        std::string text;
        double spacing; ///< 0: the positions
    } rows[] = {
        {"0.0 5\n0.5 5\n1.0 5\n", 0.5},
        {"0.00 5\n 0.33 \t5\n0.67 5\n1.00 5\n", 0.334},
        {"0 5\r\n1.000000e-1 5\r\n2.000000E-01 5\r\n", 0.1},
        {"0 5\n-2.00 5\n-4.00 5\n", -2},
        {"0 5\n1 5\n2 5\n3 5\n", 1},
        {"0 5\n1 5\n2 5\n4 5\n", 0}, // digits too coarse to call 1.2 their spacing
        {"0.00 5\n0.33 5\n0.68 5\n1.00 5\n", 0},
        {"0.02 5\n0.50 5\n1.00 5\n", 0}, // begins elsewhere
        {"0.00 5\n0.00 5\n0.00 5\n", 0},
        {"0.00 5\nnan 5\n0.50 5\n", 0},
        {"0.00 5\n", 0},
    };
    for (const auto& [text, spacing] : rows) {
        WriteFileText(directory / "profile.txt", text);
        EXPECT_EQ(RunWords({"import", Name("profile.txt"), file, "--force"}).status, 0) << text;
        EXPECT_EQ(RunWords({"import", Name("profile.txt"), file, "--check"}).status, 0) << text;
        const auto profile = ProfileIn(file);
        UnitizedDouble found;
        ASSERT_EQ(profile->GetPositionFunction()->SpacingIsFixed() && profile->GetFixedSpacing(found), spacing != 0)
            << text;
        EXPECT_EQ(found, UnitizedDouble(spacing)) << text;
    }
    ASSERT_EQ(RunWords({"import", profileText.ToString(), file, "--force"}).status, 0);
    const auto positions = ProfileIn(file)->GetPositionFunction();
    std::istringstream lines(ReadFileText(profileText));
    std::uint64_t count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        char text[32];
        const double position = positions->GetPosition(count).GetValue();
        const auto end = std::to_chars(text, text + sizeof text, position, std::chars_format::fixed, 6).ptr;
        ASSERT_EQ(std::string(text, end), line.substr(0, 8)) << count;
    }
    EXPECT_EQ(count, 10001u);
}

TEST_F(ToolTest, TellsWhereASurfaceIsAnotherOne) {
    ASSERT_EQ(RunWords({"import", surfaceText.ToString(), file}).status, 0);
    {
        // What is known of this surface, independently of what stored it.
        BinaryDataFile read(file, DataFile::eREAD_ONLY, DataFile::eOPEN_EXISTING, nullptr);
        const MatrixView<const double> samples(std::as_const(*read.GetPtr<Data2D>("Surface")));
        EXPECT_EQ(samples(0, 0), 1.8823e-08);
        EXPECT_EQ(samples(0, 255), 1.7899e-07);
        EXPECT_EQ(samples(128, 85), -1.4726e-08);
        EXPECT_EQ(samples(255, 0), 8.2126e-09);
        EXPECT_EQ(read.GetSubData({"Comments", "Source"}, false)->GetValue<std::string>("Width"), "10.00 µm");
    }
    std::string changed = ReadFileText(surfaceText);
    changed[changed.rfind("542e-008")] = '6';
    changed.replace(changed.find("Width: 10"), 9, "Width: 20");
    WriteFileText(directory / "changed.txt", changed);
    const Outcome other = RunWords({"import", Name("changed.txt"), file, "--check"});
    EXPECT_EQ(other.status, 1);
    EXPECT_EQ(
        other.out,
        "Surface/Matrix, row 255, column 255: the text has -7.5642e-08, the file -7.5542e-08\n"
        "Surface/Aspect: the text has 2, the file 1\n"
        "Surface/PositionFunction: the text has 0.0390625 um x 0.078125 um, the file 0.0390625 um x 0.0390625 um\n"
        "Surface/Dimension2Extent: the text has 19.921875 um, the file 9.9609375 um\n"
        "Comments/Source/Width: the text has 20.00 \xC2\xB5m, the file 10.00 \xC2\xB5m\n"
        "5 deviations\n");
    EXPECT_EQ(Json::parse(RunWords({"import", Name("changed.txt"), file, "--check", "--json"}).out)["numDeviations"],
              5);
    EXPECT_EQ(RunWords({"import", Name("changed.txt"), file, "--force"}).status, 0);
    EXPECT_EQ(RunWords({"import", Name("changed.txt"), file, "--check"}).status, 0);
    const Outcome profile = RunWords({"import", profileText.ToString(), file, "--check"});
    EXPECT_EQ(profile.status, 1);
    EXPECT_EQ(profile.out, "Profile: the file has no such entry\n1 deviation\n");
}

} // namespace Qor::Tivor::Testing
