// The content of a binary data file, with or without the file's own header. What is accepted is written, and must read
// as the same again.

#include <QorCore/Context.h>
#include <QorCore/MemoryStreams.h>
#include <Tivor/DataContainer.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <span>
#include <string_view>

using namespace Qor::Tivor;
using Qor::Core::MemoryInputStream;
using Qor::Core::MemoryOutputStream;

namespace {

constexpr std::string_view magic = "QOR DATA";
constexpr std::size_t headerSize = 12;

void Require(bool condition, const char* text) {
    if (condition)
        return;
    std::cerr << text << '\n';
    std::abort();
}

/// Gives no more than a few bytes at a time, and does not know how many there are.
class Trickle final : public Qor::Core::BinaryInputStream {
public:
    explicit Trickle(std::span<const std::byte> bytes) : m_source(bytes) {}

protected:
    std::uint64_t DoRead(void* destination, std::uint64_t size) override {
        return m_source.Read(destination, size < 3 ? size : 3);
    }

private:
    MemoryInputStream m_source;
};

bool IsRead(DataContainer& container, Qor::Core::BinaryInputStream& stream) {
    try {
        container.InputData(stream);
        return true;
    } catch (const Qor::Core::Error&) {
        Require(container.IsEmpty(), "a failed read left entries");
        return false;
    }
}

void CheckAgreement(const DataContainer& container) {
    MemoryOutputStream first;
    const std::uint64_t size = container.OutputData(first, true);
    Require(size == first.GetSize() && size == container.GetDataSize_bytes(), "sizes disagree");
    DataContainer again;
    MemoryInputStream stream(first.GetBytes());
    Require(IsRead(again, stream), "what was written is not read");
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
    Qor::Core::ReadLimits limits;
    limits.moduleNames = Qor::Core::EModuleNames::bare;
    const Qor::Core::Context::ScopedLimits scopedLimits(limits);
    DataContainer container;
    MemoryInputStream stream(bytes);
    const bool accepted = IsRead(container, stream);
    if (size % 8 == 0) { // an eighth, because strings then take a mebibyte at once
        DataContainer trickled;
        Trickle trickle(bytes);
        Require(IsRead(trickled, trickle) == accepted && trickled == container, "the kind of stream matters");
    }
    if (accepted)
        CheckAgreement(container);
    return 0;
}
