#pragma once

#include <ostream>

namespace CLI {
class App;
}

namespace Qor::Tivor::Tool {

/// The manual page of a program, for the command `man`: what `--help` tells of it and of each command.
void WriteManualPage(const CLI::App& program, std::ostream& out);

/// A script that completes commands, options and names of files in bash.
void WriteCompletion(const CLI::App& program, std::ostream& out);

} // namespace Qor::Tivor::Tool
