#include "Dialogue.h"

#include "Comparison.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Bench {

namespace {

struct Pipe {
    Pipe() { Require(pipe2(ends, O_CLOEXEC) == 0, "no pipe can be made"); }

    int ends[2] = {-1, -1};
};

} // namespace

Dialogue::Dialogue(const std::string& command) {
    const Pipe input, output;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input.ends[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output.ends[1], STDOUT_FILENO);
    const std::string line = "exec " + command;
    const char* const arguments[] = {"sh", "-c", line.c_str(), nullptr};
    const int status =
        posix_spawn(&m_process, "/bin/sh", &actions, nullptr, const_cast<char* const*>(arguments), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(input.ends[0]);
    close(output.ends[1]);
    m_to.reset(fdopen(input.ends[1], "w"));
    m_from.reset(fdopen(output.ends[0], "r"));
    Require(status == 0 && m_to && m_from, "no shell can be started");
}

Dialogue::~Dialogue() {
    m_to.reset(); // its end
    waitpid(m_process, nullptr, 0);
}

void Dialogue::Say(const std::string& line) {
    std::fputs((line + '\n').c_str(), m_to.get());
    Require(std::fflush(m_to.get()) == 0, "a program does not listen");
}

std::string Dialogue::Hear() {
    std::string line;
    int c = 0;
    while ((c = std::fgetc(m_from.get())) != EOF && c != '\n')
        line += static_cast<char>(c);
    Require(c == '\n', "a program does not answer");
    return line;
}

} // namespace Bench
