#pragma once

#include <QorCore/Alert.h>
#include <QorCore/FileSystem.h>

namespace Qor::Core {

/// Raises the `IOError` of a failed operation on a file. `attempt` completes "Attempt to ...".
[[noreturn]] void RaiseFileError(const std::string& attempt, const PathName& path, const FileStatus& status,
                                 CodeContext context);

} // namespace Qor::Core
