#include "Trickle.h"

#include <QorCore/Alert.h>
#include <QorCore/BoundedStreams.h>
#include <QorCore/BufferedStreams.h>
#include <QorCore/DataStreams.h>
#include <QorCore/MemoryStreams.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

namespace {

using namespace Qor::Core;
using Testing::Trickle;

using Bytes = std::vector<std::byte>;

constexpr std::uint64_t wholeSize = 500;

Bytes Numbered(std::uint64_t size) {
    Bytes bytes(static_cast<std::size_t>(size));
    for (std::size_t index = 0; index < bytes.size(); ++index)
        bytes[index] = static_cast<std::byte>(index * 7 + index / 256);
    return bytes;
}

Bytes Part(const Bytes& bytes, std::uint64_t from, std::uint64_t size) {
    const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(from);
    return {begin, begin + static_cast<std::ptrdiff_t>(size)};
}

Bytes ReadFrom(BinaryInputStream& stream, std::uint64_t size) {
    Bytes bytes(static_cast<std::size_t>(size));
    bytes.resize(static_cast<std::size_t>(stream.Read(bytes.data(), size)));
    return bytes;
}

TEST(InputStreams, BoundsHoldAndTheSourceGoesOnBehindThem) {
    const Bytes bytes = Numbered(wholeSize);
    for (const std::uint64_t piece : {0u, 5u}) // of the medium; 0: memory, which knows its size
        for (const std::uint64_t bufferSize : {1u, 7u, 600u}) {
            MemoryInputStream memory(bytes);
            Trickle trickle(bytes, piece);
            BufferedInputStream buffered(piece == 0 ? static_cast<BinaryInputStream&>(memory) : trickle, bufferSize);
            BoundedInputStream outer(buffered, 450);
            std::uint64_t position = 0;
            for (const std::uint64_t limit : {0u, 300u, 100u, 900u}) {
                BoundedInputStream inner(outer, limit);
                const std::uint64_t end = std::min<std::uint64_t>(position + limit, 450);
                for (std::size_t step = 0; position < end; ++step) {
                    const std::uint64_t size = 1 + step * 7 % 40;
                    const std::uint64_t there = std::min(size, end - position);
                    if (step % 2 == 1)
                        ASSERT_EQ(inner.Skip(size), there);
                    else
                        ASSERT_EQ(ReadFrom(inner, size), Part(bytes, position, there)) << "at " << position;
                    position += there;
                    ASSERT_EQ(inner.BytesLeft(), piece == 0 ? std::optional(end - position) : std::nullopt);
                }
                EXPECT_EQ(inner.Skip(1), 0u);
            }
            EXPECT_EQ(ReadFrom(buffered, 60), Part(bytes, 450, 50));
        }
}

TEST(InputStreams, AfterAFailureOfTheSourceThePositionsAreRightAndReadingGoesOn) {
    const Bytes bytes = Numbered(wholeSize);
    for (std::uint64_t failAt = 0; failAt < 200; failAt += 13)
        for (const std::uint64_t piece : {1u, 10u, 64u, 190u}) {
            Trickle medium(bytes, 24, failAt);
            BufferedInputStream buffered(medium, 16);
            BoundedInputStream outer(buffered, 300);
            {
                BoundedInputStream inner(outer, 200);
                EXPECT_THROW(for (;;) ReadFrom(inner, piece), IOError);
                EXPECT_EQ(inner.Remaining(), 200 - failAt);
                EXPECT_EQ(inner.BytesLeft(), std::nullopt);
                EXPECT_EQ(ReadFrom(inner, 200), Part(bytes, failAt, 200 - failAt));
            }
            EXPECT_EQ(outer.Remaining(), 100u);
        }
    // With bytes known on both sides of a bounded stream that lost its window.
    class FailsOnce final : public BinaryInputStream {
    public:
        explicit FailsOnce(const Bytes& bytes) { SetWindow(bytes.data(), bytes.data() + bytes.size()); }

    protected:
        std::uint64_t DoRead(void*, std::uint64_t) override { throw IOError("The medium failed"); }
        std::optional<std::uint64_t> DoBytesLeft() const override { return 60; }
    };
    FailsOnce medium(bytes);
    BoundedInputStream bounded(medium, wholeSize + 100);
    EXPECT_EQ(bounded.BytesLeft(), wholeSize + 60);
    EXPECT_THROW(ReadFrom(bounded, wholeSize + 1), IOError);
    EXPECT_EQ(bounded.Remaining(), 100u);
    EXPECT_EQ(bounded.BytesLeft(), 60u);
}

Bytes Copy(const MemoryOutputStream& memory) { return {memory.GetBytes().begin(), memory.GetBytes().end()}; }

TEST(OutputStreams, AnOverrunOfABoundRaisesAndChangesNothing) {
    const Bytes bytes = Numbered(wholeSize);
    for (const std::uint64_t bufferSize : {1u, 4u, 100u})
        for (const std::uint64_t innerLimit : {10u, 11u, 400u}) {
            MemoryOutputStream memory;
            BufferedOutputStream buffered(memory, bufferSize);
            {
                BoundedOutputStream outer(buffered, 10);
                {
                    BoundedOutputStream inner(outer, innerLimit);
                    inner.Write(bytes.data(), 6);
                    for (const std::uint64_t tooMuch : {5u, 6u, 401u}) {
                        EXPECT_THROW(inner.Write(bytes.data(), tooMuch), IOError);
                        EXPECT_EQ(inner.Remaining(), innerLimit - 6);
                    }
                    inner.Write(bytes.data() + 6, 4);
                    EXPECT_THROW(inner.Write(bytes.data(), 1), IOError);
                }
                EXPECT_EQ(outer.Remaining(), 0u);
            }
            buffered.Write(bytes.data() + 10, 1);
            buffered.Flush();
            EXPECT_EQ(Copy(memory), Part(bytes, 0, 11));
        }
}

TEST(DataStreams, ValuesTravel) {
    // The long text is longer than what is taken on trust from a stream of unknown size.
    const std::tuple values(std::int64_t{-2}, std::uint8_t{200}, true, -1.25, 1.5f, std::string("a\0b", 3),
                            std::wstring(L"\u00E4\U0001F600"), std::string(5'000'000, 'x'), std::uint8_t{2});
    MemoryOutputStream memory;
    DataOutputStream output(memory);
    std::apply([&](const auto&... value) { (output.Write(value), ...); }, values);
    EXPECT_EQ(memory.GetSize(), 8u + 1 + 1 + 8 + 4 + GetSerializedStringSize("a?b") + 10 + 5'000'004 + 1);

    const Bytes bytes = Copy(memory);
    Trickle source(bytes, 100'000);
    DataInputStream input(source);
    auto read = decltype(std::tuple(values))();
    bool isTrue = false;
    std::apply([&](auto&... value) { EXPECT_TRUE((input.Read(value) && ...)); }, read);
    EXPECT_TRUE(read == values);
    EXPECT_FALSE(input.Read(isTrue));
    MemoryInputStream odd(bytes.data() + bytes.size() - 1, 1);
    EXPECT_TRUE(DataInputStream(odd).Read(isTrue) && isTrue) << "whatever is not 0 is true";
}

TEST(DataStreams, StringsWhoseSizesLieAreReportedWithoutTakingTheMemory) {
    for (const std::uint32_t claimed : {11u, 70'000u, 3'000'000u, 0xFFFFFFFFu})
        for (const bool knowsSize : {false, true}) {
            MemoryOutputStream memory;
            DataOutputStream(memory).Write(claimed);
            memory.WriteZeros(10);
            const Bytes bytes = Copy(memory);
            MemoryInputStream known(bytes);
            Trickle unknown(bytes, 5);
            std::string text;
            EXPECT_FALSE(DataInputStream(knowsSize ? static_cast<BinaryInputStream&>(known) : unknown).Read(text));
            EXPECT_LT(text.capacity(), 4'000'000u);
        }
}

} // namespace
