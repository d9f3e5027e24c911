#pragma once

#include "Trickle.h"

#include <QorCore/Context.h>
#include <QorCore/MemoryStreams.h>
#include <Tivor/DataContainer.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <span>
#include <string_view>

// What the fuzzers of containers have in common.

inline void Require(bool condition, const char* text) {
    if (condition)
        return;
    std::cerr << text << '\n';
    std::abort();
}

/// Lets no library be loaded from another directory.
class BareModules {
public:
    BareModules() : m_limits(Bare()) {}

private:
    static Qor::Core::ReadLimits Bare() {
        Qor::Core::ReadLimits limits;
        limits.moduleNames = Qor::Core::EModuleNames::bare;
        return limits;
    }

    Qor::Core::Context::ScopedLimits m_limits;
};

/// Reads a container by `input(container, stream)`; empty when that is refused. For an eighth of all sizes, because
/// strings then take a mebibyte at once, a stream that gives a few bytes at a time must do the same.
template <class Input>
std::optional<Qor::Tivor::DataContainer> ReadContainer(std::span<const std::byte> bytes, Input input) {
    const auto read = [&](Qor::Tivor::DataContainer& container, Qor::Core::BinaryInputStream& stream) {
        try {
            input(container, stream);
            return true;
        } catch (const Qor::Core::Error&) {
            Require(container.IsEmpty(), "a failed read left entries");
            return false;
        }
    };
    std::optional<Qor::Tivor::DataContainer> container(std::in_place);
    Qor::Core::MemoryInputStream stream(bytes);
    const bool accepted = read(*container, stream);
    if (bytes.size() % 8 == 0) {
        Qor::Tivor::DataContainer trickled;
        Qor::Core::Testing::Trickle trickle(bytes, 3);
        Require(read(trickled, trickle) == accepted && trickled == *container, "the kind of stream matters");
    }
    if (!accepted)
        container.reset();
    return container;
}

/// Reads the content of a binary data file, with or without the file's own header.
inline std::optional<Qor::Tivor::DataContainer> ReadBinaryFile(std::span<const std::byte> bytes) {
    constexpr std::string_view magic = "QOR DATA";
    constexpr std::size_t headerSize = 12;
    if (bytes.size() >= headerSize &&
        std::string_view(reinterpret_cast<const char*>(bytes.data()), magic.size()) == magic)
        bytes = bytes.subspan(headerSize);
    return ReadContainer(bytes, [](auto& target, auto& stream) { target.InputData(stream); });
}

/// Writes the container in binary form, reads it, and writes what was read again.
inline void RequireBinaryAgreement(const Qor::Tivor::DataContainer& container) {
    Qor::Core::MemoryOutputStream first;
    const std::uint64_t size = container.OutputData(first, true);
    Require(size == first.GetSize() && size == container.GetDataSize_bytes(), "sizes disagree");
    Qor::Tivor::DataContainer again;
    Qor::Core::MemoryInputStream stream(first.GetBytes());
    again.InputData(stream);
    Require(again == container && *again.Clone() == container, "what was read again differs");
    Qor::Core::MemoryOutputStream second;
    again.OutputData(second, false);
    Require(std::ranges::equal(first.GetBytes(), second.GetBytes()), "what is written again differs");
}

/// Writes the container in both forms, reads both, and writes what was read in both forms again.
inline void RequireAgreement(const Qor::Tivor::DataContainer& container) {
    using Qor::Core::MemoryInputStream;
    using Qor::Core::MemoryOutputStream;
    MemoryOutputStream text;
    container.OutputXML(text);
    MemoryOutputStream bytes;
    const std::uint64_t size = container.OutputData(bytes, true);
    Require(size == bytes.GetSize() && size == container.GetDataSize_bytes(), "sizes disagree");

    Qor::Tivor::DataContainer fromText;
    MemoryInputStream textStream(text.GetBytes());
    fromText.InputXML(textStream);
    Qor::Tivor::DataContainer fromBytes;
    MemoryInputStream byteStream(bytes.GetBytes());
    fromBytes.InputData(byteStream);
    Require(fromText == container && fromBytes == container, "what was read again differs");

    MemoryOutputStream again;
    fromText.OutputXML(again);
    Require(std::ranges::equal(text.GetBytes(), again.GetBytes()), "what is written to XML again differs");
    again.Clear();
    fromText.OutputData(again, false);
    Require(std::ranges::equal(bytes.GetBytes(), again.GetBytes()), "the binary form of what XML held differs");
}
