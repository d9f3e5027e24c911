#include "PlugIns.h"

#include <QorCore/Modules.h>

namespace Qor::Tivor {

DataObjectFactory::PlugIns::EntryPoint DataObjectFactory::PlugIns::Find(const std::string& module,
                                                                        const std::function<std::string()>& systemError,
                                                                        std::string& failure) {
    const std::lock_guard guard(m_mutex);
    if (const auto known = m_entryPoints.find(module); known != m_entryPoints.end())
        return known->second;
    if (void* const library = Core::LoadModuleNamed(module); library == nullptr) {
        failure = "Call to ::LoadLibrary for " + module + " failed with the error: " + systemError();
    } else if (void* const function = Core::FindModuleFunction(library, "DllDataObjectFactory"); function == nullptr) {
        failure = "Call to ::GetProcAddress() for " + module + " failed to find " +
                  "a data object factory interface function";
    } else {
        const auto entryPoint = reinterpret_cast<EntryPoint>(function);
        m_entryPoints.emplace(module, entryPoint);
        return entryPoint;
    }
    m_lastError = failure;
    return nullptr;
}

bool DataObjectFactory::PlugIns::IsLoaded(const std::string& module) const {
    const std::lock_guard guard(m_mutex);
    return m_entryPoints.contains(module);
}

std::string DataObjectFactory::PlugIns::GetLastError() const {
    const std::lock_guard guard(m_mutex);
    return m_lastError;
}

void DataObjectFactory::PlugIns::KeepError(const std::string& text) {
    const std::lock_guard guard(m_mutex);
    m_lastError = text;
}

} // namespace Qor::Tivor
