// The XML form of a container. What is accepted is written in both forms, and each must read as the same again.

#include "Agreement.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const BareModules limits;
    const auto container = ReadContainer({reinterpret_cast<const std::byte*>(data), size},
                                         [](auto& target, auto& stream) { target.InputXML(stream); });
    if (container)
        RequireAgreement(*container);
    return 0;
}
