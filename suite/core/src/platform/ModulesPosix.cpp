#include <QorCore/Modules.h>
#include <QorCore/System.h>
#include <QorCore/SystemLibrary.h>

#include <dlfcn.h>

namespace Qor::Core {

namespace {

std::string& LastError() {
    static thread_local std::string text;
    return text;
}

void* KeepError(void* result) {
    if (result == nullptr) {
        const char* const text = ::dlerror();
        LastError() = text != nullptr ? text : "there is nothing of that name";
    }
    return result;
}

std::string WhereTheLoaderFinds(const std::string& name) {
    if (name.find('/') != std::string::npos)
        return name;
    const PathName beside = System::GetProcessDirectory() / name;
    return beside.IsFile() ? beside.ToString() : name;
}

} // namespace

void* LoadModuleNamed(const std::string& name) {
    if (name.empty() || name.find('\0') != std::string::npos) {
        LastError() = "a library has no such name";
        return nullptr;
    }
    return KeepError(::dlopen(WhereTheLoaderFinds(name).c_str(), RTLD_NOW | RTLD_LOCAL));
}

void* FindModuleFunction(void* loadedModule, const char* functionName) {
    return KeepError(::dlsym(loadedModule, functionName));
}

std::string GetModuleError() { return LastError(); }

std::shared_ptr<SystemLibrary> SystemLibrary::Load(const PathName& name, std::string& failure) {
    if (void* const handle = LoadModuleNamed(name.ToString()))
        return std::shared_ptr<SystemLibrary>(new SystemLibrary(handle));
    failure = LastError();
    return nullptr;
}

SystemLibrary::~SystemLibrary() { ::dlclose(m_handle); }

void* SystemLibrary::GetProcAddress(const char* functionName) const {
    return FindModuleFunction(m_handle, functionName);
}

} // namespace Qor::Core
