// A measurement of somebody else's: an X3P file becomes a data set, is kept in both types of data file, cut, turned and
// handed on as X3P.
#include <Tivor/Codec.h>
#include <Tivor/Data2DOperation.h>
#include <Tivor/DataFileTypeManager.h>
#include <Tivor/SampleStatistics.h>

#include <iostream>

using namespace Qor::Tivor;
namespace Core = Qor::Core;

namespace {

class Deviations final : public Core::AlertHandler {
    void OnWarning(const Core::Warning& warning) override { std::cout << "  " << warning.GetText() << '\n'; }
};

std::shared_ptr<IDataSet> Load(const std::string& fileName) {
    const auto file = DataFile::Open(fileName, DataFile::eREAD_ONLY, DataFile::eOPEN_EXISTING, "", nullptr);
    if (!file)
        throw std::runtime_error(fileName + " cannot be opened");
    return Decode(file, "");
}

// The extension tells the type, also that of a plug-in.
void Save(IDataSet& set, const std::string& fileName) {
    const auto factory = DataFileTypeManager::Instance().FindFactoryByExtension(fileName);
    const auto file = factory->OpenFile(fileName, DataFile::eREAD_WRITE, DataFile::eCREATE_ALWAYS, nullptr);
    Encode(set, *file, DataSet::sFORMAT);
    file->Flush();
}

void Show(IDataSet& set) {
    const auto surface = set.GetPrimaryData2D();
    const SampleStatistics statistics = GetStatistics(*surface);
    UnitizedDouble y, x;
    surface->GetFixedSpacing(y, x);
    std::cout << "  " << surface->ToString() << ", " << y.ToString() << " x " << x.ToString() << ", "
              << statistics.numMissing << " points missing\n";
}

// Samples, positions, units and metadata.
bool AreEqual(IDataSet& left, IDataSet& right) { return DataSet(left) == DataSet(right); }

void Run(const std::string& fileName) {
    std::shared_ptr<IDataSet> measured;
    {
        std::cout << "what deviates from the format:\n";
        const Deviations deviations;
        measured = Load(fileName);
    }
    std::cout << "measured by "
              << *measured->GetMetaData()
                      ->GetSubData({"X3P", "Record2", "Instrument"}, true)
                      ->GetValue<std::string>("Manufacturer")
              << ":\n";
    Show(*measured);

    for (const char* const kept : {"kept.dataset", "kept.qordml"}) {
        Save(*measured, kept);
        std::cout << kept << (AreEqual(*measured, *Load(kept)) ? " is the same\n" : " is another one\n");
    }

    const auto block = CreateSubregion(*measured, 50, 200, 300, 700); // rows 50 to 199, columns 300 to 699
    DataSet turned(Data2DOperation<Data2DOp::Rotate90>::Execute(*block->GetPrimaryData2D()), "Surface");
    Show(turned);
    Save(turned, "turned.x3p");
    const auto again = Load("turned.x3p");
    Show(*again);
    const bool isSame = bool(again->GetPrimaryData2D()->GetMatrixDataObject()->HoldsSameValueAs(
        *turned.GetPrimaryData2D()->GetMatrixDataObject()));
    std::cout << "turned.x3p has " << (isSame ? "the same" : "other") << " samples\n";
}

} // namespace

int main(int argc, char* argv[]) {
    try {
        Run(argc == 2 ? argv[1] : "bullet_sample-land.x3p");
    } catch (const std::exception& error) {
        std::cout << "error: " << error.what() << '\n';
        return 1;
    }
}
