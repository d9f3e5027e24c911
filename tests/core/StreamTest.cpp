#include "Trickle.h"

#include <QorCore/Alert.h>
#include <QorCore/BoundedStreams.h>
#include <QorCore/BufferedStreams.h>
#include <QorCore/DataStreams.h>
#include <QorCore/MemoryStreams.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
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

// A buffer of that size, or a limit of that many bytes.
enum EKind { eBUFFER, eLIMIT };
using Layer = std::pair<EKind, std::uint64_t>;

// Streams over one another; the last one is destroyed first.
template <class Stream, class Buffered, class Bounded>
class Chain {
public:
    Chain(Stream& source, const std::vector<Layer>& layers) : m_last(&source) {
        for (const auto& [kind, size] : layers) {
            if (kind == eBUFFER)
                m_streams.push_back(std::make_unique<Buffered>(*m_last, size));
            else
                m_streams.push_back(std::make_unique<Bounded>(*m_last, size));
            m_last = m_streams.back().get();
        }
    }
    ~Chain() {
        while (!m_streams.empty())
            m_streams.pop_back();
    }
    Stream& Last() { return *m_last; }

private:
    Stream* m_last;
    std::vector<std::unique_ptr<Stream>> m_streams;
};
using InputChain = Chain<BinaryInputStream, BufferedInputStream, BoundedInputStream>;
using OutputChain = Chain<BinaryOutputStream, BufferedOutputStream, BoundedOutputStream>;

constexpr std::uint64_t oddPieces[] = {1, 0, 2, 3, 17, 1, 40, 5, 8, 64, 13};

TEST(InputStreams, EveryChainGivesTheBytesOfThePlainCopy) {
    const struct {
        std::uint64_t piece; // of the medium; 0: memory, which knows its size
        std::vector<Layer> layers;
        std::uint64_t size;
    } rows[] = {{0, {}, wholeSize},
                {3, {}, wholeSize},
                {3, {{eBUFFER, 1}}, wholeSize},
                {0, {{eBUFFER, 7}}, wholeSize},
                {90, {{eBUFFER, 800}}, wholeSize},
                {0, {{eLIMIT, 123}}, 123},
                {0, {{eLIMIT, 900}}, wholeSize},
                {0, {{eLIMIT, 0}}, 0},
                {0, {{eBUFFER, 16}, {eLIMIT, 400}, {eLIMIT, 301}}, 301},
                {5, {{eBUFFER, 9}, {eLIMIT, 222}, {eLIMIT, 450}}, 222},
                {0, {{eBUFFER, 11}, {eLIMIT, 333}, {eBUFFER, 6}}, 333}};
    const Bytes bytes = Numbered(wholeSize);
    for (const auto& row : rows)
        for (const std::size_t skipEvery : {2u, 3u, 1000u}) {
            SCOPED_TRACE(testing::Message() << "row " << &row - rows);
            MemoryInputStream memory(bytes);
            Trickle trickle(bytes, row.piece);
            InputChain chain(row.piece == 0 ? static_cast<BinaryInputStream&>(memory) : trickle, row.layers);
            BinaryInputStream& stream = chain.Last();
            std::uint64_t position = 0;
            for (std::size_t step = 0; position < row.size; ++step) {
                const std::uint64_t piece = oddPieces[step % std::size(oddPieces)];
                const std::uint64_t there = std::min(piece, row.size - position);
                if (step % skipEvery == 1)
                    ASSERT_EQ(stream.Skip(piece), there);
                else
                    ASSERT_EQ(ReadFrom(stream, piece), Part(bytes, position, there)) << "at " << position;
                position += there;
                ASSERT_EQ(stream.BytesLeft(), row.piece == 0 ? std::optional(row.size - position) : std::nullopt);
            }
            EXPECT_TRUE(ReadFrom(stream, 10).empty());
            EXPECT_EQ(stream.Skip(10), 0u);
        }
}

TEST(InputStreams, TheSourceContinuesWhereTheBoundedStreamStopped) {
    const Bytes bytes = Numbered(wholeSize);
    for (const std::uint64_t bufferSize : {1u, 7u, 64u, 1000u}) {
        MemoryInputStream memory(bytes);
        BufferedInputStream source(memory, bufferSize);
        std::uint64_t position = 0;
        for (const auto& [limit, read] :
             {std::pair{10u, 10u}, {10u, 3u}, {0u, 0u}, {100u, 99u}, {50u, 0u}, {900u, 20u}}) {
            BoundedInputStream outer(source, limit);
            {
                BoundedInputStream inner(outer, limit);
                EXPECT_EQ(ReadFrom(inner, read), Part(bytes, position, read));
                EXPECT_EQ(inner.Remaining(), limit - read);
            }
            EXPECT_EQ(outer.Remaining(), limit - read);
            position += read;
        }
        EXPECT_EQ(ReadFrom(source, 5), Part(bytes, position, 5));
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

TEST(OutputStreams, EveryChainWritesTheBytesOfThePlainCopy) {
    const std::vector<Layer> rows[] = {{},
                                       {{eBUFFER, 1}},
                                       {{eBUFFER, 7}},
                                       {{eBUFFER, 32}, {eLIMIT, wholeSize}},
                                       {{eBUFFER, 5}, {eLIMIT, wholeSize}, {eLIMIT, 600}},
                                       {{eBUFFER, 9}, {eLIMIT, wholeSize}, {eBUFFER, 20}}};
    Bytes bytes = Numbered(wholeSize);
    MemoryOutputStream memory(3);
    for (const bool flushesOften : {false, true})
        for (const auto& row : rows) {
            SCOPED_TRACE(testing::Message() << "row " << &row - rows);
            memory.Clear();
            OutputChain chain(memory, row);
            std::uint64_t position = 0;
            for (std::size_t step = 0; position < wholeSize; ++step) {
                const std::uint64_t piece = std::min(oddPieces[step % std::size(oddPieces)], wholeSize - position);
                if (step % 4 == 3) {
                    std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(position), piece, std::byte{0});
                    chain.Last().WriteZeros(piece);
                } else {
                    chain.Last().Write(bytes.data() + position, piece);
                }
                position += piece;
                if (flushesOften) {
                    chain.Last().Flush();
                    ASSERT_EQ(memory.GetSize(), position);
                }
            }
            chain.Last().Flush();
            EXPECT_EQ(Copy(memory), bytes);
        }
}

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
