#pragma once

#include <mutex>

namespace Qor::Tivor {

/// The leaf mutex of whatever lives at an address. All share a few mutexes, so that what is never shared pays nothing.
/// While one is held, nothing else is locked or called.
std::mutex& LeafMutexOf(const void* address);

} // namespace Qor::Tivor
