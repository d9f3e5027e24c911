#pragma once

#include <QorCore/PathName.h>

#include <memory>
#include <string>

namespace Qor::Core {

/// A shared library that is loaded as long as this object, or another one for the same library, lives.
///
/// Thread rule: may be used by any number of threads.
class QOR_CORE_API SystemLibrary {
public:
    /// Loads a library, or finds it loaded; an empty pointer on failure. A name without a directory is looked for
    /// beside the executable, then by the system's rules. The library's initialisation runs within the call.
    static std::shared_ptr<SystemLibrary> Load(const PathName& name) {
        std::string failure;
        return Load(name, failure);
    }
    /// The same; on failure gives the system's text for it.
    static std::shared_ptr<SystemLibrary> Load(const PathName& name, std::string& failure);

    SystemLibrary(const SystemLibrary&) = delete;
    SystemLibrary& operator=(const SystemLibrary&) = delete;
    /// Releases the library.
    ~SystemLibrary();

    /// The exported C function of that name, or null.
    void* GetProcAddress(const char* functionName) const;
    bool IsSameAs(const SystemLibrary& other) const { return m_handle == other.m_handle; }

private:
    explicit SystemLibrary(void* handle) : m_handle(handle) {}

    void* m_handle;
};

} // namespace Qor::Core
