// The XML form of a container. What is accepted is written in both forms, and each must read as the same again.

#include "XMLAgreement.h"

#include <Tivor/DataContainer.h>

using namespace Qor::Tivor;
using Qor::Core::MemoryInputStream;

namespace {

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
        container.InputXML(stream);
        return true;
    } catch (const Qor::Core::Error&) {
        Require(container.IsEmpty(), "a failed read left entries");
        return false;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span bytes(reinterpret_cast<const std::byte*>(data), size);
    const BareModules limits;
    DataContainer container;
    MemoryInputStream stream(bytes);
    const bool accepted = IsRead(container, stream);
    if (size % 8 == 0) {
        DataContainer trickled;
        Trickle trickle(bytes);
        Require(IsRead(trickled, trickle) == accepted && trickled == container, "the kind of stream matters");
    }
    if (accepted)
        RequireAgreement(container);
    return 0;
}
