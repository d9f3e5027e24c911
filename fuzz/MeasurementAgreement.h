#pragma once

#include "Agreement.h"
#include "common/Report.h"

// What the fuzzers of measurement formats have in common.

template <class Format>
class MeasurementAgreement {
public:
    using DataContainer = Qor::Tivor::DataContainer;

    /// Empty when the bytes are refused.
    static std::optional<DataContainer> Read(std::span<const std::byte> bytes) {
        auto container = ReadContainer(bytes, [](auto& target, auto& stream) { Format::Read(stream, Here(), target); });
        Qor::Core::MemoryInputStream stream(bytes);
        Require(!container || Format::Refusal(stream, bytes.size()).empty(), "it is read and refused");
        return container;
    }

    /// Writes what was read, reads that, and does so again: `Compare(first, again)` requires what the first writing
    /// must keep; the second one keeps everything.
    template <class Compare>
    static void Check(std::span<const std::byte> bytes, Compare compare) {
        const auto first = Read(bytes);
        if (!first)
            return;
        Qor::Core::MemoryOutputStream written, rewritten;
        if (!Write(*first, written))
            return;
        const auto again = Read(written.GetBytes());
        Require(again.has_value(), "what was written is not read");
        compare(*first, *again);
        Require(Write(*again, rewritten), "what was read again is not written");
        Require(Read(rewritten.GetBytes()) == again, "what is written again differs");
    }

private:
    static Qor::Tivor::Measurements::Report Here() { return {"(fuzz)", Format::category}; }

    /// False when it is refused.
    static bool Write(const DataContainer& container, Qor::Core::MemoryOutputStream& stream) {
        try {
            Format::Write(container, Here(), stream);
            return true;
        } catch (const Qor::Tivor::Measurements::UnwritableMeasurement&) {
            Require(stream.GetSize() == 0, "a refused container was begun");
            return false;
        }
    }
};
