#pragma once

namespace Qor::Core {

/// Calls back when the running thread ends, with thread-local memory in whatever state it is by then. At most one call
/// for each thread; of the main thread when the program ends, or not at all. False: there
/// is no memory, and no call to come.
bool AtThreadEnd(void (*callback)(void*), void* argument) noexcept;

} // namespace Qor::Core
