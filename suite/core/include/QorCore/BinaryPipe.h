#pragma once

#include <QorCore/Stream.h>

#include <cstdint>
#include <exception>
#include <memory>

namespace Qor::Core {

/// Two streams: what is written to the one is read from the other. Between them stands a buffer of fixed size. A writer
/// waits while it is full; a reader waits until it has all that it asked for, or the writing end is closed. A reader
/// that waits lends its destination, which is then filled directly, whatever the size of the buffer: large reads are
/// fast. A stream that reads ahead from the reading end gets what there is when its buffer is full or the writing end
/// is flushed.
///
/// Thread rule: each end belongs to one thread at a time. One thread may have both as long as what is written and not
/// yet read fits the buffer, and no more is read than was written, or the writing end is closed. Any thread may close
/// either end at any time, and no thread waits at a pipe that has a closed end. The pipe outlives all calls.
class QOR_CORE_API BinaryPipe {
public:
    explicit BinaryPipe(std::uint64_t bufferSize);
    BinaryPipe(const BinaryPipe&) = delete;
    BinaryPipe& operator=(const BinaryPipe&) = delete;
    ~BinaryPipe();

    /// Does not know how many bytes are left.
    BinaryInputStream& GetReader();
    BinaryOutputStream& GetWriter();

    /// Ends what is read. With a failure: the reader gets what was written, and then that exception thrown, each time
    /// it reads. From then on writing is an `IOError`. Closing again changes nothing.
    void CloseWrite(std::exception_ptr failure = nullptr);

    /// Nothing more will be read: what is in the buffer is dropped, and reading and writing are an `IOError` from then
    /// on, also for a thread that waits. Closing again changes nothing.
    void CloseRead();

private:
    class Channel;
    class Reader;
    class Writer;

    std::unique_ptr<Channel> m_channel;
    std::unique_ptr<Reader> m_reader;
    std::unique_ptr<Writer> m_writer;
};

} // namespace Qor::Core
