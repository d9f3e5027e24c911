#pragma once

#include <QorCore/DataStreams.h>
#include <Tivor/Fwd.h>

#include <algorithm>
#include <initializer_list>

namespace Qor::Tivor {

/// The stream ended before the data did: raises `EndOfStreamOnInput`.
[[noreturn]] void RaiseEndOfData(const DataObject& object, std::uint64_t got, std::uint64_t wanted);

/// A block of the object's class must have a size that it has not: raises `IOError`.
[[noreturn]] void RaiseInvalidSize(const DataObject& object, std::uint64_t size);

/// The bytes of as many elements as the product of the extents, of `elementSize` bytes or more each. Raises `IOError`
/// when the `available` rest of the block cannot hold them, and `EndOfStreamOnInput` when the rest of the stream does
/// not: nothing is allocated on the word of a few numbers.
std::uint64_t RequireElements(const DataObject& object, std::initializer_list<std::uint64_t> extents,
                              std::uint64_t elementSize, std::uint64_t available,
                              const Core::BinaryInputStream& stream);

/// Reads the count in front of elements, and `RequireElements` of it.
std::uint64_t ReadCount(const DataObject& object, Core::DataInputStream& stream, std::uint64_t size,
                        std::uint64_t elementSize);

/// Reads `bytes` bytes into what `make()` gives, which has as many at `data()`. Where nobody knows how much will come,
/// that is not made before they have all arrived.
template <class Make>
auto InputWhole(const DataObject& object, Core::BinaryInputStream& stream, std::uint64_t bytes, Make make) {
    std::string arrived;
    const bool gathers = !stream.BytesLeft();
    if (gathers && !Core::DataInputStream(stream).ReadBytes(arrived, bytes))
        RaiseEndOfData(object, arrived.size(), bytes);
    auto made = make();
    if (gathers)
        std::copy_n(arrived.data(), arrived.size(), reinterpret_cast<char*>(made.data()));
    else if (const std::uint64_t got = stream.Read(made.data(), bytes); got < bytes)
        RaiseEndOfData(object, got, bytes);
    return made;
}

} // namespace Qor::Tivor
