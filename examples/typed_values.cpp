// Values of many kinds go into a data file and come back with their types: no casts, no text in between.
#include <Tivor/ArrayDataObjects.h>
#include <Tivor/BinaryDataFile.h>
#include <Tivor/CollectionSerialization.h>
#include <Tivor/MatrixView.h>
#include <Tivor/ScalarData.h>

#include <iostream>
#include <numeric>

using namespace Qor::Tivor;
namespace Core = Qor::Core;

namespace {

enum class EObjective : short { eTIMES_10 = 10, eTIMES_50 = 50 };

void Store(const char* path) {
    BinaryDataFile file(path, DataFile::eREAD_WRITE, DataFile::eCREATE_ALWAYS, nullptr);
    file.PutValue("Measured", Core::Time::FromString("2024-01-31T12:34:56.1234567Z"));
    file.PutValue("Duration", Core::Elapse::FromSeconds(2.5));
    file.PutValue("Spacing", UnitizedDouble(0.5, "Micrometer"));
    file.PutValue("Operators", std::vector<std::string>{"Ada", "Emmy"});
    file.PutValue("Serial numbers", SelfMap<std::string>{{"camera", "C-17"}, {"objective", "O-3"}});
    file.Put("Objective", MakeScalar(EObjective::eTIMES_50));

    const std::vector<double> profile{0.25, 0.5, -0.25};
    file.Put("Profile", MakeArray(std::span(profile)));

    ColumnMajorMatrix<float> heights(2, 3);
    MatrixView<float> view(heights);
    for (std::size_t i = 0; i < view.size1(); ++i)
        for (std::size_t j = 0; j < view.size2(); ++j)
            view(i, j) = static_cast<float>(10 * i + j);
    file.PutValue("Heights", heights);
    file.Flush();
}

void Show(const char* path) {
    const BinaryDataFile file(path, DataFile::eREAD_ONLY, DataFile::eOPEN_EXISTING, nullptr);
    const Core::Time end = *file.GetValue<Core::Time>("Measured") + *file.GetValue<Core::Elapse>("Duration");
    std::cout << "measured until " << end.ToString() << " with objective "
              << static_cast<int>(GetEnum<EObjective>(*file.GetPtr<ScalarData>("Objective")).value()) << "x by "
              << file.GetPtr<std::vector<std::string>>("Operators")->back() << '\n';

    const UnitizedDouble spacing = *file.GetValue<UnitizedDouble>("Spacing");
    std::cout << "spacing " << spacing.ToString() << ", that is " << spacing.ConvertTo("Nanometer").ToString()
              << "; 1000 of them: " << (spacing * 1000.0).ConvertTo("Millimeter").ToString() << '\n';

    const auto profile = file.GetPtr<Array<double>>("Profile");
    const std::span<const double> samples = profile->GetElements();
    std::cout << "profile: " << samples.size() << " samples, sum "
              << std::accumulate(samples.begin(), samples.end(), 0.0) << '\n';

    const MatrixView<const float> heights(*file.Get("Heights"));
    std::cout << "heights: " << heights.size1() << " x " << heights.size2() << ", the last one " << heights(1, 2)
              << '\n';
    if (!file.GetValue<float>("Spacing"))
        std::cout << "the spacing is no plain float\n";
}

} // namespace

int main() {
    ScalarData::RegisterType(typeid(EObjective), "Example.Objective");
    Store("values.dataset");
    Show("values.dataset");
}
