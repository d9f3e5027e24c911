#include "TemporaryDirectory.h"
#include "TestHeap.h"

#include <Tivor/Codec.h>
#include <Tivor/XMLDataFile.h>

#include <gtest/gtest.h>

#include <algorithm>

namespace Qor::Tivor::Testing {

TEST(XMLSectionHeap, DataSetsAreSavedAndOpenedWithoutACopy) {
    using Matrix = Nalix::Matrix<double, Nalix::basic_row_major>;
    const Core::Testing::TemporaryDirectory directory;
    const std::string path = (directory / "set.qordml").ToString();
    Matrix matrix(2048, 2048);
    for (std::size_t i = 0; i < matrix.size(); ++i)
        matrix.data()[i] = static_cast<double>(i) * 0.37;
    const auto content = DataContainer::Create();
    const auto surface = Data2D::Create(MakeData(matrix));
    {
        const HeapWatch watch(64 * 1024 * 1024);
        DataSet set(surface, "Height");
        Encode(set, *content, DataSet::sFORMAT);
        EXPECT_LE(watch.GetPeak(), 128u * 1024);
    }
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
    const auto read = DataSet(file).GetData2D("Height")->GetContent()->GetPtr<Matrix>("Matrix");
    ASSERT_TRUE(read && read->size() == matrix.size());
    EXPECT_TRUE(std::equal(matrix.data(), matrix.data() + matrix.size(), read->data()));
}

} // namespace Qor::Tivor::Testing
