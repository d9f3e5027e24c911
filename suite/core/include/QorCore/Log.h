#pragma once

#include <QorCore/Export.h>

#include <functional>
#include <string>

namespace Qor::Core {

/// Receives the lines of the log: a dotted category and the text. Called by any thread, several at once; must not
/// throw.
using LogSink = std::function<void(const std::string& category, const std::string& text)>;

/// Installs the receiver of the log for the whole process and returns the one before. At start there is none, and
/// lines are dropped.
QOR_CORE_API LogSink SetLogSink(LogSink sink);

/// Writes one line to the log.
QOR_CORE_API void Log(const std::string& category, const std::string& text);

} // namespace Qor::Core
