#include "ThreadEnd.h"

namespace Qor::Core {

namespace {

struct Caller {
    ~Caller() { callback(argument); }

    void (*callback)(void*);
    void* argument;
};

} // namespace

bool AtThreadEnd(void (*callback)(void*), void* argument) noexcept {
    static thread_local const Caller caller{callback, argument};
    return true;
}

} // namespace Qor::Core
