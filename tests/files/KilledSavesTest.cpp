#include "AlternatingContent.h"
#include "TemporaryDirectory.h"
#include "TestedTypes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <random>
#include <thread>

#if __has_include(<sys/wait.h>)
#include <csignal>
#include <sys/wait.h>
#include <unistd.h>
#define TIVOR_TEST_CAN_KILL
#endif

namespace Qor::Tivor::Testing {

class KilledSaves : public testing::TestWithParam<std::tuple<TestedType, std::size_t>> {};

#ifdef TIVOR_TEST_CAN_KILL

namespace {

using namespace Core::Testing;

/// The program that saves; killed at the end.
class Saver {
public:
    Saver(const std::string& file, std::size_t size) {
        int ends[2] = {-1, -1};
        EXPECT_EQ(pipe(ends), 0);
        m_output = ends[0];
        const std::string program = TIVOR_TEST_PROGRAMS "/KilledSaverProgram";
        const std::string number = std::to_string(size);
        m_process = fork();
        if (m_process == 0) {
            dup2(ends[1], STDOUT_FILENO);
            execl(program.c_str(), program.c_str(), file.c_str(), number.c_str(), nullptr);
            _exit(1);
        }
        m_started = m_process > 0;
        close(ends[1]);
    }
    Saver(const Saver&) = delete;
    Saver& operator=(const Saver&) = delete;
    ~Saver() {
        if (m_started)
            Kill();
        close(m_output);
    }

    /// Waits for as many saves; false when one failed.
    bool HasSaved(int saves) const {
        char letter = 0;
        while (m_started && saves > 0 && read(m_output, &letter, 1) == 1)
            saves -= letter == '\n' ? 1 : 0;
        return saves == 0;
    }

    /// Whether it was alive till now.
    bool Kill() {
        int status = 0;
        kill(m_process, SIGKILL);
        waitpid(m_process, &status, 0);
        m_started = false;
        return WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
    }

private:
    pid_t m_process = 0;
    int m_output = -1;
    bool m_started = false;
};

/// TIVOR_TEST_KILLS=100000 in the environment makes a night of it.
int NumberOfKills() {
    const char* const number = std::getenv("TIVOR_TEST_KILLS");
    return number != nullptr ? std::atoi(number) : 200;
}

std::string FileWithAlternative(const TestedType& type, std::size_t size, bool longer) {
    DataContainer container;
    FillWithAlternative(container, size, longer);
    return type.fileOf(container);
}

} // namespace

TEST_P(KilledSaves, LeaveOneOfTheTwoContents) {
    const auto& [type, size] = GetParam();
    const TemporaryDirectory directory;
    const Core::PathName path = directory / "data.bin";
    const std::string contents[] = {FileWithAlternative(type, size, false), FileWithAlternative(type, size, true)};
    WriteFileText(path, contents[0]);
    std::mt19937 random(7);
    std::uniform_int_distribution<int> delay_us(2'000, 10'000);
    int found[2] = {0, 0};
    int interrupted = 0;
    for (int kills = 0; kills < NumberOfKills() && !HasFailure(); ++kills) {
        Saver saver(path.ToString(), size);
        ASSERT_TRUE(saver.HasSaved(1 + kills % 2)); // however slow it is, before either content
        std::this_thread::sleep_for(std::chrono::microseconds(delay_us(random)));
        EXPECT_TRUE(saver.Kill());
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

#else

TEST_P(KilledSaves, LeaveOneOfTheTwoContents) { GTEST_SKIP() << "Processes cannot be killed on this platform"; }

#endif

INSTANTIATE_TEST_SUITE_P(, KilledSaves,
                         testing::Combine(testing::ValuesIn(testedTypes),
                                          testing::Values<std::size_t>(1'000, 200'000)));

} // namespace Qor::Tivor::Testing
