#include "KeptXML.h"

#include "CachingContentHandler.h"

#include <QorCore/MemoryStreams.h>
#include <Tivor/XMLHandler.h>

#include <utility>

namespace Qor::Tivor {

namespace {

/// Bytes in memory, then those of a stream.
class JoinedInputStream final : public Core::BinaryInputStream {
public:
    JoinedInputStream(const std::string& head, BinaryInputStream& rest) : m_rest(rest) {
        const auto* const begin = reinterpret_cast<const std::byte*>(head.data());
        SetWindow(begin, begin + head.size());
    }

    std::uint64_t GetHeadLeft() const { return WindowSize(); }

protected:
    std::uint64_t DoRead(void* destination, std::uint64_t size) override { return m_rest.Read(destination, size); }
    std::uint64_t DoSkip(std::uint64_t size) override { return m_rest.Skip(size); }
    std::optional<std::uint64_t> DoBytesLeft() const override { return m_rest.BytesLeft(); }

private:
    BinaryInputStream& m_rest;
};

/// Hands the content of the root element, whatever that is, to another handler.
class ContentReader final : public XMLHandler {
public:
    explicit ContentReader(std::shared_ptr<XMLContentHandler> handler) : m_handler(std::move(handler)) {}

    /// Reads what stands behind the prefix.
    void Read(std::string_view data) {
        std::string document = "<Data>";
        document += data.substr(keptXMLPrefix.size());
        document += "</Data>";
        Core::MemoryInputStream stream(document.data(), document.size());
        const Core::Lock lock = AcquireParseLock();
        XMLDataParser().Parse(stream, *this);
    }

    void OnStartTagContent() override {
        if (m_handler)
            PushHandler(std::exchange(m_handler, nullptr));
        else
            XMLHandler::OnStartTagContent();
    }

private:
    std::shared_ptr<XMLContentHandler> m_handler;
};

} // namespace

// The record of the content must be the content again: what is kept comes back as it was.
bool IsKeptXML(std::string_view data) {
    if (!data.starts_with(keptXMLPrefix))
        return false;
    bool isRecord = false;
    try {
        ContentReader(std::make_shared<CachingContentHandler>([&](const std::string& content) {
            isRecord = content == data.substr(keptXMLPrefix.size());
        })).Read(data);
    } catch (const Core::IOError&) {
        return false;
    }
    return isRecord;
}

void ReplayKeptXML(std::string_view data, Serializer& serializer, const DataObjectHeader& header) {
    auto handler = serializer.GetXMLContentHandler({{"typeid", std::to_string(header.typeCode)},
                                                    {"typename", header.typeName},
                                                    {"version", header.version},
                                                    {"module", header.module}});
    ContentReader(std::move(handler)).Read(data);
}

std::uint64_t InputPossiblyKept(Core::BinaryInputStream& block, Serializer& serializer,
                                const DataObjectHeader& header) {
    std::string head(keptXMLPrefix.size(), '\0');
    head.resize(static_cast<std::size_t>(block.Read(head.data(), head.size())));
    if (head == keptXMLPrefix) {
        std::string rest;
        if (Core::DataInputStream(block).ReadBytes(rest, header.dataSize - head.size()) && IsKeptXML(head + rest)) {
            ReplayKeptXML(head + rest, serializer, header);
            return 0;
        }
        head += rest;
    }
    JoinedInputStream joined(head, block);
    serializer.DataFromBinary(header.dataSize, joined);
    return joined.GetHeadLeft();
}

} // namespace Qor::Tivor
