#include "ChangedKeys.h"

#include <utility>

namespace Qor::Tivor {

namespace {

// Many changes share the costs of a look at everything, which is then cheap.
constexpr std::size_t mostKeys = 1024;

} // namespace

void ChangedKeys::Note(const std::string& key) {
    const std::lock_guard guard(m_mutex);
    if (!m_changes.all && (m_changes.keys.empty() || m_changes.keys.back() != key)) {
        if (m_changes.keys.size() < mostKeys)
            m_changes.keys.push_back(key);
        else
            m_changes = {true, {}};
    }
    m_hasAny.store(true, std::memory_order_release);
}

void ChangedKeys::NoteAll() {
    const std::lock_guard guard(m_mutex);
    m_changes = {true, {}};
    m_hasAny.store(true, std::memory_order_release);
}

ChangedKeys::Changes ChangedKeys::Take() {
    const std::lock_guard guard(m_mutex);
    m_hasAny.store(false, std::memory_order_relaxed);
    return std::exchange(m_changes, {});
}

} // namespace Qor::Tivor
