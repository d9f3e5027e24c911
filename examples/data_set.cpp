// A measurement as a data set: two maps of heights, an intensity and a profile, found again by channel, cut, and saved
// in both types of file.
#include <Tivor/Codec.h>
#include <Tivor/Data2DOperation.h>
#include <Tivor/DataFile.h>
#include <Tivor/MatrixView.h>

#include <algorithm>
#include <iostream>
#include <span>

using namespace Qor::Tivor;

namespace {

std::shared_ptr<Data2D> Map(const std::string& kind, double first) {
    RowMajorMatrix<double> samples(3, 4);
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples.data()[i] = first + static_cast<double>(i);
    auto map = Data2D::Create(MakeData(samples));
    map->SetDataKind(kind);
    map->SetFixedSpacing(UnitizedDouble(0.5, "Micrometer"), UnitizedDouble(0.5, "Micrometer"));
    return map;
}

DataSet Measure() {
    const std::vector<double> trace{7.0, 9.0, 8.0};
    auto profile = Data1D::CreateFrom(MakeArray(std::span(trace)));
    profile->SetDataKind(sSURFACE_PROFILE);

    DataSet set(Map(sHEIGHT_DATA, 0), "before"); // the primary surface
    set.StoreData(Map(sHEIGHT_DATA, 100), "after");
    set.StoreData(Map(sINTENSITY_DATA, 200), "camera");
    set.StoreData(std::move(profile), "trace");
    set.MetaData().PutValue(sDATASET_NAME, "Wafer 7");
    return set;
}

void Show(IDataSet& set) {
    const auto heights = set.GetData2DChannel(sHEIGHT_DATA);
    for (std::uint64_t i = 0; i < heights->GetSize(); ++i) {
        const auto map = heights->GetDataAt(i);
        std::cout << "  " << heights->GetKeyForDataAt(i) << ": " << map->ToString() << ", begins with "
                  << MatrixView<double>(*map)(0, 0) << '\n';
    }
}

} // namespace

int main() {
    DataSet set = Measure();
    for (const char* const name : {"set.dataset", "set.qordml"}) {
        const auto file = DataFile::Open(name, DataFile::eREAD_WRITE, DataFile::eCREATE_ALWAYS, "", nullptr);
        Encode(set, *file, DataSet::sFORMAT);
        file->Flush();
    }
    const auto opened = DataFile::Open("set.qordml", DataFile::eREAD_ONLY, DataFile::eOPEN_EXISTING, "", nullptr);
    const auto read = Decode(opened, "");
    std::cout << "heights:\n";
    Show(*read);

    const auto block = CreateSubregion(*read, 1, 3, 2, 4); // rows 1 and 2, columns 2 and 3 of each map
    std::cout << "cut:\n";
    Show(*block);
}
