#include "ElementBlock.h"

#include <QorCore/Message.h>
#include <Tivor/DataObject.h>
#include <Tivor/Serializer.h>

namespace Qor::Tivor {

namespace {

const char* const category = "Qor.Tivor.Serializer";

std::string Product(std::initializer_list<std::uint64_t> extents) {
    std::string text;
    for (const std::uint64_t extent : extents)
        text += (text.empty() ? "" : " x ") + std::to_string(extent);
    return text;
}

} // namespace

void RaiseEndOfData(const DataObject& object, std::uint64_t got, std::uint64_t wanted) {
    Core::Error::RaiseError(
        EndOfStreamOnInput(Core::FormatText("The stream ended after %1% of the %2% bytes of data of a %3%",
                                            {got, wanted, object.GetTypeName()})),
        QOR_CODE_CONTEXT("Serializer"), category);
}

void RaiseInvalidSize(const DataObject& object, std::uint64_t size) {
    Core::Error::RaiseError(
        Core::IOError(Core::FormatText("A block of %1% bytes holds no data of a %2%", {size, object.GetTypeName()})),
        QOR_CODE_CONTEXT("Serializer"), category);
}

std::uint64_t RequireElements(const DataObject& object, std::initializer_list<std::uint64_t> extents,
                              std::uint64_t elementSize, std::uint64_t available,
                              const Core::BinaryInputStream& stream) {
    std::uint64_t bytes = 1;
    bool fits = true;
    for (const std::uint64_t extent : extents)
        fits = !__builtin_mul_overflow(bytes, extent, &bytes) && fits;
    fits = !__builtin_mul_overflow(bytes, elementSize, &bytes) && fits;
    if (!fits || bytes > available)
        Core::Error::RaiseError(
            Core::IOError(Core::FormatText("A %1% of %2% elements of %3% bytes does not fit its block of %4% bytes",
                                           {object.GetTypeName(), Product(extents), elementSize, available})),
            QOR_CODE_CONTEXT("Serializer"), category);
    if (const std::optional<std::uint64_t> left = stream.BytesLeft(); left && *left < bytes)
        RaiseEndOfData(object, *left, bytes);
    return bytes;
}

std::uint64_t ReadCount(const DataObject& object, Core::DataInputStream& stream, std::uint64_t size,
                        std::uint64_t elementSize) {
    std::uint64_t count = 0;
    if (size < sizeof count)
        RaiseInvalidSize(object, size);
    if (!stream.Read(count))
        RaiseEndOfData(object, 0, size);
    RequireElements(object, {count}, elementSize, size - sizeof count, stream.GetStream());
    return count;
}

} // namespace Qor::Tivor
