#pragma once

#include <QorCore/PathName.h>

#include <string>
#include <vector>

namespace Qor::Core::Testing {

struct ProgramOutcome {
    int status = -1;
    std::string output; ///< what it wrote to both of its streams
};

/// Runs a program in a directory, and waits for its end: one of the tests' by its name, others by their paths, which
/// find the libraries under test. Arguments have no quotes in them.
ProgramOutcome RunProgram(const PathName& directory, const std::string& program,
                          const std::vector<std::string>& arguments = {});

} // namespace Qor::Core::Testing
