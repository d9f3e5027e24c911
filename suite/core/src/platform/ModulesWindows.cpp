#include "../NativePath.h"

#include <QorCore/Modules.h>
#include <QorCore/System.h>
#include <QorCore/SystemLibrary.h>

#include <array>
#include <windows.h>

namespace Qor::Core {

void* LoadModuleNamed(const std::string& name) {
    if (name.empty() || name.find('\0') != std::string::npos) {
        SetLastError(ERROR_MOD_NOT_FOUND);
        return nullptr;
    }
    return reinterpret_cast<void*>(LoadLibraryA(name.c_str()));
}

void* FindModuleFunction(void* loadedModule, const char* functionName) {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(loadedModule), functionName));
}

std::string GetModuleError() {
    std::array<char, 1024> buffer = {};
    const DWORD error = ::GetLastError();
    const DWORD how = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
    const DWORD size =
        FormatMessageA(how, nullptr, error, 0, buffer.data(), static_cast<DWORD>(buffer.size()), nullptr);
    return size > 0 ? std::string(buffer.data(), size) : "error " + std::to_string(error);
}

std::shared_ptr<SystemLibrary> SystemLibrary::Load(const PathName& name, std::string& failure) {
    if (const HMODULE handle = LoadLibraryW(ToNative(name).c_str()))
        return std::shared_ptr<SystemLibrary>(new SystemLibrary(reinterpret_cast<void*>(handle)));
    failure = System::DescribeError(static_cast<std::int32_t>(::GetLastError()));
    return nullptr;
}

SystemLibrary::~SystemLibrary() { FreeLibrary(static_cast<HMODULE>(m_handle)); }

void* SystemLibrary::GetProcAddress(const char* functionName) const {
    return FindModuleFunction(m_handle, functionName);
}

} // namespace Qor::Core
