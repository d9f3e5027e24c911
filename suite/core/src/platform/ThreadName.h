#pragma once

#include <string>

namespace Qor::Core {

/// Gives the running thread a name (UTF-8) for debuggers, as much of it as the system takes.
void SetThreadName(const std::string& name) noexcept;

} // namespace Qor::Core
