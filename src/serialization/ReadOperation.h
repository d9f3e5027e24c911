#pragma once

#include <QorCore/Context.h>

#include <map>
#include <string>
#include <utility>

namespace Qor::Tivor {

/// The outermost reading operation of a thread: which plug-ins have failed it, so that a stream that names them often
/// costs one attempt each, and one that names many costs `ReadLimits::failingModules` attempts.
class ReadOperation {
public:
    ReadOperation() : m_outer(Core::Context::Current().reading) {
        if (m_outer == nullptr)
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

private:
    void* m_outer;
    std::map<std::string, std::string> m_failures;
};

} // namespace Qor::Tivor
