#include "Alerts.h"
#include "ForeignObject.h"
#include "StoredBytes.h"

#include <QorCore/Base64.h>
#include <QorCore/Mutex.h>
#include <QorCore/XMLWriter.h>
#include <Tivor/DataContainer.h>

#include <gtest/gtest.h>

#include <ostream>
#include <sstream>
#include <stdexcept>
#include <streambuf>
#include <thread>

// Data of more than 4096 bytes is written into XML by a second thread: whoever writes sees no difference.

namespace Qor::Tivor::Testing {

namespace {

using namespace Core::Testing;
using namespace std::string_literals;

constexpr std::size_t sizes[] = {7, 9, 4096, 4097, 100'000};

/// A medium of which the n-th write fails, and all that follow.
class FailingBuffer final : public std::streambuf {
public:
    explicit FailingBuffer(int n) : m_writesLeft(n) {}

    bool HasFailed() const { return m_writesLeft <= 0; }

protected:
    std::streamsize xsputn(const char*, std::streamsize size) override {
        if (--m_writesLeft <= 0)
            Core::Error::RaiseError(Core::IOError("The disk is full"), QOR_CODE_CONTEXT("Test"), "Test.Medium");
        return size;
    }
    int_type overflow(int_type character) override {
        const char c = traits_type::to_char_type(character);
        xsputn(&c, 1);
        return traits_type::not_eof(character);
    }

private:
    int m_writesLeft;
};

std::shared_ptr<ForeignObject> Foreign(std::size_t size) {
    auto object = std::make_shared<ForeignObject>();
    object->announced = size;
    for (std::size_t i = 0; i < size; ++i)
        object->written += static_cast<char>(i * i >> 3);
    return object;
}

std::shared_ptr<DataContainer> Around(const std::shared_ptr<ForeignObject>& object) {
    const auto container = DataContainer::Create();
    container->PutValue("before", 1);
    container->GetSubData({"sub"}, true)->Put("odd", object);
    return container;
}

void Write(const std::shared_ptr<ForeignObject>& object, std::ostream& stream) {
    Core::XMLWriter writer;
    Around(object)->Output(stream, writer, "");
}

/// What writing the object raises, with its keys, and what it warns of.
std::string OutcomeOf(const std::shared_ptr<ForeignObject>& object, bool isBinary, bool refusesWarnings) {
    const Warnings warnings(refusesWarnings);
    std::string outcome = ErrorOf([&] { isBinary ? Stored(*Around(object)) : StoredXML(*Around(object)); });
    for (const std::string& warning : warnings.Tell())
        outcome += '!' + warning;
    return outcome;
}

std::string ExpectedSection(const std::string& bytes) {
    const std::string text = Core::EncodeBase64(bytes);
    std::string lines;
    for (std::size_t i = 0; i < text.size(); i += 76)
        lines += (i == 0 ? "" : "\r\n") + text.substr(i, 76);
    return "<![CDATA[" + lines + "]]>";
}

} // namespace

TEST(XMLOutput, IsTheSameTextFromOneThreadAndFromTwo) {
    for (const std::size_t size : {9u, 56u, 57u, 58u, 114u, 4095u, 4096u, 4097u, 4104u, 6144u, 100'000u}) {
        const auto object = Foreign(size);
        std::thread::id thread;
        object->onWrite = [&] { thread = std::this_thread::get_id(); };
        std::ostringstream stream;
        Write(object, stream);
        const std::string text = stream.str();
        EXPECT_EQ(thread == std::this_thread::get_id(), size <= 4096);
        const std::size_t begin = text.find("<![CDATA[");
        ASSERT_NE(begin, text.npos);
        EXPECT_EQ(text.substr(begin, text.find("</Data>", begin) - begin), ExpectedSection(object->written)) << size;
    }
}

TEST(XMLOutput, EndsWhereTheStreamFails) {
    for (const std::size_t size : sizes)
        for (const bool throws : {true, false}) {
            int n = 0;
            for (bool met = true; met && n < 2000;) {
                SCOPED_TRACE(testing::Message() << size << " bytes, write " << ++n);
                FailingBuffer buffer(n);
                std::ostream stream(&buffer);
                if (throws)
                    stream.exceptions(std::ios_base::badbit | std::ios_base::failbit);
                const std::string error = ErrorOf([&] { Write(Foreign(size), stream); });
                met = buffer.HasFailed();
                EXPECT_EQ(error.substr(0, error.find(';')),
                          met && throws ? "IOError [Test.Medium] The disk is full" : "");
                EXPECT_EQ(stream.good(), !met);
            }
            EXPECT_GT(n, 20) << "the object made hardly any write";
        }
}

TEST(BothOutputs, PassOnWhatSerializersDo) {
    const std::string mine = "LogicError [] mine; Key = odd; Key = sub";
    const std::string unknown = "UnknownError [Qor.Tivor.SerializationManager] Writing a data object failed: ";
    const std::string wrapped = "; Data Type Name = Test.Foreign; Module = absent.dll; Key = sub";
    const std::string key = "; Key = odd; Key = sub";
    struct Row {
        std::function<void()> onWrite;
        int more; ///< than announced
        bool refuses;
        std::string outcome; ///< with ! for the warning
    };
    const Row rows[] = {
        {[] {}, 0, false, ""},
        {[] { throw Core::LogicError("mine"); }, 0, false, mine},
        {[] { throw std::runtime_error("out of paper"); }, 0, false, unknown + "out of paper" + wrapped},
        {[] { throw 7; }, 0, false, unknown + "an exception of unknown type" + wrapped},
        {[] {}, -2, false, "!"},
        {[] {}, -2, true, "Error [] refused" + key + "!"},
        {[] { throw Core::LogicError("mine"); }, -2, true, mine},
        {[] {}, 3, false, "IOError "},
    };
    for (const bool isBinary : {false, true})
        for (const std::size_t size : sizes)
            for (const Row& row : rows) {
                SCOPED_TRACE(testing::Message() << (isBinary ? "binary " : "XML ") << size << ": " << row.outcome);
                const auto object = Foreign(size);
                object->onWrite = row.onWrite;
                object->announced -= static_cast<std::uint64_t>(row.more);
                const std::string outcome = OutcomeOf(object, isBinary, row.refuses);
                std::string expected = row.outcome;
                if (expected.ends_with('!'))
                    expected += "SkippingData [Qor.Tivor.Serializ"s + (isBinary ? "ationManager" : "er") +
                                "] A Test.Foreign version 1.2 from module absent.dll output " + std::to_string(size) +
                                " bytes but the serialized data size was " + std::to_string(size + 2) +
                                " bytes, padding remaining bytes...";
                if (row.more <= 0)
                    EXPECT_EQ(outcome, expected);
                else
                    EXPECT_TRUE(outcome.starts_with(expected) && outcome.ends_with(key)) << outcome;
            }
}

TEST(XMLOutput, LetsTheSecondThreadEnterWhatTheFirstHolds) {
    Core::Mutex mutex;
    const auto object = Foreign(100'000);
    int entered = 0;
    object->onWrite = [&] {
        const Core::MutexGuard guard(mutex);
        ++entered;
    };
    std::ostringstream stream;
    {
        const Core::MutexGuard guard(mutex);
        Write(object, stream);
    }
    EXPECT_EQ(entered, 1);
    // The locks of the container are held for the whole of it.
    const auto container = DataContainer::Create(true);
    container->Put("odd", object);
    object->onWrite = [&] { entered += container->Exists("odd") ? 1 : 0; };
    Core::XMLWriter writer;
    container->Output(stream, writer, "");
    EXPECT_EQ(entered, 2);
}

} // namespace Qor::Tivor::Testing
