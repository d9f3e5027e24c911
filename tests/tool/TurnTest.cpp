// Surfaces turned, flipped and cut by the tool; what the operations do is tested with the library.
#include "ToolFixture.h"

#include <Tivor/BinaryDataFile.h>
#include <Tivor/Data2D.h>

#include <complex>
#include <iomanip>
#include <iterator>

namespace Qor::Tivor::Testing {

namespace {

std::shared_ptr<Data2D> Surface() {
    RowMajorMatrix<int> matrix(2, 3);
    for (int i = 0; i < 6; ++i)
        matrix.data()[i] = i + 1;
    const auto surface = Data2D::Create(MakeData(matrix));
    surface->SetFixedSpacing(UnitizedDouble(1, "Millimeter"), UnitizedDouble(2, "Millimeter"));
    surface->SetOrigin(Data2D::eLOWER_LEFT);
    surface->SetProperty("Operator", MakeData(std::string("Emmy")));
    return surface;
}

std::string HashOf(const RowMajorMatrix<double>& matrix) {
    std::uint64_t hash = 0xCBF29CE484222325;
    const auto* const bytes = reinterpret_cast<const unsigned char*>(matrix.data());
    for (std::size_t i = 0; i < matrix.size() * sizeof(double); ++i)
        hash = (hash ^ bytes[i]) * 0x100000001B3;
    std::ostringstream text;
    text << std::hex << std::setfill('0') << std::setw(16) << hash;
    return text.str();
}

std::shared_ptr<Data2D> SurfaceIn(const std::string& name) {
    const BinaryDataFile opened(name, DataFile::eREAD_ONLY, DataFile::eOPEN_EXISTING, nullptr);
    return std::const_pointer_cast<Data2D>(opened.GetPtr<const Data2D>("Surface"));
}

} // namespace

// What numpy makes of it, by make_turned.py.
TEST_F(ToolTest, TurnsAMeasuredSurfaceAsOthersDo) {
    std::istringstream lines(ReadFileText(Core::PathName(TIVOR_TEST_DATA "/turned/turned.txt")));
    ASSERT_EQ(RunWords({"import", surfaceText.ToString(), Name("surface")}).status, 0);
    std::size_t numLines = 0;
    for (std::string line; std::getline(lines, line); ++numLines) {
        SCOPED_TRACE(line);
        std::istringstream columns(line);
        std::string source, size1, size2, hash;
        columns >> source >> size1 >> size2 >> hash;
        Words words{std::istream_iterator<std::string>(columns), {}};
        words.insert(words.begin() + 1, {Name(source), Name(numLines == 0 ? "block" : "turned"), "--force"});
        const Outcome outcome = RunWords(words);
        ASSERT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_EQ(outcome.out.find("left out"), std::string::npos) << outcome.out;
        const auto turned = SurfaceIn(words[2]);
        const auto samples = turned->GetContent()->GetPtr<RowMajorMatrix<double>>("Matrix");
        EXPECT_EQ(std::to_string(samples->size1()) + ' ' + std::to_string(samples->size2()), size1 + ' ' + size2);
        EXPECT_EQ(HashOf(*samples), hash);
        EXPECT_NE(outcome.out.find("\n  -> " + size1 + " x " + size2 +
                                   " double, spacing 0.0390625 um x 0.0390625 um, "
                                   "kind ZSensor, scale 1 m, no points missing\n"),
                  std::string::npos)
            << outcome.out;
    }
    EXPECT_EQ(numLines, 17u);
}

TEST_F(ToolTest, TurnsSurfaces) {
    {
        BinaryDataFile made(file, DataFile::eREAD_WRITE, DataFile::eCREATE_NEW, nullptr);
        made.PutValue("Text", "stays");
        made.Put("One", ValueTraits<Data2D>::MakeData(Surface()));
        made.GetSubData({"Below"}, true)->Put("Two", ValueTraits<Data2D>::MakeData(Surface()));
        made.Flush();
    }
    const struct {
        Words words;
        std::string one, two, positions;
    } rows[] = {
        {{"rotate"}, "4\t1\n5\t2\n6\t3\n", "4\t1\n5\t2\n6\t3\n", "2 mm x 1 mm"},
        {{"rotate", "--by", "180"}, "6\t5\t4\n3\t2\t1\n", "6\t5\t4\n3\t2\t1\n", "1 mm x 2 mm"},
        {{"rotate", "--by", "270", "One"}, "3\t6\n2\t5\n1\t4\n", "1\t2\t3\n4\t5\t6\n", "2 mm x 1 mm"},
        {{"flip", "--along", "1", "One"}, "4\t5\t6\n1\t2\t3\n", "1\t2\t3\n4\t5\t6\n", "1 mm x 2 mm"},
        {{"flip", "--along", "2"}, "3\t2\t1\n6\t5\t4\n", "3\t2\t1\n6\t5\t4\n", "1 mm x 2 mm"},
        {{"transpose", "Below", "Two"}, "1\t2\t3\n4\t5\t6\n", "1\t4\n2\t5\n3\t6\n", "1 mm x 2 mm"},
        {{"crop", "--dim2", "1:"}, "2\t3\n5\t6\n", "2\t3\n5\t6\n", "1 mm x 2 mm"},
        {{"crop", "--dim1", ":1", "--dim2", "0:2", "Below"}, "1\t2\t3\n4\t5\t6\n", "1\t2\n", "1 mm x 2 mm"},
    };
    const std::string source = std::exchange(file, Name("turned.qordml"));
    for (const auto& [words, one, two, positions] : rows) {
        Words all{words[0], source, file, "--force"};
        all.insert(all.end(), words.begin() + 1, words.end());
        SCOPED_TRACE(testing::PrintToString(words));
        const Outcome outcome = RunWords(all);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_NE(outcome.out.find("  left out: Aspect, Origin, Operator\n"), std::string::npos) << outcome.out;
        EXPECT_EQ(Say("get", {"One", "Matrix"}), one);
        EXPECT_EQ(Say("get", {"Below", "Two", "Matrix"}), two);
        EXPECT_NE(Say("ls", {"One"}).find(positions), std::string::npos) << Say("ls", {"One"});
        EXPECT_EQ(Say("get", {"Text"}), "stays\n");
    }
    const Json told = Json::parse(RunWords({"crop", "--json", source, file, "--force", "--dim2", "3:", "One"}).out);
    EXPECT_EQ(told["surfaces"][0]["path"], Json({"One"}));
    EXPECT_EQ(told["surfaces"][0]["after"]["axes"][1]["points"], 0);
    EXPECT_EQ(told["surfaces"][0]["leftOut"].size(), 6u); // the positions, too
    {
        BinaryDataFile made(source, DataFile::eREAD_WRITE, DataFile::eOPEN_EXISTING, nullptr);
        const auto complex = Data2D::Create(MakeData(RowMajorMatrix<std::complex<double>>(1, 1)));
        made.GetSubData({"Below"}, true)->Put("Complex", ValueTraits<Data2D>::MakeData(complex));
        made.Flush();
    }
    const std::pair<Words, const char*> refusals[] = {
        {{"rotate", source, source}, "found the one that is read"},
        {{"rotate", source, file}, "--force replaces it"},
        {{"rotate", source, file, "--force", "--by", "45"}, "Expected 90, 180 or 270 behind --by, found 45"},
        {{"flip", source, file, "--force", "--along", "3"}, "Expected dimension 1 or 2 behind --along, found 3"},
        {{"crop", source, file, "--force", "--dim1", "1-2"}, "Expected a range as 10:20, 10: or :20, found 1-2"},
        {{"crop", source, file, "--force", "--dim1", "0:9"}, "Expected ranges within 2 x 3 points"},
        {{"crop", source, file, "--force", "--dim1", "2:1"}, "Surface: One"},
        {{"crop", source, file, "--force"}, "Expected a range behind --dim1, --dim2 or both, found neither"},
        {{"transpose", source, directory.GetPath().ToString(), "--force"},
         "expected the name of a file, found a folder"},
        {{"transpose", Name("none"), file, "--force"}, "found no file of that name"},
        {{"transpose", source, file, "--force", "Text"}, "expected a surface at Text or below, found none"},
        {{"transpose", source, file, "--force", "Below"}, "Below/Complex: expected samples that are real numbers"},
        {{"transpose", source, file, "--force", "None"}, "no such key"}};
    const std::string before = ReadFileText(Core::PathName(file));
    for (const auto& [words, said] : refusals)
        ExpectError(words, said);
    EXPECT_EQ(ReadFileText(Core::PathName(file)), before);
    EXPECT_EQ(directory.GetNames(), Words({"data.dataset", "turned.qordml"}));
}

} // namespace Qor::Tivor::Testing
