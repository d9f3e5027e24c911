#include "ThreadName.h"

#include <QorCore/Utf8.h>

#include <exception>
#include <windows.h>

namespace Qor::Core {

// Younger than the oldest system that is served.
void SetThreadName(const std::string& name) noexcept {
    using Setter = HRESULT(WINAPI*)(HANDLE, PCWSTR);
    static const auto set = reinterpret_cast<Setter>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "SetThreadDescription")));
    if (set == nullptr)
        return;
    try {
        set(GetCurrentThread(), WideFromUtf8(name).c_str());
    } catch (const std::exception&) { // no memory: a thread without a name
    }
}

} // namespace Qor::Core
