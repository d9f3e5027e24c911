#include "DefaultXML.h"

#include <QorCore/Base64.h>
#include <QorCore/BinaryPipe.h>
#include <QorCore/BoundedStreams.h>
#include <QorCore/MemoryStreams.h>
#include <QorCore/Thread.h>
#include <QorCore/XMLWriter.h>

#include <charconv>
#include <cstring>

namespace Qor::Tivor {

namespace {

constexpr std::uint64_t largestDataOnCallersThread = 4096;
constexpr std::uint64_t callersBufferSize = 8192; // takes the Base64 text of that data
constexpr std::uint64_t workersBufferSize = 2048;

void EncodeTo(Core::BinaryOutputStream& target, Serializer& serializer) {
    Core::Base64EncoderStream encoder(target);
    serializer.ToBinary(encoder);
    encoder.Finish();
}

/// Writes the data of an object into a pipe.
class ToXMLTask final : public Core::Task {
public:
    explicit ToXMLTask(Serializer& serializer) : m_serializer(serializer), m_pipe(workersBufferSize) {}

    void Run() override {
        const struct Closer {
            ~Closer() { pipe.CloseWrite(); }
            Core::BinaryPipe& pipe;
        } closer{m_pipe};
        EncodeTo(m_pipe.GetWriter(), m_serializer);
    }

    Core::BinaryPipe& GetPipe() { return m_pipe; }

private:
    Serializer& m_serializer;
    Core::BinaryPipe m_pipe;
};

void OutputOnOneThread(std::ostream& stream, Core::XMLWriter& writer, Serializer& serializer) {
    Core::BinaryPipe pipe(callersBufferSize);
    Core::BoundedOutputStream room(pipe.GetWriter(), callersBufferSize); // more would wait for ever
    EncodeTo(room, serializer);
    pipe.CloseWrite();
    writer.CData(stream, pipe.GetReader());
}

void OutputOnTwoThreads(std::ostream& stream, Core::XMLWriter& writer, Serializer& serializer) {
    const auto task = std::make_shared<ToXMLTask>(serializer);
    Core::Thread thread("XML Serializer", task);
    thread.Start();
    try {
        writer.CData(stream, task->GetPipe().GetReader());
    } catch (...) {
        task->GetPipe().CloseRead(); // so that the task ends
        throw;
    }
    thread.Join();
}

} // namespace

void OutputHex64(std::ostream& stream, Core::XMLWriter& writer, Serializer& serializer) {
    std::uint64_t number = 0;
    Core::MemoryOutputStream bytes(sizeof number); // there is memory, though there may be no bytes
    Core::BoundedOutputStream room(bytes, sizeof number);
    serializer.ToBinary(room);
    room.Flush();
    std::memcpy(&number, bytes.GetBytes().data(), bytes.GetSize());
    char text[16];
    char* const end = std::to_chars(text, text + sizeof text, number, 16).ptr;
    for (char* digit = text; digit != end; ++digit)
        if (*digit >= 'a')
            *digit -= 'a' - 'A';
    writer.Text(stream, {text, end});
}

void OutputBase64(std::ostream& stream, Core::XMLWriter& writer, Serializer& serializer) {
    if (serializer.GetDataSize_bytes() <= largestDataOnCallersThread)
        OutputOnOneThread(stream, writer, serializer);
    else
        OutputOnTwoThreads(stream, writer, serializer);
}

} // namespace Qor::Tivor
