#include "Alerts.h"
#include "Base64Kernel.h"
#include "Trickle.h"

#include <QorCore/Base64.h>
#include <QorCore/BufferedStreams.h>
#include <QorCore/MemoryStreams.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <bitset>
#include <cstring>
#include <random>
#include <string>
#include <tuple>
#include <vector>

namespace {

using namespace Qor::Core;

const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::minstd_rand engine(7);

std::size_t Below(std::size_t end) { return std::uniform_int_distribution<std::size_t>(0, end - 1)(engine); }

std::string RandomBytes(std::size_t size) {
    std::string bytes(size, '\0');
    std::generate(bytes.begin(), bytes.end(), [] { return static_cast<char>(Below(256)); });
    return bytes;
}

/// Bit by bit.
std::string Expected(const std::string& bytes, std::size_t lineLength = 0, const std::string& separator = "") {
    std::string bits;
    for (const char byte : bytes)
        bits += std::bitset<8>(static_cast<unsigned char>(byte)).to_string();
    bits.resize((bits.size() + 5) / 6 * 6, '0');
    std::string text;
    for (std::size_t i = 0; i < bits.size(); i += 6)
        text += alphabet[std::bitset<6>(bits.substr(i, 6)).to_ulong()];
    text.resize((text.size() + 3) / 4 * 4, '=');
    for (std::size_t at = lineLength; lineLength != 0 && at < text.size(); at += lineLength + separator.size())
        text.insert(at, separator);
    return text;
}

std::vector<std::byte> Encode(const Base64Kernel& kernel, const std::string& bytes, std::size_t bytesPerLine,
                              const std::string& separator) {
    // Neither source nor target has a byte to spare.
    const std::vector<std::byte> source(reinterpret_cast<const std::byte*>(bytes.data()),
                                        reinterpret_cast<const std::byte*>(bytes.data() + bytes.size()));
    const std::size_t count = bytes.size() / bytesPerLine;
    std::vector<std::byte> text(count * (separator.size() + bytesPerLine / 3 * 4));
    kernel.encode(source.data(), count, bytesPerLine, separator, reinterpret_cast<char*>(text.data()));
    return text;
}

using Decoded = std::tuple<std::size_t, std::vector<std::byte>>;

Decoded Decode(const Base64Kernel& kernel, const std::string& text, std::size_t room) {
    constexpr std::byte guard{0xA5};
    const std::vector<char> source(text.begin(), text.end());
    std::vector<std::byte> bytes(room + 40, guard);
    const Base64Progress done = kernel.decode({source.data(), source.size()}, bytes.data(), room);
    EXPECT_TRUE(std::all_of(bytes.begin() + static_cast<std::ptrdiff_t>(room), bytes.end(),
                            [](std::byte byte) { return byte == guard; }));
    bytes.resize(done.made);
    return {done.read, bytes};
}

void ExpectSameDecoding(const std::string& text, std::size_t room) {
    const Decoded expected = Decode(portableBase64, text, room);
    for (const Base64Kernel& kernel : GetVectorBase64Kernels())
        ASSERT_EQ(Decode(kernel, text, room), expected) << testing::PrintToString(text) << " into " << room;
}

std::string Lines(std::size_t size, std::size_t lineLength, const std::string& separator) {
    return Expected(RandomBytes(size / 3 * 3), lineLength, separator);
}

TEST(Base64Kernels, EncodeAlike) {
    for (std::size_t size = 3; size <= 402; size += 3)
        for (const std::string separator : {"", "\n", "\r\n", "12345678", "123456789"})
            for (const std::size_t lines : {1u, 2u, 5u}) {
                const std::string bytes = RandomBytes(size * lines);
                const std::vector<std::byte> expected = Encode(portableBase64, bytes, size, separator);
                const std::string text(reinterpret_cast<const char*>(expected.data()), expected.size());
                ASSERT_EQ(text, separator + Expected(bytes, size / 3 * 4, separator));
                for (const Base64Kernel& kernel : GetVectorBase64Kernels())
                    ASSERT_EQ(Encode(kernel, bytes, size, separator), expected) << size;
            }
}

TEST(Base64Kernels, EachByteAtEachPlaceIsTakenOrRefusedAlike) {
    const std::string text = Lines(120, 0, "");
    for (std::size_t position = 0; position < text.size(); ++position)
        for (int code = 0; code < 256; ++code) {
            std::string changed = text;
            changed[position] = static_cast<char>(code);
            ExpectSameDecoding(changed, 200);
        }
}

TEST(Base64Kernels, LinesThatChangeAreDecodedAlike) {
    for (int round = 0; round < 8'000; ++round) {
        std::string text = Lines(Below(600), 4 * (1 + Below(30)), round % 2 == 0 ? "\n" : "\r\n");
        for (std::size_t changes = Below(4); changes != 0 && !text.empty(); --changes)
            switch (const std::size_t at = Below(text.size()); Below(4)) {
            case 0:
                text[at] = static_cast<char>(Below(256));
                break;
            case 1:
                text.insert(at, Below(4), ' ');
                break;
            case 2:
                text.erase(at, Below(9));
                break;
            default:
                text.insert(at, alphabet.substr(0, Below(40)));
            }
        ExpectSameDecoding(text, Below(700));
    }
}

TEST(Base64, TextsOfAllLengthsComeBack) {
    EXPECT_EQ(EncodeBase64("foobar"), "Zm9vYmFy");
    for (std::size_t size = 0; size <= 400; ++size) {
        const std::string bytes = RandomBytes(size);
        const std::string text = EncodeBase64(bytes);
        ASSERT_EQ(text, Expected(bytes));
        ASSERT_EQ(DecodeBase64(text), bytes);
        ASSERT_EQ(DecodeBase64(Expected(bytes, 1 + Below(80), " \r\n\t") + "\n"), bytes);
    }
}

std::string DecodeByStream(BinaryInputStream& source, std::size_t piece, std::string& text) {
    Base64DecoderStream stream(source);
    std::string bytes;
    for (std::size_t got = piece; got != 0;) {
        bytes.resize(bytes.size() + piece);
        try {
            got = static_cast<std::size_t>(stream.Read(bytes.data() + bytes.size() - piece, piece));
        } catch (const IOError& error) {
            EXPECT_EQ(text, "") << "once";
            text = error.GetText();
            EXPECT_EQ(Testing::RaisedBy<InvalidBase64>([&] { stream.Skip(1); }).GetText(), text);
            got = 0;
        }
        bytes.resize(bytes.size() - piece + got);
    }
    return bytes;
}

TEST(Base64, WhatIsNoBase64IsRefusedWithItsPlace) {
    const std::string character = "a character of the alphabet";
    const struct {
        std::string text;
        std::string bytes;    // in front of the fault
        std::string expected; // empty: there is no fault
        int offset = 0;
        std::string found = "";
    } rows[] = {
        {"", "", ""},
        {" \t\r\n", "", ""},
        {"QU JD\r\n RE\tVG ", "ABCDEF", ""},
        {" Q Q = = \n", "A", ""},
        {"QUI=", "AB", ""},
        {"QUJ=", "AB", ""},
        {"QUJDRE", "ABC", character + " or '='", 6, "the end"},
        {"QUJDREV\n", "ABC", character + " or '='", 8, "the end"},
        {"QUJDRE=F", "ABC", "'='", 7, "the byte 0x46 'F'"},
        {"QUJD=", "ABC", character, 4, "the byte 0x3D '='"},
        {"QUJDRA==QUJD", "ABCD", "the end", 8, "the byte 0x51 'Q'"},
        {"QUI==", "AB", "the end", 4, "the byte 0x3D '='"},
        {"QUJD QU-D", "ABC", character + " or '='", 7, "the byte 0x2D '-'"},
        {"\xEF\xBB\xBFQUJD", "", character, 0, "the byte 0xEF"},
        {std::string("QUJD\0", 5), "ABC", character, 4, "the byte 0x00"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.text));
        const std::string expected = row.expected.empty()
                                         ? ""
                                         : "Expected " + row.expected + " at offset " + std::to_string(row.offset) +
                                               " of the Base64 text, found " + row.found;
        EXPECT_EQ(DecodeBase64(row.text), expected.empty() ? std::optional(row.bytes) : std::nullopt);
        for (const std::size_t textPiece : {1u, 2u, 3u, 100u}) {
            const auto text = std::as_bytes(std::span(row.text));
            Testing::Trickle trickle(text, textPiece);
            std::string fault;
            EXPECT_EQ(DecodeByStream(trickle, 1, fault), row.bytes);
            EXPECT_EQ(fault, expected);
        }
    }
}

TEST(Base64Streams, DecodeWhereverTextAndBytesAreCut) {
    const std::string bytes = RandomBytes(50'000);
    for (const std::size_t lineLength : {76u, 75u, 4u, 1u, 0u}) {
        const std::string text = Expected(bytes, lineLength, "\r\n");
        for (const std::size_t textPiece : {0u, 1u, 17u, 5000u, 100'000u})
            for (const std::size_t piece : {1u, 5u, 4095u, 4096u, 10'001u, 60'000u}) {
                MemoryInputStream memory(text.data(), text.size());
                BufferedInputStream buffered(memory, 1000);
                Testing::Trickle trickle(std::as_bytes(std::span(text)), textPiece);
                std::string fault;
                BinaryInputStream& source = textPiece == 0 ? static_cast<BinaryInputStream&>(buffered) : trickle;
                ASSERT_TRUE(DecodeByStream(source, piece, fault) == bytes) << lineLength << ", " << textPiece;
                ASSERT_EQ(fault, "");
            }
    }
}

TEST(Base64Streams, AFailureOfTheSourceComesAfterWhatWasDecoded) {
    const std::string bytes = RandomBytes(300);
    const std::string text = Expected(bytes, 76, "\r\n");
    Testing::Trickle trickle(std::as_bytes(std::span(text)), 30, 200);
    Base64DecoderStream stream(trickle);
    std::string decoded(bytes.size(), '\0');
    std::size_t done = 0;
    EXPECT_THROW(while (done < decoded.size()) done += static_cast<std::size_t>(stream.Read(decoded.data() + done, 1)),
                 IOError);
    EXPECT_EQ(done, (200u - 2 * 2) / 4 * 3);
    done += static_cast<std::size_t>(stream.Read(decoded.data() + done, bytes.size() - done));
    EXPECT_EQ(done, bytes.size());
    EXPECT_EQ(decoded, bytes);
}

/// Keeps the text, and how it came.
class Pieces final : public BinaryOutputStream {
public:
    std::string text;
    std::vector<std::size_t> sizes;
    int flushes = 0;

protected:
    void DoWrite(const void* source, std::uint64_t size) override {
        sizes.push_back(static_cast<std::size_t>(size));
        text.append(static_cast<const char*>(source), sizes.back());
    }
    void DoFlush() override { ++flushes; }
};

TEST(Base64Streams, EncodeInLinesWhateverThePieces) {
    for (const std::size_t lineLength : {76u, 4u, 32u, 10u, 1u, 8192u, 20'000u, 0u})
        for (const std::string& separator : {std::string("\r\n"), std::string(), std::string(9000, ' ')})
            for (const std::size_t size : {0u, 1u, 56u, 57u, 58u, 768u, 1500u, 30'001u})
                for (const std::size_t mostInPiece : {1u, 100u, 5000u, 40'000u}) {
                    if (lineLength < 32 && separator.size() > 10 && size > 100)
                        continue;
                    const std::string bytes = RandomBytes(size);
                    Pieces target;
                    Base64EncoderStream stream(target, lineLength, separator);
                    for (std::size_t done = 0; done < size;) {
                        const std::size_t piece = std::min(size - done, 1 + Below(mostInPiece));
                        stream.Write(bytes.data() + done, piece);
                        done += piece;
                    }
                    stream.Finish();
                    ASSERT_TRUE(target.text == Expected(bytes, lineLength, separator))
                        << size << " bytes in lines of " << lineLength;
                    ASSERT_TRUE(target.sizes.empty() ||
                                std::all_of(target.sizes.begin(), target.sizes.end() - 1,
                                            [](std::size_t written) { return written >= 2048; }));
                    ASSERT_EQ(target.flushes, 1);
                }
}

TEST(Base64Streams, FlushHandsOverGroupsAndFinishTheRestOnce) {
    Pieces target;
    Base64EncoderStream stream(target, 6, "\n");
    std::string expected;
    for (const char* piece : {"f", "oo", "", "bar1", "2345", "6"}) {
        stream.Write(piece, std::strlen(piece));
        expected += piece;
        stream.Flush();
        EXPECT_EQ(target.text, Expected(expected.substr(0, expected.size() / 3 * 3), 6, "\n"));
    }
    EXPECT_EQ(target.flushes, 6);
    stream.Write("7", 1);
    stream.Finish();
    EXPECT_EQ(target.text, Expected("foobar1234567", 6, "\n"));
    EXPECT_EQ(target.flushes, 7);
    stream.Finish();
    EXPECT_EQ(target.flushes, 7);
    EXPECT_THROW(stream.Write("x", 1), LogicError);
    stream.Flush();
    EXPECT_EQ(target.text, Expected("foobar1234567", 6, "\n"));
}

} // namespace
