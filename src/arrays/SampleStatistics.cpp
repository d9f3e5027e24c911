#include <QorCore/Message.h>
#include <Tivor/SampleStatistics.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace Qor::Tivor {

namespace {

template <class T>
bool IsMissing(T sample) {
    if constexpr (std::is_floating_point_v<T>)
        return !std::isfinite(sample);
    else
        return false;
}

/// What some samples amount to, without the missing ones.
struct Part {
    std::uint64_t count = 0;
    long double mean = 0;
    long double squares = 0; ///< of the deviations from the mean
    long double minimum = std::numeric_limits<long double>::infinity();
    long double maximum = -std::numeric_limits<long double>::infinity();

    void Add(const Part& other) {
        if (other.count == 0)
            return;
        const auto before = static_cast<long double>(count);
        const auto added = static_cast<long double>(other.count);
        const long double apart = other.mean - mean;
        count += other.count;
        mean += apart * (added / (before + added));
        squares += other.squares + apart * apart * (before * added / (before + added));
        minimum = std::min(minimum, other.minimum);
        maximum = std::max(maximum, other.maximum);
    }
};

/// So many samples that are not missing as fit into the cache, for they are passed over twice: so neither the number of
/// points nor their distance from zero costs digits.
template <class Number>
class Block {
public:
    /// Returns how many it took.
    template <class T>
    std::size_t Take(std::span<const T> samples) {
        const std::size_t most = std::min(samples.size(), capacity);
        m_count = 0;
        for (const T sample : samples.first(most)) {
            m_numbers[m_count] = static_cast<Number>(sample);
            m_count += IsMissing(sample) ? 0 : 1;
        }
        return most;
    }

    Part Summarize() {
        if (m_count == 0)
            return {};
        const Number first = m_numbers[0];
        Lanes least{first, first, first, first}, greatest = least, sum{};
        ForEachLane(first, [&](std::size_t lane, Number number) {
            least[lane] = number < least[lane] ? number : least[lane];
            greatest[lane] = greatest[lane] < number ? number : greatest[lane];
            sum[lane] += number - first;
        });
        const auto count = static_cast<Number>(m_count);
        const Number nearMean = first + Join(sum) / count;
        Lanes rests{}, squares{}; // what rounding left between that and the mean
        ForEachLane(nearMean, [&](std::size_t lane, Number number) {
            const Number deviation = number - nearMean;
            rests[lane] += deviation;
            squares[lane] += deviation * deviation;
        });
        const Number rest = Join(rests);
        return {m_count, static_cast<long double>(nearMean) + static_cast<long double>(rest / count),
                static_cast<long double>(Join(squares) - rest * rest / count),
                static_cast<long double>(*std::min_element(least.begin(), least.end())),
                static_cast<long double>(*std::max_element(greatest.begin(), greatest.end()))};
    }

private:
    static constexpr std::size_t capacity = 1024;
    using Lanes = std::array<Number, 4>; // sums that do not wait for each other

    static Number Join(const Lanes& lanes) { return (lanes[0] + lanes[1]) + (lanes[2] + lanes[3]); }

    /// Where the last lanes have no number they get the one that adds nothing.
    template <class Visitor>
    void ForEachLane(Number neutral, Visitor visit) {
        constexpr std::size_t numLanes = std::tuple_size_v<Lanes>;
        for (std::size_t i = m_count; i % numLanes != 0; ++i)
            m_numbers[i] = neutral;
        for (std::size_t i = 0; i < m_count; i += numLanes)
            for (std::size_t lane = 0; lane < numLanes; ++lane)
                visit(lane, m_numbers[i + lane]);
    }

    std::array<Number, capacity> m_numbers;
    std::size_t m_count = 0;
};

template <class Number, class T>
Part Summarize(std::span<const T> samples) {
    Part all;
    Block<Number> block;
    while (!samples.empty()) {
        samples = samples.subspan(block.Take(samples));
        all.Add(block.Summarize());
    }
    return all;
}

template <class T>
SampleStatistics Count(std::span<const T> samples) {
    constexpr bool needsMoreDigits = std::is_integral_v<T> && sizeof(T) == sizeof(std::uint64_t);
    Part all = Summarize<std::conditional_t<needsMoreDigits, long double, double>>(samples);
    if (!std::isfinite(all.squares)) // numbers whose squares are too large
        all = Summarize<long double>(samples);
    SampleStatistics statistics{.numPoints = samples.size(), .numMissing = samples.size() - all.count};
    if (all.count == 0)
        return statistics;
    statistics.minimum = static_cast<double>(all.minimum);
    statistics.maximum = static_cast<double>(all.maximum);
    statistics.mean = static_cast<double>(all.mean);
    statistics.rms = static_cast<double>(std::sqrt(std::max(all.squares, 0.0L) / static_cast<long double>(all.count)));
    return statistics;
}

[[noreturn]] void RaiseUnusable(const std::string& owner, const std::string& found) {
    Core::Error::RaiseError(
        Core::LogicError(
            Core::FormatText("Expected a %1% with samples that are real numbers, found %2% samples", {owner, found})),
        QOR_CODE_CONTEXT("SampleStatistics"), "Qor.Tivor.SampleStatistics");
}

/// Calls back with the samples, which have one of the element types but complex.
template <class Visitor>
void VisitSamples(const Data1D& profile, Visitor visit) {
    const auto samples = profile.GetArrayDataObject();
    if (!samples)
        return;
    std::vector<std::shared_ptr<Core::Lock>> locks;
    samples->AcquireLocks(locks);
#define TIVOR_ROW(T, STEM, code, position, name)                                                                       \
    if (const auto* const array = dynamic_cast<const Array<T>*>(samples.get()))                                        \
        return visit(*array, array->GetElements());
    TIVOR_ARRAY_ELEMENT_TYPES(TIVOR_ROW)
#undef TIVOR_ROW
    RaiseUnusable("profile", samples->GetTypeName());
}

template <class Visitor>
void VisitSamples(const Data2D& surface, Visitor visit) {
    const auto samples = surface.GetMatrixDataObject();
    if (!samples)
        return;
    std::vector<std::shared_ptr<Core::Lock>> locks;
    samples->AcquireLocks(locks);
    const auto visitMatrix = [&]<class Matrix>(std::type_identity<Matrix>) {
        const auto* const wrapper = dynamic_cast<const GenericWrapper<Matrix>*>(samples.get());
        const auto matrix = wrapper != nullptr ? wrapper->GetData() : nullptr;
        if (!matrix)
            return false;
        visit(*matrix, std::span<const typename Matrix::value_type>(matrix->data(), matrix->size()));
        return true;
    };
#define TIVOR_ROW(T, STEM, code, position, name)                                                                       \
    if (visitMatrix(std::type_identity<RowMajorMatrix<T>>()) ||                                                        \
        visitMatrix(std::type_identity<ColumnMajorMatrix<T>>()))                                                       \
        return;
    TIVOR_NUMERIC_TYPES(TIVOR_ROW)
#undef TIVOR_ROW
    RaiseUnusable("surface", surface.GetValueTypeName());
}

template <class T>
SampleStatistics StatisticsOf(const T& measured) {
    SampleStatistics statistics;
    VisitSamples(measured, [&](const auto&, auto samples) { statistics = Count(samples); });
    return statistics;
}

template <class T>
void Mark(std::span<const T> samples, unsigned char* marks) {
    std::transform(samples.begin(), samples.end(), marks,
                   [](T sample) { return static_cast<unsigned char>(IsMissing(sample)); });
}

} // namespace

SampleStatistics GetStatistics(const Data1D& profile) { return StatisticsOf(profile); }
SampleStatistics GetStatistics(const Data2D& surface) { return StatisticsOf(surface); }

std::shared_ptr<Array<unsigned char>> MissingPoints(const Data1D& profile) {
    std::shared_ptr<Array<unsigned char>> mask;
    VisitSamples(profile, [&](const auto&, auto samples) {
        const auto marks = AllocateArray<unsigned char>(samples.size());
        Mark(samples, marks.get());
        mask = std::make_shared<Array<unsigned char>>(marks, samples.size());
    });
    return mask;
}

std::shared_ptr<DataObject> MissingPoints(const Data2D& surface) {
    std::shared_ptr<DataObject> mask;
    VisitSamples(surface, [&]<class Matrix>(const Matrix& matrix, auto samples) {
        Nalix::Matrix<unsigned char, typename Matrix::order_type> marks(matrix.size1(), matrix.size2());
        Mark(samples, marks.data());
        mask = MakeData(std::move(marks));
    });
    return mask;
}

} // namespace Qor::Tivor
