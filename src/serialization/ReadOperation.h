#pragma once

#include <QorCore/Context.h>
#include <Tivor/SerializationManager.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace Qor::Tivor {

/// The outermost reading operation of a thread: which plug-ins have failed it, so that a stream that names them often
/// costs one attempt each, and one that names many costs `ReadLimits::failingModules` attempts; and what it skipped.
class ReadOperation {
public:
    enum EScope { eJOINS, eSTANDS_ALONE };
    class Entry;

    /// Within another operation, one that joins leaves everything to that one.
    explicit ReadOperation(EScope scope = eJOINS) : m_outer(Core::Context::Current().reading) {
        if (m_outer == nullptr || scope == eSTANDS_ALONE)
            Core::Context::Current().reading = this;
    }
    ReadOperation(const ReadOperation&) = delete;
    ReadOperation& operator=(const ReadOperation&) = delete;
    ~ReadOperation() { Core::Context::Current().reading = m_outer; }

    static ReadOperation& Current() { return *static_cast<ReadOperation*>(Core::Context::Current().reading); }

    /// Why the module failed before, or null.
    const std::string* FindFailure(const std::string& module) const {
        const auto found = m_failures.find(module);
        return found != m_failures.end() ? &found->second : nullptr;
    }
    void KeepFailure(const std::string& module, const std::string& reason) { m_failures.emplace(module, reason); }
    std::size_t CountFailures() const { return m_failures.size(); }

    /// The entry that is being read, or that one below it, is skipped.
    void KeepUnread(const DataObjectHeader& header, const std::string& reason,
                    const std::vector<std::string>& below = {}) {
        UnreadEntry entry{{}, header.typeName, header.version, header.module, reason, header.typeCode, header.dataSize};
        for (const std::string* const key : m_path)
            entry.path.push_back(*key);
        entry.path.insert(entry.path.end(), below.begin(), below.end());
        m_unread.push_back(std::move(entry));
    }
    std::vector<UnreadEntry> TakeUnread() { return std::move(m_unread); }

private:
    void* m_outer;
    std::map<std::string, std::string> m_failures;
    std::vector<const std::string*> m_path;
    std::vector<UnreadEntry> m_unread;
};

/// The entry of that key is being read.
class ReadOperation::Entry {
public:
    explicit Entry(const std::string& key) : m_operation(Current()) { m_operation.m_path.push_back(&key); }
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;
    ~Entry() { m_operation.m_path.pop_back(); }

private:
    ReadOperation& m_operation;
};

} // namespace Qor::Tivor
