// The worked examples of docs/format are what the library writes and reads.
#include <QorCore/MemoryStreams.h>
#include <Tivor/BinaryDataFile.h>
#include <Tivor/ScalarData.h>
#include <Tivor/UnboundDataObject.h>
#include <Tivor/XMLDataFile.h>

#include <gtest/gtest.h>

#include <StoredBytes.h>
#include <TemporaryDirectory.h>
#include <sstream>
#include <string>

namespace Qor::Tivor::Testing {

using namespace Core::Testing;

namespace {

std::string PageText(const std::string& name) {
    return ReadFileText(Core::PathName(TIVOR_PROJECT "/docs/format/" + name));
}

/// The bytes of the page's dump: lines of an offset, two blanks, bytes, two blanks, and what they mean. Fails where an
/// offset is not the number of bytes before it.
std::string BytesOfPage() {
    std::istringstream page(PageText("binary.md"));
    std::string bytes;
    for (std::string line; std::getline(page, line);) {
        if (line.size() < 12 || line.find_first_not_of("0123456789abcdef") != 8 || line.compare(8, 2, "  ") != 0)
            continue;
        EXPECT_EQ(std::stoul(line.substr(0, 8), nullptr, 16), bytes.size()) << line;
        bytes += Bytes(line.substr(10, line.find("  ", 10) - 10));
    }
    return bytes;
}

/// The documents on the page.
std::vector<std::string> DocumentsOfPage() {
    const std::string page = PageText("xml.md");
    std::vector<std::string> documents;
    for (std::size_t begin = 0; (begin = page.find("```xml\n", begin)) != page.npos;) {
        begin += 7;
        documents.push_back(page.substr(begin, page.find("```", begin) - begin));
    }
    return documents;
}

void PutHeights(DataContainer& container) {
    RowMajorMatrix<float> heights(1, 2);
    heights(0, 0) = 1;
    heights(0, 1) = -2;
    container.PutValue("Heights", heights);
}

void Fill(DataContainer& container) {
    container.PutValue("Spacing", 0.5);
    container.PutValue("Operator", "Ada");
    container.GetSubData({"Axes", "X"}, true)->PutValue("Points", 2);
    PutHeights(container);
}

void FillWithMore(DataContainer& container) {
    container.PutValue("Spacing", 0.5);
    container.PutValue("Operator", "Ada & Bob");
    container.PutValue("\x01Raw", "\xFF\xFE");
    container.PutValue("Measured", Core::Time::FromString("2024-01-31T12:34:56Z"));
    const auto mode = std::make_shared<ScalarData>("ScanMode", eSIGNED_INTEGRAL_TYPE);
    mode->SetValue(-3);
    container.Put("Mode", mode);
    container.PutValue("Pitch", UnitizedDouble(0.5, "Micrometer"));
    container.GetSubData({"Axes", "X"}, true)->PutValue("Points", 2);
    container.GetSubData({"Axes", "Y"}, true);
    PutHeights(container);
    const auto spectrum = std::make_shared<UnboundData>("Spectrum", "lab", false, false);
    spectrum->SetVersion("1.2");
    const std::string content = UnboundData::sCUSTOM_XML_PREFIX + R"(<Band from="400" to="500">0.25</Band>)";
    Core::MemoryInputStream stream(content.data(), content.size());
    spectrum->GetSerializer()->DataFromBinary(content.size(), stream);
    container.Put("Spectrum", spectrum);
}

} // namespace

TEST(FormatPage, ShowsTheBytesOfAFile) {
    const TemporaryDirectory directory;
    const std::string written = (directory / "written.dataset").ToString();
    BinaryDataFile file(written, DataFile::eREAD_WRITE, DataFile::eCREATE_NEW, nullptr);
    Fill(file);
    file.Flush();
    EXPECT_EQ(BytesOfPage(), ReadFileText(Core::PathName(written)));

    const std::string copied = (directory / "copied.dataset").ToString();
    WriteFileText(Core::PathName(copied), BytesOfPage());
    const BinaryDataFile read(copied, DataFile::eREAD_ONLY, DataFile::eOPEN_EXISTING, nullptr);
    EXPECT_TRUE(read == file);
}

TEST(FormatPage, ShowsADocumentAndWhatOthersMayMakeOfIt) {
    const TemporaryDirectory directory;
    const std::string written = (directory / "written.qordml").ToString();
    XMLDataFile file(written, DataFile::eREAD_WRITE, DataFile::eCREATE_NEW, nullptr);
    FillWithMore(file);
    file.Flush();
    const std::vector<std::string> documents = DocumentsOfPage();
    ASSERT_EQ(documents.size(), 2u);
    EXPECT_EQ(documents[0], ReadFileText(Core::PathName(written)));
    for (const std::string& document : documents)
        for (const char* const lineEnd : {"\n", "\r\n", "\r"}) {
            std::string text;
            for (const char c : document)
                text += c == '\n' ? lineEnd : std::string(1, c);
            EXPECT_EQ(Stored(*DataContainer::FromXMLString(text)), Stored(file)) << text;
        }
}

} // namespace Qor::Tivor::Testing
