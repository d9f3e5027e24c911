// A measured surface and a profile: where their samples lie, what they mean, which points are missing; saved and
// opened, turned and cut.
#include <Tivor/BinaryDataFile.h>
#include <Tivor/Data2DOperation.h>
#include <Tivor/MatrixView.h>
#include <Tivor/SampleStatistics.h>

#include <algorithm>
#include <iostream>
#include <limits>

using namespace Qor::Tivor;

namespace {

std::shared_ptr<Data2D> Measure() {
    auto surface = Data2D::Create(MakeData(RowMajorMatrix<float>(3, 4)));
    MatrixView<float> heights(*surface); // the samples themselves, no copy
    for (std::size_t i = 0; i < heights.size1(); ++i)
        for (std::size_t j = 0; j < heights.size2(); ++j)
            heights(i, j) = static_cast<float>(10 * i + j);
    heights(1, 2) = std::numeric_limits<float>::quiet_NaN(); // was not measured

    surface->SetFixedSpacing(UnitizedDouble(0.5, "Micrometer"), UnitizedDouble(0.25, "Micrometer"));
    surface->SetDataKind("Height");
    surface->SetDataScale(UnitizedDouble(2.0, "Nanometer")); // a sample of 10 is 20 nm high
    return surface;
}

std::shared_ptr<Data1D> Trace() {
    const std::vector<short> heights{7, 9, 8};
    auto profile = Data1D::CreateFrom(MakeArray(std::span(heights)));
    const auto positions = AllocateArray<double>(heights.size());
    std::copy_n(std::begin({0.0, 0.1, 0.4}), heights.size(), positions.get());
    const auto unit = UnitizedDouble(1.0, "Millimeter").GetUnits()->Clone();
    profile->SetPositionFunction(std::make_shared<ArrayPosition1D>(positions, heights.size(), unit));
    return profile;
}

void Show(const Data2D& surface) {
    const SampleStatistics statistics = GetStatistics(surface);
    std::cout << surface.GetDataKind() << ", " << statistics.numPoints << " points, " << statistics.numMissing
              << " missing, from " << statistics.minimum << " to " << statistics.maximum << ", mean " << statistics.mean
              << '\n';
    const UnitizedDouble highest = UnitizedDouble(statistics.maximum) * surface.GetDataScale();
    std::cout << "the highest one: " << highest.ToString() << '\n';

    Qor::Nalix::Vector<UnitizedDouble> position;
    surface.GetPositionFunction()->GetPosition(2, 3, position);
    std::cout << "the last one: " << MatrixView<const float>(surface)(2, 3) << " at " << position[0].ToString() << ", "
              << position[1].ToString() << '\n';

    const auto mask = MissingPoints(surface);
    const MatrixView<const unsigned char> isMissing(static_cast<const DataObject&>(*mask));
    std::cout << "row 1: ";
    for (std::size_t j = 0; j < isMissing.size2(); ++j)
        std::cout << (isMissing(1, j) != 0 ? '-' : 'x');
    std::cout << '\n';
}

void TurnAndCut(const Data2D& surface) {
    const auto turned = Data2DOperation<Data2DOp::Rotate90>::Execute(surface);
    const auto block = CreateSubregion(*turned, 0, 2, 1, 3); // rows 0 and 1, columns 1 and 2
    UnitizedDouble down, across;
    block->GetFixedSpacing(down, across);
    const MatrixView<const float> heights(std::as_const(*block));
    std::cout << "turned and cut: " << heights(0, 0) << ' ' << heights(0, 1) << " above " << heights(1, 0) << ' '
              << heights(1, 1) << ", " << down.ToString() << " x " << across.ToString() << '\n';
}

void Show(const Data1D& profile) {
    const auto positions = profile.GetPositionFunction();
    for (std::uint64_t i = 0; i < profile.GetNumPoints(); ++i)
        std::cout << profile.GetSamples<short>()[i] << " at " << positions->GetPosition(i).ToString() << '\n';
}

} // namespace

int main() {
    {
        BinaryDataFile file("measured.dataset", DataFile::eREAD_WRITE, DataFile::eCREATE_ALWAYS, nullptr);
        file.Put("Surface", ValueTraits<Data2D>::MakeData(Measure()));
        file.Put("Profile", ValueTraits<Data1D>::MakeData(Trace()));
        file.Flush();
    }
    const BinaryDataFile file("measured.dataset", DataFile::eREAD_ONLY, DataFile::eOPEN_EXISTING, nullptr);
    Show(*file.GetPtr<Data2D>("Surface"));
    TurnAndCut(*file.GetPtr<Data2D>("Surface"));
    Show(*file.GetPtr<Data1D>("Profile"));
}
