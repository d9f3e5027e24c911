#include "SameMeasurements.h"

#include "Display.h"

#include <Tivor/Codec.h>
#include <Tivor/MatrixView.h>

#include <algorithm>
#include <cmath>
#include <span>
#include <type_traits>

namespace Qor::Tivor::Tool {

namespace {

constexpr double tolerance = 1e-6; // what 32-bit floats round

bool MeansSame(double left, double right) {
    if (!std::isfinite(left) || !std::isfinite(right))
        return !std::isfinite(left) && !std::isfinite(right);
    return std::abs(left - right) <= tolerance * std::max(std::abs(left), std::abs(right));
}

/// Numbers in SI units.
struct Quantities {
    bool operator==(const Quantities& other) const {
        return exponents == other.exponents &&
               std::equal(numbers.begin(), numbers.end(), other.numbers.begin(), other.numbers.end(), MeansSame);
    }

    Core::UnitDescriptor::Exponents exponents{};
    std::vector<double> numbers;
};

Quantities Scaled(std::vector<double> numbers, const UnitizedDouble& scale) {
    const double factor = scale.GetSIValue();
    for (double& number : numbers)
        number *= factor;
    return {scale.GetUnits()->GetExponents(), std::move(numbers)};
}

Quantities PositionsOf(const Core::QorConstArray<double>& positions,
                       const Core::QorConstPtr<Core::UnitDescriptor>& unit) {
    std::vector<double> steps(positions.begin(), positions.end());
    for (double& step : steps)
        step -= positions[0]; // where the first one lies, not each format can say
    return Scaled(std::move(steps), UnitizedDouble(1, unit));
}

std::vector<double> SamplesOf(const Data2D& surface) {
    std::vector<double> samples;
    const auto read = [&]<class T>(std::type_identity<T>) {
        const MatrixView<const T> view(surface);
        for (std::size_t i = 0; i < view.size1(); ++i)
            for (std::size_t j = 0; j < view.size2(); ++j)
                samples.push_back(static_cast<double>(view(i, j)));
    };
    switch (surface.GetMatrixDataObject() ? surface.GetValueType() : eNO_TYPE) {
#define TIVOR_ROW(T, STEM, code, position, name)                                                                       \
    case e##STEM:                                                                                                      \
        read(std::type_identity<T>());                                                                                 \
        break;
        TIVOR_NUMERIC_TYPES(TIVOR_ROW)
#undef TIVOR_ROW
    default:
        break;
    }
    return samples;
}

std::vector<double> SamplesOf(const Data1D& profile) {
    std::vector<double> samples;
    const auto read = [&]<class T>(std::type_identity<T>) {
        for (const T sample : profile.GetSamples<T>())
            samples.push_back(static_cast<double>(sample));
    };
#define TIVOR_ROW(T, STEM, code, position, name) read(std::type_identity<T>());
    TIVOR_NUMERIC_TYPES(TIVOR_ROW)
#undef TIVOR_ROW
    return samples;
}

struct Measurement {
    bool MeansSameAs(const Measurement& other) const {
        return points == other.points && heights == other.heights && positions == other.positions;
    }

    std::string key;
    std::vector<std::uint64_t> points;
    Quantities heights;
    std::vector<Quantities> positions;
};

Measurement Describe(const std::string& key, const Data2D& surface) {
    return {key,
            {surface.GetNumDimension1Points(), surface.GetNumDimension2Points()},
            Scaled(SamplesOf(surface), surface.GetDataScale()),
            {PositionsOf(surface.GetDim1PositionArray(), surface.GetDim1PositionUnits()),
             PositionsOf(surface.GetDim2PositionArray(), surface.GetDim2PositionUnits())}};
}

Measurement Describe(const std::string& key, const Data1D& profile) {
    return {key,
            {profile.GetNumPoints()},
            Scaled(SamplesOf(profile), profile.GetDataScale()),
            {PositionsOf(profile.GetPositionArray(), profile.GetPositionUnits())}};
}

std::vector<Measurement> ListMeasurements(const DataContainer& container) {
    const auto copy = std::make_shared<DataContainer>(container); // a data set may complete what it is made of
    if (const auto metaData = container.GetPtr<DataContainer>(sMETA_DATA))
        copy->Put(sMETA_DATA, metaData->Clone());
    const auto set = Decode(copy, {});
    std::vector<Measurement> list;
    std::vector<std::string> keys;
    set->GetAllData2DItems()->EnumData(keys);
    for (const std::string& key : keys)
        if (const auto surface = set->GetData2D(key))
            list.push_back(Describe(key, std::as_const(*surface)));
    keys.clear();
    set->GetAllData1DItems()->EnumData(keys);
    for (const std::string& key : keys)
        if (const auto profile = set->GetData1D(key))
            list.push_back(Describe(key, std::as_const(*profile)));
    return list;
}

} // namespace

std::string FindForeignMeasurement(const DataContainer& expected, const DataContainer& found) {
    const std::vector<Measurement> ours = ListMeasurements(expected);
    const std::vector<Measurement> theirs = ListMeasurements(found);
    for (const Measurement& their : theirs)
        if (std::none_of(ours.begin(), ours.end(), [&](const Measurement& our) { return our.MeansSameAs(their); }))
            return Show(their.key);
    return theirs.empty() ? "all of it" : std::string();
}

} // namespace Qor::Tivor::Tool
