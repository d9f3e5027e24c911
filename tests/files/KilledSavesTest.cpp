#include "Platform.h"
#include "RunProgram.h"
#include "TemporaryDirectory.h"
#include "TestedTypes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <random>

namespace Qor::Tivor::Testing {

namespace {

using namespace Core::Testing;

/// TIVOR_TEST_KILLS=100000 in the environment makes a night of it.
int NumberOfKills() {
    const char* const number = std::getenv("TIVOR_TEST_KILLS");
    return number != nullptr ? std::atoi(number) : 40;
}

std::string FileOf(const TestedType& type, const std::string& text) {
    DataContainer container;
    container.PutValue("n", static_cast<int>(text.size()));
    container.GetSubData({"nested"}, true)->PutValue("text", text);
    return type.fileOf(container);
}

} // namespace

class KilledSaves : public testing::TestWithParam<std::tuple<TestedType, std::size_t>> {};

TEST_P(KilledSaves, LeaveOneOfTheTwoContents) {
    if (isWindows)
        GTEST_SKIP() << "there, so many programs take too long to start";
    const auto& [type, size] = GetParam();
    const TemporaryDirectory sources;
    const TemporaryDirectory directory;
    const Core::PathName path = directory / "data.bin";
    const std::string contents[] = {FileOf(type, std::string(size, 's')), FileOf(type, std::string(2 * size, 'l'))};
    std::vector<std::string> arguments = {path.ToString()};
    for (const std::string& content : contents) {
        arguments.push_back((sources / std::to_string(content.size())).ToString());
        WriteFileText(Core::PathName(arguments.back()), content);
    }
    WriteFileText(path, contents[0]);
    std::mt19937 random(7);
    std::uniform_int_distribution<int> delay_us(2'000, 10'000);
    int found[2] = {0, 0};
    int interrupted = 0;
    for (int kills = 0; kills < NumberOfKills() && !HasFailure(); ++kills) {
        arguments.resize(3);
        arguments.push_back(std::to_string(1 + kills % 2));
        arguments.push_back(std::to_string(delay_us(random)));
        const ProgramOutcome outcome = RunProgram(directory.GetPath(), "KilledSaverProgram", arguments);
        EXPECT_EQ(outcome.status, 9) << outcome.output;
        const std::string now = ReadFileText(path);
        const auto* const which = std::find(std::begin(contents), std::end(contents), now);
        ASSERT_NE(which, std::end(contents)) << "kill " << kills << " left " << now.size() << " bytes";
        ++found[which - contents];
        // The first save of each process removes what the one before left.
        const std::size_t names = directory.GetNames().size();
        EXPECT_LE(names, 2u);
        interrupted += names == 2 ? 1 : 0;
    }
    EXPECT_TRUE(found[0] != 0 && found[1] != 0) << "only one content was ever found";
    EXPECT_NE(interrupted, 0) << "no save was ever interrupted";
    const auto file = type.open(path.ToString(), DataFile::eREAD_WRITE, DataFile::eOPEN_EXISTING, nullptr);
    file->PutValue("more", 1);
    file->Flush();
    EXPECT_EQ(directory.GetNames(), std::vector<std::string>{"data.bin"});
}

INSTANTIATE_TEST_SUITE_P(, KilledSaves,
                         testing::Combine(testing::ValuesIn(testedTypes),
                                          testing::Values<std::size_t>(1'000, 200'000)));

} // namespace Qor::Tivor::Testing
