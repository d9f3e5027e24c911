// Statistics of samples, and the masks that go with them.
#include "Alerts.h"
#include "TemporaryDirectory.h"

#include <Tivor/MatrixView.h>
#include <Tivor/SampleStatistics.h>

#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <sstream>

namespace Qor::Tivor::Testing {

namespace {

using Core::Testing::RaisedBy;
using Core::Testing::ReadFileText;

template <class T>
std::shared_ptr<Data1D> Profile(const std::vector<T>& samples) {
    const auto array = std::make_shared<Array<T>>(samples.size());
    std::copy(samples.begin(), samples.end(), array->GetElements().begin());
    return Data1D::CreateFrom(array);
}

template <class Matrix>
std::shared_ptr<Data2D> Surface(std::size_t size1, std::size_t size2,
                                const std::vector<typename Matrix::value_type>& samples) {
    Matrix matrix(size1, size2);
    for (std::size_t i = 0; i < samples.size(); ++i)
        matrix(i / size2, i % size2) = samples[i];
    return Data2D::Create(MakeData(std::move(matrix)));
}

std::string Text(const SampleStatistics& statistics) {
    std::ostringstream text;
    text.precision(12);
    text << statistics.numPoints << ' ' << statistics.numMissing << ": " << statistics.minimum << ' '
         << statistics.maximum << ' ' << statistics.mean << ' ' << statistics.rms;
    return text.str();
}

template <class T>
void CountsAndMasks(const char* type) {
    SCOPED_TRACE(type);
    std::vector<T> samples{T(1), T(0), T(1), T(0), T(1), T(1)};
    std::string mask = "000000";
    std::string expected = "6 0: 0 1 0.666666666667 0.471404520791";
    if constexpr (std::is_floating_point_v<T>) {
        samples = {T(NAN), T(1), T(INFINITY), T(0), T(0.5), T(-INFINITY)};
        mask = "101001";
        expected = "6 3: 0 1 0.5 0.408248290464";
    }
    const auto textOf = [](const auto& marks) {
        std::string text;
        for (const unsigned char mark : marks)
            text += std::to_string(mark);
        return text;
    };
    EXPECT_EQ(Text(GetStatistics(*Profile(samples))), expected);
    EXPECT_EQ(textOf(MissingPoints(*Profile(samples))->GetElements()), mask);
    if constexpr (std::is_arithmetic_v<T> && !std::is_same_v<T, bool> && !std::is_same_v<T, Long32> &&
                  !std::is_same_v<T, ULong32>) {
        const auto rows = Surface<RowMajorMatrix<T>>(2, 3, samples);
        const auto columns = Surface<ColumnMajorMatrix<T>>(2, 3, samples);
        EXPECT_EQ(Text(GetStatistics(*rows)), expected);
        EXPECT_EQ(Text(GetStatistics(*columns)), expected);
        EXPECT_EQ(textOf(MatrixView<unsigned char>(*MissingPoints(*rows)).GetElements()), mask);
        const MatrixView<unsigned char> view(*MissingPoints(*columns));
        for (std::size_t i = 0; i < mask.size(); ++i)
            EXPECT_TRUE(!view.IsRowMajor() && view(i / 3, i % 3) == mask[i] - '0') << i;
    }
}

/// Each so many-th number of a file.
std::vector<double> NumbersOf(const char* file, std::size_t each) {
    std::istringstream text(ReadFileText(Core::PathName(std::string(TIVOR_PROJECT "/data/") + file)));
    std::vector<double> numbers;
    std::size_t count = 0;
    for (std::string line, word; std::getline(text, line);)
        for (std::istringstream words(line.starts_with('#') ? "" : line); words >> word;)
            if (double number = 0; ++count % each == 0) {
                std::from_chars(word.data(), word.data() + word.size(), number);
                numbers.push_back(number);
            }
    return numbers;
}

} // namespace

TEST(SampleStatistics, SkipMissingPointsOfEveryTypeInBothOrders) {
#define TIVOR_ROW(T, STEM, code, position, name) CountsAndMasks<T>(name);
    TIVOR_ARRAY_ELEMENT_TYPES(TIVOR_ROW)
#undef TIVOR_ROW
}

TEST(SampleStatistics, TellWhatTheyCannotCount) {
    EXPECT_EQ(Text(GetStatistics(Data2D())), "0 0: nan nan nan nan");
    EXPECT_EQ(Text(GetStatistics(*Profile<float>({NAN, INFINITY}))), "2 2: nan nan nan nan");
    EXPECT_EQ(Text(GetStatistics(*Profile<double>({}))), "0 0: nan nan nan nan");
    EXPECT_TRUE(!MissingPoints(Data1D()) && !MissingPoints(Data2D()));
    const auto surface = Surface<RowMajorMatrix<std::complex<double>>>(1, 1, {1});
    EXPECT_EQ(RaisedBy<Core::LogicError>([&] { GetStatistics(*surface); }).GetText(),
              "Expected a surface with samples that are real numbers, found complex samples");
    RaisedBy<Core::LogicError>([&] { MissingPoints(*surface); });
}

// A fine ripple high above zero, over many blocks and one that is not full: float sums, or squares that are not taken
// from the mean, lose it.
TEST(SampleStatistics, KeepTheirDigitsFarFromZero) {
    constexpr std::size_t count = 1'000'001;
    for (const double height : {0.0, 1e9, -1e12}) {
        std::vector<double> samples(count, height + 0.25);
        for (std::size_t i = 1; i < count; i += 2)
            samples[i] -= 0.5;
        const SampleStatistics statistics = GetStatistics(*Profile(samples));
        EXPECT_NEAR(statistics.rms, 0.25, 1e-12) << height;
        EXPECT_NEAR(statistics.mean - height, 0.25 / count, std::abs(height) * 2e-16 + 1e-18) << height;
    }
    std::vector<std::int64_t> large(3000, INT64_MAX);
    large[7] = INT64_MAX - 100; // the same double
    EXPECT_NEAR(GetStatistics(*Profile(large)).rms, 100 / std::sqrt(3000.0), 0.01);
    EXPECT_EQ(Text(GetStatistics(*Profile<double>({1e308, -1e308}))), "2 0: -1e+308 1e+308 0 1e+308");
}

// The figures were found by other means than this library.
TEST(SampleStatistics, AreThoseOfMeasuredFiles) {
    const struct {
        const char* file;
        std::size_t column; ///< the last one
        std::uint64_t numPoints;
        double minimum, maximum, mean, rms;
    } rows[] = {
        {"afm_gwyddion_text_export.txt", 1, 65536, -1.6861e-07, 2.4022e-07, -1.879086267158478e-08,
         3.522291875019874e-08},
        {"profile_xy-4.txt", 2, 10001, -0.053303, 0.003775, -0.0038068158184181586, 0.008641846268974015},
        {"profile_nonuniform.asc", 2, 134, 166.48382, 227.8895, 187.63255268656715, 14.029186581854567},
    };
    for (const auto& row : rows) {
        const SampleStatistics statistics = GetStatistics(*Profile(NumbersOf(row.file, row.column)));
        EXPECT_TRUE(statistics.numPoints == row.numPoints && statistics.numMissing == 0) << row.file;
        EXPECT_TRUE(statistics.minimum == row.minimum && statistics.maximum == row.maximum) << row.file;
        EXPECT_NEAR(statistics.mean / row.mean, 1, 1e-12) << row.file;
        EXPECT_NEAR(statistics.rms / row.rms, 1, 1e-12) << row.file;
    }
}

} // namespace Qor::Tivor::Testing
