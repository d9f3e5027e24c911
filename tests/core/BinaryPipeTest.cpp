#include "Alerts.h"
#include "Threads.h"

#include <QorCore/BinaryPipe.h>
#include <QorCore/BufferedStreams.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <thread>

namespace {

using namespace Qor::Core;
using Testing::LetOthersRun;

std::string Numbered(std::size_t size) {
    std::string bytes(size, '\0');
    for (std::size_t index = 0; index < size; ++index)
        bytes[index] = static_cast<char>(index * 7 + index / 256);
    return bytes;
}

void Write(BinaryPipe& pipe, const std::string& bytes) { pipe.GetWriter().Write(bytes.data(), bytes.size()); }

std::string Read(BinaryInputStream& stream, std::size_t size) {
    std::string bytes(size, '\0');
    bytes.resize(static_cast<std::size_t>(stream.Read(bytes.data(), size)));
    return bytes;
}

std::string Read(BinaryPipe& pipe, std::size_t size) { return Read(pipe.GetReader(), size); }

TEST(BinaryPipe, AFailureFollowsWhatWasWritten) {
    BinaryPipe pipe(10);
    Write(pipe, "abcdef");
    pipe.CloseWrite(std::make_exception_ptr(LogicError("of the writer")));
    pipe.CloseWrite();
    EXPECT_EQ(Read(pipe, 2), "ab");
    EXPECT_EQ(Read(pipe, 4), "cdef");
    for (int again = 0; again < 2; ++again)
        EXPECT_EQ(Testing::RaisedBy<LogicError>([&] { Read(pipe, 1); }).GetText(), "of the writer");
}

TEST(BinaryPipe, NothingPassesAClosedReadingEnd) {
    BinaryPipe pipe(10);
    Write(pipe, "abc");
    pipe.CloseRead();
    pipe.CloseRead();
    for (const auto& operation : {std::function([&] { Write(pipe, "x"); }), std::function([&] { Read(pipe, 1); })})
        EXPECT_EQ(Testing::RaisedBy<IOError>(operation).GetText(), "The reading end of a pipe was closed");
}

TEST(BinaryPipeThreads, AllBytesArriveInOrder) {
    const std::string bytes = Numbered(60'000);
    constexpr std::size_t sizes[] = {1, 300, 100'000};
    for (const std::size_t bufferSize : {0u, 1u, 7u, 2048u, 8192u, 70'000u})
        for (const std::size_t mostWritten : sizes)
            for (const std::size_t mostRead : sizes)
                for (const int slowSide : {0, 1, 2}) {
                    const std::size_t size = std::min({bytes.size(), mostWritten * 1000, mostRead * 1000});
                    BinaryPipe pipe(bufferSize);
                    const auto travel = [&](unsigned seed, std::size_t most, bool isSlow, const auto& pass) {
                        std::minstd_rand random(seed);
                        for (std::size_t done = 0; done < size;) {
                            const std::size_t piece = std::min(size - done, 1 + random() % most);
                            if (isSlow && random() % (size / most / 8 + 1) == 0)
                                std::this_thread::sleep_for(std::chrono::microseconds(100));
                            pass(done, piece);
                            done += piece;
                        }
                    };
                    std::thread writer([&] {
                        travel(1, mostWritten, slowSide == 1, [&](std::size_t at, std::size_t piece) {
                            pipe.GetWriter().Write(bytes.data() + at, piece);
                        });
                        pipe.CloseWrite();
                    });
                    std::string read(size, '\0');
                    travel(2, mostRead, slowSide == 2, [&](std::size_t at, std::size_t piece) {
                        EXPECT_EQ(pipe.GetReader().Read(read.data() + at, piece), piece);
                    });
                    EXPECT_EQ(Read(pipe, 1), "");
                    writer.join();
                    ASSERT_TRUE(read == bytes.substr(0, size)) << bufferSize << ", " << mostWritten << ", " << mostRead;
                }
}

TEST(BinaryPipeThreads, ALargeReadIsFilledPastTheBufferInOneGo) {
    const std::string bytes = Numbered(64 * 1024);
    for (const bool writerIsFirst : {false, true}) {
        BinaryPipe pipe(2048);
        std::thread writer([&] {
            if (!writerIsFirst)
                LetOthersRun();
            EXPECT_NO_THROW(Write(pipe, bytes)) << "the reader left before it had all";
        });
        if (writerIsFirst)
            LetOthersRun();
        // It asks the pipe once; what came through the buffer piece by piece would be 2048 bytes.
        BufferedInputStream ahead(pipe.GetReader(), bytes.size());
        EXPECT_EQ(Read(ahead, 1), bytes.substr(0, 1));
        pipe.CloseRead();
        EXPECT_TRUE(Read(ahead, bytes.size() - 1) == bytes.substr(1));
        writer.join();
    }
}

TEST(BinaryPipeThreads, WhatIsFlushedReachesThoseWhoReadAhead) {
    BinaryPipe there(16);
    BinaryPipe back(16);
    std::thread echo([&] {
        BufferedInputStream ahead(there.GetReader(), 1000);
        for (int round = 0; round < 100; ++round) {
            Write(back, Read(ahead, 3));
            back.GetWriter().Flush();
        }
    });
    BufferedInputStream ahead(back.GetReader(), 1000);
    LetOthersRun();
    there.GetWriter().Flush(); // of nothing is no end
    for (int round = 0; round < 100; ++round) {
        Write(there, "abc");
        there.GetWriter().Flush();
        ASSERT_EQ(Read(ahead, 3), "abc");
    }
    echo.join();
}

} // namespace
