// The programs that users are shown, run as they stand.
#include <QorCore/PathName.h>

#include <gtest/gtest.h>

#include <RunProgram.h>
#include <TemporaryDirectory.h>
#include <sstream>
#include <string>

namespace Qor::Tivor::Testing {

using namespace Core::Testing;

namespace {

const Core::PathName project(TIVOR_PROJECT);

/// That the code that the page shows stands in the example.
void ExpectBlocksOf(const char* pageName, const char* sourceName) {
    const std::string source = ReadFileText(project / sourceName);
    const std::string page = ReadFileText(project / pageName);
    const std::string open = "```cpp\n";
    int numBlocks = 0;
    for (std::size_t at = page.find(open); at != std::string::npos; at = page.find(open, at + 1), ++numBlocks) {
        const std::size_t begin = at + open.size();
        const std::string block = page.substr(begin, page.find("```\n", begin) - begin);
        EXPECT_NE(source.find(block), std::string::npos) << block;
    }
    EXPECT_GT(numBlocks, 3);
}

void ExpectOutputOf(const std::string& example, const TemporaryDirectory& directory, const std::string& output) {
    const auto outcome = RunProgram(directory.GetPath(), example);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, output);
}

} // namespace

TEST(FirstProgram, StandsInTheReadmeAndRuns) {
    const std::string source = ReadFileText(project / "examples/first_program.cpp");
    EXPECT_NE(ReadFileText(project / "README.md").find("```cpp\n" + source + "```\n"), std::string::npos);
    const TemporaryDirectory directory;
    ExpectOutputOf("first_program", directory, "6 heights, x in µm\n");
}

TEST(TypedValues, ComeBackWithTheirTypes) {
    const TemporaryDirectory directory;
    ExpectOutputOf("typed_values", directory,
                   "measured until 2024-01-31T12:34:58.6234567Z with objective 50x by Emmy\n"
                   "spacing 0.5 um, that is 500 nm; 1000 of them: 0.5 mm\n"
                   "profile: 3 samples, sum 0.5\n"
                   "heights: 2 x 3, the last one 12\n"
                   "the spacing is no plain float\n");
}

TEST(InstrumentSettings, AreGuardedSavedAndRestored) {
    const TemporaryDirectory directory;
    ExpectOutputOf("instrument_settings", directory,
                   "one by one:\n"
                   "  Objective: now 50x, was 10\n"
                   "  Range: now 250 um, was 0.1 mm\n"
                   "exposure refused: Expected an exposure above 0 ms, found -1\n"
                   "range refused: Attempted to set the Range property to a value with invalid units of Second\n"
                   "together:\n"
                   "  Exposure: now 8, was 4\n"
                   "  Objective: now 10x, was 50\n"
                   "Camera\n  Exposure (ms) = 8 *\n  Serial number = C-17 (fixed)\n"
                   "Optics\n  Objective = 10x\n"
                   "Stage\n  Scan range = 250 um *\n"
                   "QOR Binary Data File: the same\nQOR XML Data File: the same\n"
                   "restored:\n"
                   "  Exposure: now 4, was 8\n"
                   "  Range: now 0.1 mm, was 250 um\n"
                   "changed since: no\n");
    ExpectBlocksOf("docs/properties.md", "examples/instrument_settings.cpp");
}

TEST(MeasuredSurface, KeepsWhatBelongsTogether) {
    const TemporaryDirectory directory;
    ExpectOutputOf("measured_surface", directory,
                   "Height, 12 points, 1 missing, from 0 to 23, mean 11.4545\n"
                   "the highest one: 46 nm\n"
                   "the last one: 23 at 1 um, 0.75 um\n"
                   "row 1: xx-x\n"
                   "turned and cut: 10 0 above 11 1, 0.25 um x 0.5 um\n"
                   "7 at 0 mm\n9 at 0.1 mm\n8 at 0.4 mm\n");
    ExpectBlocksOf("docs/measured-arrays.md", "examples/measured_surface.cpp");
}

TEST(DataSetOfAWafer, IsReadByChannelsAndCut) {
    const TemporaryDirectory directory;
    ExpectOutputOf("data_set", directory,
                   "wafer.dataset: Wafer 7\n"
                   "  Height, before: 3 x 4, first 0\n"
                   "  Height, after: 3 x 4, first 100\n"
                   "  Intensity, camera: 3 x 4, first 200\n"
                   "  Surface Profile, trace: 3 points\n"
                   "block.qordml: Wafer 7\n"
                   "  Height, Primary2D: 2 x 2, first 6\n"
                   "  Height, after: 2 x 2, first 106\n"
                   "  Intensity, camera: 2 x 2, first 206\n"
                   "  Surface Profile, trace: 3 points\n");
    ExpectBlocksOf("docs/data-sets.md", "examples/data_set.cpp");
    const auto tree = RunProgram(directory.GetPath(), "tivor", {"ls", "wafer.dataset"});
    std::istringstream lines(tree.output);
    std::string shown;
    for (std::string line; std::getline(lines, line);)
        shown += "    " + line + '\n';
    EXPECT_GT(shown.size(), 1000u);
    EXPECT_NE(ReadFileText(project / "docs/data-sets.md").find(shown + '\n'), std::string::npos) << shown;
}

TEST(MeasurementFile, IsKeptCutTurnedAndHandedOn) {
    const TemporaryDirectory directory;
    const auto outcome =
        RunProgram(directory.GetPath(), "measurement_file", {TIVOR_PROJECT "/data/bullet_sample-land.x3p"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(outcome.output.find("measured by Sensofar:\n"
                                  "  Data2D of 256 x 918 double, 2.58e-06 m x 2.58e-06 m, 25292 points missing\n"
                                  "kept.dataset is the same\nkept.qordml is the same\n"
                                  "  Data2D of 400 x 150 double, 2.58e-06 m x 2.58e-06 m, 45 points missing\n"
                                  "  Data2D of 400 x 150 double, 2.58e-06 m x 2.58e-06 m, 45 points missing\n"
                                  "turned.x3p has the same samples\n"),
              std::string::npos)
        << outcome.output;
}

} // namespace Qor::Tivor::Testing
