#pragma once

#include <QorCore/Export.h>

#include <string>

namespace Qor::Core {

// Libraries that are loaded by the narrow name that the system's loader takes, and never unloaded: data that they made
// may live to the end of the process.
//
// Thread rule: may be used by any number of threads; the error text belongs to the calling thread.

/// Loads a library, or finds it loaded; null on failure. The system's own rules apply to the name. A bare file name is
/// looked for beside the executable first, as Windows does of itself. The library's initialisation runs within the
/// call.
QOR_CORE_API void* LoadModuleNamed(const std::string& name);

/// The exported C function of that name, or null.
QOR_CORE_API void* FindModuleFunction(void* loadedModule, const char* functionName);

/// The system's text for the last failure of these functions on the calling thread.
QOR_CORE_API std::string GetModuleError();

} // namespace Qor::Core
