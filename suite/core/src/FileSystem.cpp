#include <QorCore/FileSystem.h>

#include <atomic>

namespace Qor::Core {

namespace {

// Null stands for the native one, so that nothing has to be set up at load time.
std::atomic<FileSystem*> replacement{nullptr};

} // namespace

FileSystem::~FileSystem() = default;

FileSystem& FileSystem::Current() {
    FileSystem* const current = replacement.load(std::memory_order_acquire);
    return current != nullptr ? *current : Native();
}

FileSystem::ScopedReplacement::ScopedReplacement(FileSystem& substitute)
    : m_former(replacement.exchange(&substitute, std::memory_order_acq_rel)) {}

FileSystem::ScopedReplacement::~ScopedReplacement() { replacement.store(m_former, std::memory_order_release); }

} // namespace Qor::Core
