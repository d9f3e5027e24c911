// The samples of a surface, seen in place.
#include "Alerts.h"

#include <Tivor/MatrixView.h>

#include <gtest/gtest.h>

namespace Qor::Tivor::Testing {

using Core::Testing::RaisedBy;

TEST(SurfaceView, ShowsASurfaceAndOutlivesItsSamples) {
    ColumnMajorMatrix<float> samples(2, 3);
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples(i / 3, i % 3) = static_cast<float>(10 * (i / 3) + i % 3);
    const auto surface = Data2D::Create(MakeData(samples));
    const MatrixView<const float> view(std::as_const(*surface));
    MatrixView<float>{*surface}(1, 2) = 7;
    surface->SetMatrixDataObject(MakeData(RowMajorMatrix<short>(1, 1)));
    EXPECT_TRUE(view.size1() == 2 && view.size2() == 3 && view.stride1() == 1 && view.stride2() == 2);
    EXPECT_TRUE(view(1, 2) == 7 && view(0, 1) == 1 && view.data()[1] == 10);
    const auto refusal = [](const Data2D& refused) {
        return RaisedBy<PropertyTypeMismatch>([&] { MatrixView<const float>{refused}; }).GetText();
    };
    EXPECT_EQ(refusal(*surface), "Expected a surface with samples of float, found samples of int16");
    EXPECT_EQ(refusal(Data2D()), "Expected a surface with samples of float, found none");
    RaisedBy<PropertyTypeMismatch>([&] { MatrixView<std::complex<double>>{*surface}; });
}

} // namespace Qor::Tivor::Testing
