#include "ThreadEnd.h"

#include <memory>
#include <new>
#include <windows.h>

namespace Qor::Core {

namespace {

struct Caller {
    void (*callback)(void*);
    void* argument;
};

/// When the process ends, the other threads were stopped wherever they were, maybe in the possession of a mutex.
bool IsProcessEnding() {
    using Question = BOOLEAN(NTAPI*)();
    static const auto ask = reinterpret_cast<Question>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "RtlDllShutdownInProgress")));
    return ask == nullptr || ask() != FALSE;
}

void NTAPI CallBack(void* value) {
    const std::unique_ptr<Caller> caller(static_cast<Caller*>(value));
    if (caller && !IsProcessEnding())
        caller->callback(caller->argument);
}

} // namespace

// Not by a thread-local object: with this compiler their memory may be gone when their destructors run.
bool AtThreadEnd(void (*callback)(void*), void* argument) noexcept {
    static const DWORD key = FlsAlloc(&CallBack);
    std::unique_ptr<Caller> caller(new (std::nothrow) Caller{callback, argument});
    if (key == FLS_OUT_OF_INDEXES || !caller || !FlsSetValue(key, caller.get()))
        return false;
    caller.release();
    return true;
}

} // namespace Qor::Core
