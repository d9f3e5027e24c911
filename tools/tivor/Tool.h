#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace Qor::Tivor::Tool {

/// Runs the program with the arguments that follow its name; returns its exit status: 0 fine, 1 something deviates or
/// could not be read or kept, 2 an error, and then nothing is printed to `out`, unless it is about some files of a
/// folder only. On a terminal, `err` shows how far long work is.
int RunTool(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err,
            bool isErrTerminal = false);

} // namespace Qor::Tivor::Tool
