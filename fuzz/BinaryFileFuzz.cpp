// The content of a binary data file, with or without the file's own header. What is accepted is written, and must read
// as the same again.

#include "Agreement.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const BareModules limits;
    if (const auto container = ReadBinaryFile({reinterpret_cast<const std::byte*>(data), size}))
        RequireBinaryAgreement(*container);
    return 0;
}
