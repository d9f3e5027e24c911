#include <QorCore/Alert.h>
#include <QorCore/BoundedStreams.h>
#include <QorCore/BufferedStreams.h>
#include <QorCore/DataStreams.h>
#include <QorCore/MemoryStreams.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace Qor::Core;

using Bytes = std::vector<std::byte>;

constexpr std::uint64_t wholeSize = 500;
constexpr std::uint64_t never = std::numeric_limits<std::uint64_t>::max();

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

// A medium that gives a few bytes at a time, does not know how many it has, and may fail once on its way.
class Trickle final : public BinaryInputStream {
public:
    Trickle(const Bytes& bytes, std::uint64_t piece, std::uint64_t failAt = never)
        : m_bytes(bytes), m_piece(piece), m_failAt(failAt) {}

protected:
    std::uint64_t DoRead(void* destination, std::uint64_t size) override {
        if (m_position == m_failAt) {
            m_failAt = never;
            Error::RaiseError(IOError("The medium failed"), QOR_CODE_CONTEXT("StreamTest"), "Test");
        }
        const std::uint64_t done = std::min({size, m_piece, m_bytes.size() - m_position, m_failAt - m_position});
        std::copy_n(m_bytes.begin() + static_cast<std::ptrdiff_t>(m_position), done,
                    static_cast<std::byte*>(destination));
        m_position += done;
        return done;
    }

private:
    const Bytes& m_bytes;
    std::uint64_t m_piece;
    std::uint64_t m_failAt;
    std::uint64_t m_position = 0;
};

// Streams over one another; the last one is destroyed first.
template <class Base>
class Chain {
public:
    ~Chain() {
        while (!m_streams.empty())
            m_streams.pop_back();
    }
    template <class S, class... Arguments>
    Chain& Begin(Arguments&&... arguments) {
        m_streams.push_back(std::make_unique<S>(std::forward<Arguments>(arguments)...));
        return *this;
    }
    template <class S>
    Chain& Add(std::uint64_t size) {
        m_streams.push_back(std::make_unique<S>(*m_streams.back(), size));
        return *this;
    }
    Base& Last() { return *m_streams.back(); }

private:
    std::vector<std::unique_ptr<Base>> m_streams;
};
using Input = Chain<BinaryInputStream>;
using Output = Chain<BinaryOutputStream>;
using InBuffer = BufferedInputStream;
using InBound = BoundedInputStream;
using OutBuffer = BufferedOutputStream;
using OutBound = BoundedOutputStream;

struct InputCase {
    const char* name;
    void (*build)(Input& chain, const Bytes& bytes);
    std::uint64_t size;
    bool knowsSize;
};
const InputCase inputCases[] = {
    {"memory", [](Input& c, const Bytes& b) { c.Begin<MemoryInputStream>(b); }, wholeSize, true},
    {"trickle", [](Input& c, const Bytes& b) { c.Begin<Trickle>(b, 3u); }, wholeSize, false},
    {"buffer of 1", [](Input& c, const Bytes& b) { c.Begin<Trickle>(b, 3u).Add<InBuffer>(1); }, wholeSize, false},
    {"buffer of 7", [](Input& c, const Bytes& b) { c.Begin<MemoryInputStream>(b).Add<InBuffer>(7); }, wholeSize, true},
    {"large buffer", [](Input& c, const Bytes& b) { c.Begin<Trickle>(b, 90u).Add<InBuffer>(800); }, wholeSize, false},
    {"bound", [](Input& c, const Bytes& b) { c.Begin<MemoryInputStream>(b).Add<InBound>(123); }, 123, true},
    {"bound beyond the end", [](Input& c, const Bytes& b) { c.Begin<MemoryInputStream>(b).Add<InBound>(900); },
     wholeSize, true},
    {"empty bound", [](Input& c, const Bytes& b) { c.Begin<MemoryInputStream>(b).Add<InBound>(0); }, 0, true},
    {"bound in bound over buffer",
     [](Input& c, const Bytes& b) {
         c.Begin<MemoryInputStream>(b).Add<InBuffer>(16).Add<InBound>(400).Add<InBound>(301);
     },
     301, true},
    {"wider bound in bound over buffer over trickle",
     [](Input& c, const Bytes& b) { c.Begin<Trickle>(b, 5u).Add<InBuffer>(9).Add<InBound>(222).Add<InBound>(450); },
     222, false},
    {"buffer over bound over buffer",
     [](Input& c, const Bytes& b) {
         c.Begin<MemoryInputStream>(b).Add<InBuffer>(11).Add<InBound>(333).Add<InBuffer>(6);
     },
     333, true},
};

constexpr std::uint64_t oddPieces[] = {1, 0, 2, 3, 17, 1, 40, 5, 8, 64, 13};

TEST(InputStreams, EveryChainGivesTheBytesOfThePlainCopy) {
    const Bytes bytes = Numbered(wholeSize);
    for (const InputCase& row : inputCases)
        for (const std::size_t skipEvery : {2u, 3u, 1000u}) {
            SCOPED_TRACE(row.name);
            Input chain;
            row.build(chain, bytes);
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
                ASSERT_EQ(stream.BytesLeft(), row.knowsSize ? std::optional(row.size - position) : std::nullopt);
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
        std::uint64_t DoRead(void*, std::uint64_t) override {
            Error::RaiseError(IOError("The medium failed"), QOR_CODE_CONTEXT("StreamTest"), "Test");
        }
        std::optional<std::uint64_t> DoBytesLeft() const override { return 60; }
    };
    FailsOnce medium(bytes);
    BoundedInputStream bounded(medium, wholeSize + 100);
    EXPECT_EQ(bounded.BytesLeft(), wholeSize + 60);
    EXPECT_THROW(ReadFrom(bounded, wholeSize + 1), IOError);
    EXPECT_EQ(bounded.Remaining(), 100u);
    EXPECT_EQ(bounded.BytesLeft(), 60u);
}

struct OutputCase {
    const char* name;
    void (*build)(Output& chain);
};
const OutputCase outputCases[] = {
    {"memory", [](Output&) {}},
    {"buffer of 1", [](Output& c) { c.Add<OutBuffer>(1); }},
    {"buffer of 7", [](Output& c) { c.Add<OutBuffer>(7); }},
    {"bound over buffer", [](Output& c) { c.Add<OutBuffer>(32).Add<OutBound>(wholeSize); }},
    {"bound in bound over buffer", [](Output& c) { c.Add<OutBuffer>(5).Add<OutBound>(wholeSize).Add<OutBound>(600); }},
    {"buffer over bound over buffer",
     [](Output& c) { c.Add<OutBuffer>(9).Add<OutBound>(wholeSize).Add<OutBuffer>(20); }},
};

Bytes Copy(const MemoryOutputStream& memory) {
    return {memory.GetBytes().begin(), memory.GetBytes().end()};
}

// Lets a chain begin with a stream that the test keeps.
class Forward final : public BinaryOutputStream {
public:
    explicit Forward(BinaryOutputStream& target) : m_target(target) {}

protected:
    void DoWrite(const void* source, std::uint64_t size) override { m_target.Write(source, size); }

private:
    BinaryOutputStream& m_target;
};

TEST(OutputStreams, EveryChainWritesTheBytesOfThePlainCopy) {
    Bytes bytes = Numbered(wholeSize);
    for (const bool flushesOften : {false, true})
        for (const OutputCase& row : outputCases) {
            SCOPED_TRACE(row.name);
            MemoryOutputStream memory;
            Output chain;
            chain.Begin<Forward>(memory);
            row.build(chain);
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

TEST(OutputStreams, MemoryIsKeptWhenCleared) {
    MemoryOutputStream memory(3);
    const Bytes bytes = Numbered(wholeSize);
    for (const std::uint64_t size : {wholeSize, std::uint64_t{4}, std::uint64_t{0}, wholeSize}) {
        memory.Clear();
        memory.Write(bytes.data(), size);
        EXPECT_EQ(Copy(memory), Part(bytes, 0, size));
    }
}

TEST(DataStreams, ValuesTravel) {
    MemoryOutputStream memory;
    DataOutputStream output(memory);
    output.Write(std::int64_t{-2});
    output.Write(std::uint8_t{200});
    output.Write(true);
    output.Write(-0.0);
    output.Write(1.5f);
    output.Write(std::string_view("a\0b", 3));
    output.Write(std::wstring_view(L"\u00E4\U0001F600"));
    EXPECT_EQ(memory.GetSize(), 8u + 1 + 1 + 8 + 4 + GetSerializedStringSize("a?b") + (4 + 2 + 4));

    MemoryInputStream source(memory.GetBytes());
    DataInputStream input(source);
    std::int64_t integer = 0;
    std::uint8_t byte = 0;
    bool flag = false;
    double wide = 1;
    float narrow = 0;
    std::string text;
    std::wstring wideText;
    EXPECT_TRUE(input.Read(integer) && input.Read(byte) && input.Read(flag) && input.Read(wide) && input.Read(narrow) &&
                input.Read(text) && input.Read(wideText));
    EXPECT_EQ(integer, -2);
    EXPECT_EQ(byte, 200);
    EXPECT_TRUE(flag);
    EXPECT_TRUE(wide == 0 && std::signbit(wide));
    EXPECT_EQ(narrow, 1.5f);
    EXPECT_EQ(text, std::string("a\0b", 3));
    EXPECT_EQ(wideText, L"\u00E4\U0001F600");
    EXPECT_FALSE(input.Read(byte));
    const std::uint8_t two = 2;
    MemoryInputStream odd(&two, 1);
    EXPECT_TRUE(DataInputStream(odd).Read(flag) && flag) << "whatever is not 0 is true";
}

TEST(DataStreams, StringsWhoseSizesLieAreReportedWithoutTakingTheMemory) {
    for (const std::uint32_t claimed : {11u, 70'000u, 3'000'000u, 0xFFFFFFFFu})
        for (const std::uint64_t present : {0u, 10u}) {
            MemoryOutputStream memory;
            DataOutputStream(memory).Write(claimed);
            memory.WriteZeros(present);
            const Bytes bytes = Copy(memory);
            MemoryInputStream known(bytes);
            Trickle unknown(bytes, 5);
            for (BinaryInputStream* const stream :
                 {static_cast<BinaryInputStream*>(&known), static_cast<BinaryInputStream*>(&unknown)}) {
                std::string text;
                EXPECT_FALSE(DataInputStream(*stream).Read(text));
                EXPECT_LT(text.capacity(), 4'000'000u);
            }
        }
    // Longer than the first piece that is taken on trust, from a stream of unknown size.
    MemoryOutputStream memory;
    const std::string longText(5'000'000, 'x');
    DataOutputStream(memory).Write(longText);
    const Bytes bytes = Copy(memory);
    Trickle unknown(bytes, 100'000);
    std::string text;
    EXPECT_TRUE(DataInputStream(unknown).Read(text));
    EXPECT_EQ(text, longText);
}

} // namespace
