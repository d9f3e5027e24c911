#pragma once

#include "ContainerState.h"

#include <unordered_set>

namespace Qor::Tivor {

/// The containers that stand in this one, by entry. Guarded by the nesting mutex.
struct ContainerState::Nesting {
    std::unordered_map<std::uint64_t, std::weak_ptr<ContainerState>> children;
};

/// Who wants to hear of changes.
struct ContainerState::Hearing {
    Core::NotificationSupport listeners;
};

/// The sizes of the entries as they were measured, and the entries to measure again. The stale ones are guarded by the
/// leaf mutex, the rest by the container's.
struct ContainerState::SizeTracking {
    std::unordered_map<std::uint64_t, std::uint64_t> sizes;
    std::uint64_t total = 0;
    std::unordered_set<std::uint64_t> stale;
};

/// Guards who stands in whom, in the whole process. Only leaf mutexes are locked while it is held.
std::recursive_mutex& NestingMutex();

} // namespace Qor::Tivor
