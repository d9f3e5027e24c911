// The content of a binary data file, with or without the file's own header. What is accepted is written, and must read
// as the same again.

#include "Agreement.h"

#include <string_view>

using namespace Qor::Tivor;
using Qor::Core::MemoryInputStream;
using Qor::Core::MemoryOutputStream;

namespace {

constexpr std::string_view magic = "QOR DATA";
constexpr std::size_t headerSize = 12;

void CheckAgreement(const DataContainer& container) {
    MemoryOutputStream first;
    const std::uint64_t size = container.OutputData(first, true);
    Require(size == first.GetSize() && size == container.GetDataSize_bytes(), "sizes disagree");
    DataContainer again;
    MemoryInputStream stream(first.GetBytes());
    again.InputData(stream);
    Require(again == container && *again.Clone() == container, "what was read again differs");
    MemoryOutputStream second;
    again.OutputData(second, false);
    Require(std::ranges::equal(first.GetBytes(), second.GetBytes()), "what is written again differs");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::span<const std::byte> bytes(reinterpret_cast<const std::byte*>(data), size);
    if (size >= headerSize && std::string_view(reinterpret_cast<const char*>(data), magic.size()) == magic)
        bytes = bytes.subspan(headerSize);
    const BareModules limits;
    const auto container = ReadContainer(bytes, [](auto& target, auto& stream) { target.InputData(stream); });
    if (container)
        CheckAgreement(*container);
    return 0;
}
