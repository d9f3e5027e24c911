#include "StoredBytes.h"

#include <QorCore/Context.h>
#include <QorCore/MemoryStreams.h>

#include <gtest/gtest.h>

#include <cctype>
#include <thread>

namespace Qor::Tivor::Testing {

namespace {

std::string TextOf(const Core::MemoryOutputStream& stream) {
    return {reinterpret_cast<const char*>(stream.GetBytes().data()), stream.GetSize()};
}

} // namespace

std::string Bytes(std::string_view notation) {
    std::string bytes;
    for (std::size_t i = 0; i < notation.size(); ++i) {
        if (notation[i] == '\'') {
            const std::size_t end = notation.find('\'', i + 1);
            bytes += notation.substr(i + 1, end - i - 1);
            i = end;
        } else if (std::isxdigit(static_cast<unsigned char>(notation[i]))) {
            bytes += static_cast<char>(std::stoi(std::string(notation.substr(i++, 2)), nullptr, 16));
        }
    }
    return bytes;
}

std::string Stored(DataObject& object, const std::string& key) {
    Core::MemoryOutputStream stream;
    const std::uint64_t announced = SerializationManager::GetDataBlockSize_bytes(key, object);
    EXPECT_EQ(SerializationManager::OutputDataBlock(stream, key, object), announced);
    EXPECT_EQ(announced, stream.GetSize());
    return TextOf(stream);
}

std::string Stored(const DataContainer& container) {
    Core::MemoryOutputStream stream;
    const std::uint64_t announced = container.GetDataSize_bytes();
    EXPECT_EQ(container.OutputData(stream, true), announced);
    EXPECT_EQ(announced, stream.GetSize());
    return TextOf(stream);
}

std::string StoredXML(const DataContainer& container) {
    Core::MemoryOutputStream stream;
    container.OutputXML(stream);
    return TextOf(stream);
}

std::shared_ptr<DataObject> Read(const std::string& bytes) {
    Core::MemoryInputStream stream(bytes.data(), bytes.size());
    std::string key;
    std::shared_ptr<DataObject> object = SerializationManager::InputDataObject(stream, key);
    EXPECT_EQ(stream.BytesLeft(), std::optional<std::uint64_t>(0));
    return object;
}

std::uint64_t ReadInto(DataContainer& container, const std::string& bytes) {
    Core::MemoryInputStream stream(bytes.data(), bytes.size());
    return container.InputData(stream);
}

void ReadXMLInto(DataContainer& container, const std::string& document) {
    Core::MemoryInputStream stream(document.data(), document.size());
    container.InputXML(stream);
}

void ExpectNothingHeld(const DataContainer& container) {
    const Core::Context& context = Core::Context::Current();
    EXPECT_TRUE(context.nestingDepth == 0 && context.operation == nullptr && context.reading == nullptr &&
                context.lockSet == nullptr);
    std::thread([&] {
        std::vector<std::shared_ptr<Core::Lock>> locks;
        container.AcquireLocks(locks);
    }).join();
}

std::string Keys(const DataContainer& container) {
    std::string keys;
    for (const DataContainer::Entry& entry : container)
        keys += entry.key + " ";
    return keys;
}

} // namespace Qor::Tivor::Testing
