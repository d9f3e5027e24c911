#include "Platform.h"

#include <Nalix/Storage.h>

#include <limits>
#include <new>
#include <stdexcept>
#include <string>

namespace Qor::Nalix {

namespace {

constexpr std::size_t mebibyte = std::size_t{1} << 20;

constexpr bool IsHuge(std::size_t bytes) { return bytes >= 4 * mebibyte; }
constexpr std::align_val_t AlignmentOf(std::size_t bytes) {
    return std::align_val_t(IsHuge(bytes) ? 2 * mebibyte : 64);
}

} // namespace

std::size_t CheckedCount(std::size_t extent1, std::size_t extent2, std::size_t elementSize) {
    const std::size_t most = static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max()) / elementSize;
    if (extent2 != 0 && extent1 > most / extent2)
        throw std::length_error("Nalix: at most " + std::to_string(most) + " elements of " +
                                std::to_string(elementSize) + " bytes can exist, " + std::to_string(extent1) + " x " +
                                std::to_string(extent2) + " were asked for");
    return extent1 * extent2;
}

void* AllocateBlock(std::size_t bytes) {
    void* const block = ::operator new(bytes, AlignmentOf(bytes));
    if (IsHuge(bytes))
        AdviseHugePages(block, bytes);
    return block;
}

void FreeBlock(void* block, std::size_t bytes) noexcept { ::operator delete(block, AlignmentOf(bytes)); }

} // namespace Qor::Nalix
