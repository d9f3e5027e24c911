#include "Platform.h"

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace Qor::Nalix {

#if defined(__linux__)
void AdviseHugePages(void* block, std::size_t bytes) noexcept {
    static_cast<void>(madvise(block, bytes, MADV_HUGEPAGE));
}
#else
void AdviseHugePages(void*, std::size_t) noexcept {}
#endif

} // namespace Qor::Nalix
