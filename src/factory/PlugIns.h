#pragma once

#include <Tivor/DataObjectFactory.h>

#include <functional>
#include <mutex>
#include <unordered_map>

namespace Qor::Tivor {

/// The plug-in libraries that were loaded, by the name that was asked for.
class TIVOR_LOCAL DataObjectFactory::PlugIns {
public:
    using EntryPoint = std::shared_ptr<DataObject> (*)(const std::string& className, const std::string& version);

    /// The entry point of the library; null, with the reason, when it cannot be had. Loads it at most once; failures
    /// are not remembered, since the next attempt may find it.
    EntryPoint Find(const std::string& module, const std::function<std::string()>& systemError, std::string& failure);

    bool IsLoaded(const std::string& module) const;
    std::string GetLastError() const;
    void KeepError(const std::string& text);

private:
    // Recursive: a library's initialisation runs while it is held, and may need other plug-ins.
    mutable std::recursive_mutex m_mutex;
    std::unordered_map<std::string, EntryPoint> m_entryPoints;
    std::string m_lastError;
};

} // namespace Qor::Tivor
