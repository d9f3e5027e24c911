#pragma once

#include <cstddef>

namespace Qor::Nalix {

/// Tells the system that a block is worth huge pages. A wish: nothing is reported when it is not heard.
void AdviseHugePages(void* block, std::size_t bytes) noexcept;

} // namespace Qor::Nalix
