#include "TemporaryDirectory.h"
#include "TestHeap.h"

#include <QorCore/Stream.h>
#include <QorCore/XMLParser.h>
#include <Tivor/Data2D.h>
#include <Tivor/XMLDataFile.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace Qor::Tivor::Testing {

namespace {

constexpr std::uint64_t numLines = 1'000'000;
constexpr std::string_view lineOfSection =
    "QUJDREVGR0hJSktMTU5PUFFSU1RVVldYWVphYmNkZWZnaGlqa2xtbm9wcXJzdHV2d3h5ejAxMjM0NTY3\r\n";

// A document of a single section, made while it is read.
class Generator final : public Core::BinaryInputStream {
public:
    std::uint64_t numDelivered = 0;

protected:
    std::uint64_t DoRead(void* destination, std::uint64_t size) override {
        if (m_next.empty() && m_numLines != numLines)
            m_next = ++m_numLines < numLines ? lineOfSection : "]]></a>";
        const std::size_t done = m_next.copy(static_cast<char*>(destination), static_cast<std::size_t>(size));
        m_next.remove_prefix(done);
        numDelivered += done;
        return done;
    }

private:
    std::string_view m_next = "<a><![CDATA[";
    std::uint64_t m_numLines = 0;
};

class Consumer final : public Core::XMLParseHandler {
public:
    explicit Consumer(const Generator& source) : m_source(source) {}

    void OnCDataSection(Core::BinaryInputStream& section) override {
        for (std::uint64_t read = m_piece.size(); read == m_piece.size();) {
            read = section.Read(m_piece.data(), m_piece.size());
            numRead += read;
            numLinesRead += static_cast<std::uint64_t>(std::count(m_piece.data(), m_piece.data() + read, '\n'));
            mostAhead = std::max(mostAhead, m_source.numDelivered - numRead - numLinesRead);
        }
    }

    std::uint64_t numRead = 0;
    std::uint64_t numLinesRead = 0;
    std::uint64_t mostAhead = 0; // how much of the document was somewhere between source and handler

private:
    const Generator& m_source;
    std::array<char, 50'000> m_piece;
};

} // namespace

TEST(XMLSectionHeap, SectionsDoNotStandInMemory) {
    Generator source;
    Consumer consumer(source);
    const HeapWatch watch(1024 * 1024);
    Core::XMLParser<Consumer>().Parse(source, consumer);
    EXPECT_EQ(consumer.numLinesRead, numLines - 1);
    EXPECT_EQ(consumer.numRead, (numLines - 1) * (lineOfSection.size() - 1));
    EXPECT_LE(consumer.mostAhead, 128u * 1024);
    EXPECT_LE(watch.GetPeak(), 256u * 1024);
}

TEST(XMLSectionHeap, SurfacesAreSavedAndOpenedWithoutACopy) {
    using Matrix = Nalix::Matrix<double, Nalix::basic_row_major>;
    const Core::Testing::TemporaryDirectory directory;
    const std::string path = (directory / "surface.qordml").ToString();
    Matrix matrix(2048, 2048);
    for (std::size_t i = 0; i < matrix.size(); ++i)
        matrix.data()[i] = static_cast<double>(i) * 0.37;
    const auto content = DataContainer::Create();
    content->PutValue("Height", Data2D(MakeData(matrix)));
    XMLDataFile file(path, DataFile::eREAD_WRITE, DataFile::eCREATE_NEW, content);
    {
        const HeapWatch watch(64 * 1024 * 1024);
        file.Flush();
        EXPECT_LE(watch.GetPeak(), 1024u * 1024);
    }
    file.Close();
    {
        const HeapWatch watch(64 * 1024 * 1024);
        file.Open(path, DataFile::eREAD_ONLY, DataFile::eOPEN_EXISTING, nullptr);
        EXPECT_LE(watch.GetPeak(), matrix.size() * sizeof(double) + 1024u * 1024);
    }
    const auto read = file.GetPtr<Data2D>("Height")->GetContent()->GetPtr<Matrix>("Matrix");
    ASSERT_TRUE(read && read->size() == matrix.size());
    EXPECT_TRUE(std::equal(matrix.data(), matrix.data() + matrix.size(), read->data()));
}

} // namespace Qor::Tivor::Testing
