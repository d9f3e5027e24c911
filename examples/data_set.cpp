// A measurement as a data set: two maps of heights, one of intensities and a profile, found again by what they are,
// cut, and saved in both types of data file.
#include <Tivor/Codec.h>
#include <Tivor/Data2DOperation.h>
#include <Tivor/DataFile.h>
#include <Tivor/MatrixView.h>

#include <iostream>
#include <span>

using namespace Qor::Tivor;

namespace {

std::shared_ptr<Data2D> Map(const std::string& kind, double first) {
    RowMajorMatrix<double> samples(3, 4);
    for (double& sample : std::span(samples.data(), samples.size()))
        sample = first++;
    auto map = Data2D::Create(MakeData(samples));
    map->SetDataKind(kind);
    map->SetFixedSpacing(UnitizedDouble(0.5, "Micrometer"), UnitizedDouble(0.25, "Micrometer"));
    return map;
}

std::shared_ptr<Data1D> Trace() {
    const std::vector<double> heights{3, 4, 4.5};
    auto trace = Data1D::CreateFrom(MakeArray(std::span(heights)));
    trace->SetDataKind(sSURFACE_PROFILE);
    trace->SetFixedSpacing(UnitizedDouble(10, "Micrometer"));
    return trace;
}

DataSet Measure() {
    DataSet set(Map(sHEIGHT_DATA, 0), "before"); // the primary surface
    set.StoreData(Map(sHEIGHT_DATA, 100), "after");
    set.StoreData(Map(sINTENSITY_DATA, 200), "camera");
    set.StoreData(Trace(), "trace");
    set.MetaData().PutValue(sDATASET_NAME, std::string("Wafer 7"));
    return set;
}

void ShowMaps(IDataSet& set, const std::string& kind) {
    const auto channel = set.GetData2DChannel(kind);
    for (std::uint64_t i = 0; i < channel->GetSize(); ++i) {
        const auto map = channel->GetDataAt(i);
        std::cout << "  " << kind << ", " << channel->GetKeyForDataAt(i) << ": " << map->GetNumDimension1Points()
                  << " x " << map->GetNumDimension2Points() << ", first " << MatrixView<double>(*map)(0, 0) << '\n';
    }
}

void Show(IDataSet& set) {
    ShowMaps(set, sHEIGHT_DATA);
    ShowMaps(set, sINTENSITY_DATA);
    const auto profile = set.GetData1D("trace");
    std::cout << "  " << profile->GetDataKind() << ", trace: " << profile->GetNumPoints() << " points\n";
}

void Save(IDataSet& set, const std::string& fileName) {
    const auto file = DataFile::Open(fileName, DataFile::eREAD_WRITE, DataFile::eCREATE_ALWAYS, "", nullptr);
    Encode(set, *file, DataSet::sFORMAT);
    file->Flush();
}

std::shared_ptr<IDataSet> Load(const std::string& fileName) {
    const auto file = DataFile::Open(fileName, DataFile::eREAD_ONLY, DataFile::eOPEN_EXISTING, "", nullptr);
    const auto set = Decode(file, "");
    std::cout << fileName << ": " << *set->GetMetaData()->GetValue<std::string>(sDATASET_NAME) << '\n';
    return set;
}

} // namespace

int main() {
    DataSet measured = Measure();
    Save(measured, "wafer.dataset");
    const auto read = Load("wafer.dataset");
    Show(*read);

    const auto block = CreateSubregion(*read, 1, 3, 2, 4); // rows 1 and 2, columns 2 and 3 of every map
    Save(*block, "block.qordml");
    Show(*Load("block.qordml"));
}
