// The programs that users are shown, run as they stand.
#include <Tivor/BinaryDataFile.h>

#include <gtest/gtest.h>

#include <TemporaryDirectory.h>
#include <algorithm>
#include <array>
#include <cstdio>
#include <string>

namespace Qor::Tivor::Testing {

using Core::Testing::ReadFileText;
using Core::Testing::TemporaryDirectory;
using Core::Testing::WriteFileText;

namespace {

const Core::PathName project(TIVOR_PROJECT);
const Core::PathName surfaceText = project / "data/afm_gwyddion_text_export.txt";

struct Outcome {
    bool succeeded = false;
    std::string said;
};

/// Runs one of the example programs in a directory.
Outcome RunExample(const Core::PathName& directory, const std::string& commandLine) {
    const std::string command =
        "cd '" + directory.ToString() + "' && " + TIVOR_TEST_PROGRAMS + "/" + commandLine + " 2>&1";
    Outcome outcome;
    FILE* const program = popen(command.c_str(), "r");
    if (program == nullptr)
        return outcome;
    std::array<char, 4096> piece;
    while (const std::size_t size = std::fread(piece.data(), 1, piece.size(), program))
        outcome.said.append(piece.data(), size);
    outcome.succeeded = pclose(program) == 0;
    return outcome;
}

class Demo : public testing::Test {
protected:
    Outcome RunDemo(const std::string& command, const Core::PathName& text) const {
        return RunExample(directory.GetPath(),
                          "demo_surface " + command + " '" + text.ToString() + "' surface.dataset");
    }

    TemporaryDirectory directory;
};

} // namespace

TEST_F(Demo, CarriesAMeasuredSurfaceFromProcessToProcess) {
    const Outcome written = RunDemo("write", surfaceText);
    ASSERT_TRUE(written.succeeded) << written.said;
    for (int checks = 0; checks < 2; ++checks) {
        const Outcome checked = RunDemo("check", surfaceText);
        EXPECT_TRUE(checked.succeeded) << checked.said;
        EXPECT_NE(checked.said.find("Success: "), std::string::npos) << checked.said;
    }

    // What is known of this surface, independently of the program that stored it.
    BinaryDataFile file((directory / "surface.dataset").ToString(), DataFile::eREAD_ONLY, DataFile::eOPEN_EXISTING,
                        nullptr);
    const auto samples = file.GetPtr<RowMajorMatrix<double>>("Samples");
    ASSERT_TRUE(samples && samples->size1() == 256 && samples->size2() == 256);
    EXPECT_EQ((*samples)(0, 0), 1.8823e-08);
    EXPECT_EQ((*samples)(128, 85), -1.4726e-08);
    EXPECT_EQ((*samples)(255, 0), 8.2126e-09);
    EXPECT_EQ(*std::min_element(samples->data(), samples->data() + samples->size()), -1.6861e-07);
    EXPECT_EQ(*std::max_element(samples->data(), samples->data() + samples->size()), 2.4022e-07);
    EXPECT_EQ(file.GetSubData({"Comments", "Review"}, false)->GetValue<int>("Checks"), 2);
    EXPECT_EQ(file.GetSubData({"Axes", "X"}, false)->GetValue<std::string>("Unit"), "µm");
}

TEST_F(Demo, SaysWhatIsWrongWithAText) {
    const std::string header = "# Channel: Z\n# Width: 2 um\n# Height: 2 um\n# Value units: m\n";
    const struct {
        std::string text;
        std::string said;
    } cases[] = {
        {header + "1\t2\n3\tx4\n", "line 6: expected a height as a number, found \"x4\""},
        {header + "1\t2\n3,5\t4\n", "line 6: expected a height as a number, found \"3,5\""},
        {header + "1\t2\n3\t4\t5\n", "line 6: expected 2 heights as in the first row, found 3"},
        {header + "1\t2\n3\t\n", "line 6: expected 2 heights as in the first row, found 1"},
        {header, "line 4: expected rows of heights, found none up to the end of the file"},
        {"# Channel: Z\n# Width: wide\n", "line 2: expected a length as a number, found \"wide\""},
        {"# Channel\n", "line 1: expected a header line \"# Name: text\", found no colon"},
        {"# Channel: Z\n1\t2\n", "expected a header line \"# Width: ...\", found none"},
    };
    for (const auto& [text, said] : cases) {
        WriteFileText(directory / "bad.txt", text);
        const Outcome outcome = RunDemo("write", directory / "bad.txt");
        EXPECT_FALSE(outcome.succeeded) << text;
        EXPECT_NE(outcome.said.find(said), std::string::npos) << outcome.said << "instead of: " << said;
    }
    EXPECT_FALSE(RunDemo("write", directory / "missing.txt").succeeded);
    EXPECT_FALSE(RunDemo("check", surfaceText).succeeded) << "there is no data file";
}

TEST_F(Demo, FindsOneSampleThatDiffers) {
    ASSERT_TRUE(RunDemo("write", surfaceText).succeeded);
    std::string text = ReadFileText(surfaceText);
    text[text.rfind("542e-008")] = '6';
    WriteFileText(directory / "changed.txt", text);
    const Outcome outcome = RunDemo("check", directory / "changed.txt");
    EXPECT_FALSE(outcome.succeeded);
    EXPECT_NE(outcome.said.find("row 255, column 255"), std::string::npos) << outcome.said;
}

TEST(FirstProgram, StandsInTheReadmeAndRuns) {
    const std::string source = ReadFileText(project / "examples/first_program.cpp");
    EXPECT_NE(ReadFileText(project / "README.md").find("```cpp\n" + source + "```\n"), std::string::npos);
    const TemporaryDirectory directory;
    const Outcome outcome = RunExample(directory.GetPath(), "first_program");
    EXPECT_TRUE(outcome.succeeded);
    EXPECT_EQ(outcome.said, "6 heights, x in µm\n");
}

TEST(TypedValues, ComeBackWithTheirTypes) {
    const TemporaryDirectory directory;
    const Outcome outcome = RunExample(directory.GetPath(), "typed_values");
    EXPECT_TRUE(outcome.succeeded);
    EXPECT_EQ(outcome.said, "measured until 2024-01-31T12:34:58.6234567Z with objective 50x by Emmy\n"
                            "spacing 0.5 um, that is 500 nm; 1000 of them: 0.5 mm\n"
                            "profile: 3 samples, sum 0.5\n"
                            "heights: 2 x 3, the last one 12\n"
                            "the spacing is no plain float\n");
}

} // namespace Qor::Tivor::Testing
