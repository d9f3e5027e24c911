#include <QorCore/Alert.h>
#include <QorCore/BinaryPipe.h>

#include <algorithm>
#include <condition_variable>
#include <mutex>

namespace Qor::Core {

namespace {

[[noreturn]] void RaiseClosed(const char* text) {
    Error::RaiseError(IOError(text), QOR_CODE_CONTEXT("BinaryPipe"), "Qor.Core.BinaryPipe");
}

} // namespace

/// What both ends share. A destination is lent only while the buffer is empty.
class BinaryPipe::Channel {
public:
    explicit Channel(std::uint64_t bufferSize)
        : m_size(bufferSize), m_buffer(std::make_unique_for_overwrite<std::byte[]>(static_cast<std::size_t>(m_size))) {}

    std::uint64_t Read(std::byte* destination, std::uint64_t size);
    void Write(const std::byte* source, std::uint64_t size);
    void Flush();
    void CloseWrite(std::exception_ptr failure);
    void CloseRead();

private:
    std::uint64_t TakeBuffered(std::byte* destination, std::uint64_t size);
    std::uint64_t Lend(std::unique_lock<std::mutex>& lock, std::byte* destination, std::uint64_t size,
                       std::uint64_t filled);
    void EndLoan();
    std::uint64_t WriteSome(const std::byte* source, std::uint64_t size);
    void RequireReader() const {
        if (m_isReadClosed)
            RaiseClosed("The reading end of a pipe was closed");
    }

    const std::uint64_t m_size;
    const std::unique_ptr<std::byte[]> m_buffer;
    std::mutex m_mutex;
    std::condition_variable m_loanEnded;
    std::condition_variable m_roomMade;
    std::uint64_t m_begin = 0; ///< of what is in the buffer, which goes on at its beginning
    std::uint64_t m_filled = 0;
    std::byte* m_lent = nullptr;
    std::uint64_t m_lentSize = 0;
    std::uint64_t m_lentFilled = 0;
    bool m_isWriterWaiting = false;
    bool m_isWriteClosed = false;
    bool m_isReadClosed = false;
    std::exception_ptr m_failure;
};

std::uint64_t BinaryPipe::Channel::TakeBuffered(std::byte* destination, std::uint64_t size) {
    const std::uint64_t taken = std::min(size, m_filled);
    const std::uint64_t front = std::min(taken, m_size - m_begin);
    std::copy_n(m_buffer.get() + m_begin, front, destination);
    std::copy_n(m_buffer.get(), taken - front, destination + front);
    m_filled -= taken;
    m_begin = m_filled != 0 ? (m_begin + taken) % m_size : 0;
    return taken;
}

std::uint64_t BinaryPipe::Channel::Lend(std::unique_lock<std::mutex>& lock, std::byte* destination, std::uint64_t size,
                                        std::uint64_t filled) {
    m_lent = destination;
    m_lentSize = size;
    m_lentFilled = filled;
    m_loanEnded.wait(lock, [this] { return m_lent == nullptr; });
    return m_lentFilled;
}

void BinaryPipe::Channel::EndLoan() {
    m_lent = nullptr;
    m_loanEnded.notify_one();
}

std::uint64_t BinaryPipe::Channel::Read(std::byte* destination, std::uint64_t size) {
    std::unique_lock lock(m_mutex);
    RequireReader();
    std::uint64_t done = TakeBuffered(destination, size);
    // A writer that waits has more; that would come through the buffer piece by piece.
    const bool isWriterWaiting = m_isWriterWaiting;
    if (isWriterWaiting)
        m_roomMade.notify_one();
    if (done < size && !m_isWriteClosed && (done == 0 || isWriterWaiting))
        done = Lend(lock, destination, size, done);
    if (done == 0) {
        RequireReader();
        if (m_failure)
            std::rethrow_exception(m_failure);
    }
    return done;
}

std::uint64_t BinaryPipe::Channel::WriteSome(const std::byte* source, std::uint64_t size) {
    if (m_lent != nullptr) {
        const std::uint64_t done = std::min(size, m_lentSize - m_lentFilled);
        std::copy_n(source, done, m_lent + m_lentFilled);
        m_lentFilled += done;
        if (m_lentFilled == m_lentSize)
            EndLoan();
        return done;
    }
    const std::uint64_t done = std::min(size, m_size - m_filled);
    if (done == 0)
        return 0;
    const std::uint64_t end = (m_begin + m_filled) % m_size;
    const std::uint64_t front = std::min(done, m_size - end);
    std::copy_n(source, front, m_buffer.get() + end);
    std::copy_n(source + front, done - front, m_buffer.get());
    m_filled += done;
    return done;
}

void BinaryPipe::Channel::Write(const std::byte* source, std::uint64_t size) {
    std::unique_lock lock(m_mutex);
    while (size != 0) {
        RequireReader();
        if (m_isWriteClosed)
            RaiseClosed("The writing end of a pipe was closed");
        const std::uint64_t done = WriteSome(source, size);
        source += done;
        size -= done;
        if (done == 0) {
            m_isWriterWaiting = true;
            m_roomMade.wait(
                lock, [this] { return m_filled < m_size || m_lent != nullptr || m_isReadClosed || m_isWriteClosed; });
            m_isWriterWaiting = false;
        }
    }
}

void BinaryPipe::Channel::Flush() {
    const std::lock_guard lock(m_mutex);
    if (m_lent != nullptr && m_lentFilled != 0)
        EndLoan();
}

void BinaryPipe::Channel::CloseWrite(std::exception_ptr failure) {
    const std::lock_guard lock(m_mutex);
    if (m_isWriteClosed)
        return;
    m_isWriteClosed = true;
    m_failure = std::move(failure);
    EndLoan();
    m_roomMade.notify_one();
}

void BinaryPipe::Channel::CloseRead() {
    const std::lock_guard lock(m_mutex);
    m_isReadClosed = true;
    m_filled = 0;
    EndLoan();
    m_roomMade.notify_one();
}

class BinaryPipe::Reader final : public BinaryInputStream {
public:
    explicit Reader(Channel& channel) : m_channel(channel) {}

protected:
    std::uint64_t DoRead(void* destination, std::uint64_t size) override {
        return m_channel.Read(static_cast<std::byte*>(destination), size);
    }

private:
    Channel& m_channel;
};

class BinaryPipe::Writer final : public BinaryOutputStream {
public:
    explicit Writer(Channel& channel) : m_channel(channel) {}

protected:
    void DoWrite(const void* source, std::uint64_t size) override {
        m_channel.Write(static_cast<const std::byte*>(source), size);
    }
    void DoFlush() override { m_channel.Flush(); }

private:
    Channel& m_channel;
};

BinaryPipe::BinaryPipe(std::uint64_t bufferSize)
    : m_channel(std::make_unique<Channel>(bufferSize)), m_reader(std::make_unique<Reader>(*m_channel)),
      m_writer(std::make_unique<Writer>(*m_channel)) {}

BinaryPipe::~BinaryPipe() = default;

BinaryInputStream& BinaryPipe::GetReader() { return *m_reader; }

BinaryOutputStream& BinaryPipe::GetWriter() { return *m_writer; }

void BinaryPipe::CloseWrite(std::exception_ptr failure) { m_channel->CloseWrite(std::move(failure)); }

void BinaryPipe::CloseRead() { m_channel->CloseRead(); }

} // namespace Qor::Core
