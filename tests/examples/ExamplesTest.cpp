// The programs that users are shown, run as they stand.
#include <QorCore/PathName.h>

#include <gtest/gtest.h>

#include <TemporaryDirectory.h>
#include <array>
#include <cstdio>
#include <string>

namespace Qor::Tivor::Testing {

using Core::Testing::ReadFileText;
using Core::Testing::TemporaryDirectory;

namespace {

const Core::PathName project(TIVOR_PROJECT);

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

} // namespace

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
