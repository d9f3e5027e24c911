#include "ThreadName.h"

#include <array>
#include <pthread.h>

namespace Qor::Core {

void SetThreadName(const std::string& name) noexcept {
    std::array<char, 16> shortened{};
    name.copy(shortened.data(), shortened.size() - 1);
    ::pthread_setname_np(::pthread_self(), shortened.data());
}

} // namespace Qor::Core
