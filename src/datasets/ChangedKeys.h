#pragma once

#include <atomic>
#include <mutex>
#include <string>
#include <vector>

namespace Qor::Tivor {

/// The keys of what was changed since somebody last asked.
///
/// Thread rule: any number of threads may note while one asks.
class ChangedKeys {
public:
    struct Changes {
        bool all = false; // too many to be listed
        std::vector<std::string> keys;
    };

    void Note(const std::string& key);
    void NoteAll();
    bool HasAny() const { return m_hasAny.load(std::memory_order_acquire); }
    Changes Take();

private:
    std::mutex m_mutex;
    Changes m_changes;
    std::atomic<bool> m_hasAny{false};
};

} // namespace Qor::Tivor
