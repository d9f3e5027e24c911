// The worked example of docs/format/binary.md is what the library writes and reads.
#include <Tivor/BinaryDataFile.h>

#include <gtest/gtest.h>

#include <StoredBytes.h>
#include <TemporaryDirectory.h>
#include <sstream>
#include <string>

namespace Qor::Tivor::Testing {

using Core::Testing::ReadFileText;
using Core::Testing::TemporaryDirectory;
using Core::Testing::WriteFileText;

namespace {

/// The bytes of the page's dump: lines of an offset, two blanks, bytes, two blanks, and what they mean. Fails where an
/// offset is not the number of bytes before it.
std::string BytesOfPage() {
    std::istringstream page(ReadFileText(Core::PathName(TIVOR_PROJECT "/docs/format/binary.md")));
    std::string bytes;
    for (std::string line; std::getline(page, line);) {
        if (line.size() < 12 || line.find_first_not_of("0123456789abcdef") != 8 || line.compare(8, 2, "  ") != 0)
            continue;
        EXPECT_EQ(std::stoul(line.substr(0, 8), nullptr, 16), bytes.size()) << line;
        bytes += Bytes(line.substr(10, line.find("  ", 10) - 10));
    }
    return bytes;
}

void Fill(DataContainer& container) {
    container.PutValue("Spacing", 0.5);
    container.PutValue("Operator", "Ada");
    container.GetSubData({"Axes", "X"}, true)->PutValue("Points", 2);
    RowMajorMatrix<float> heights(1, 2);
    heights(0, 0) = 1;
    heights(0, 1) = -2;
    container.PutValue("Heights", heights);
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

} // namespace Qor::Tivor::Testing
