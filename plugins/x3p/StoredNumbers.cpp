#include "StoredNumbers.h"

#include "../common/Text.h"

#include <limits>

namespace Qor::Tivor::Measurements {

namespace {

/// The type that holds all numbers of a T, as far as there is one.
template <class T>
using Natural =
    std::conditional_t<std::is_same_v<T, float> || std::is_same_v<T, double>, T,
                       std::conditional_t<(sizeof(T) < 2 || std::is_same_v<T, short>), short,
                                          std::conditional_t<(sizeof(T) < 4 || std::is_same_v<T, int>), int, double>>>;

template <class T>
constexpr EStored letterOf = std::is_same_v<T, short>   ? EStored::int16
                             : std::is_same_v<T, int>   ? EStored::int32
                             : std::is_same_v<T, float> ? EStored::float32
                                                        : EStored::float64;

template <class To, class T>
bool HoldsAll(std::span<const T> samples) {
    for (const T sample : samples) {
        const auto number = static_cast<double>(sample);
        if (!std::isfinite(number))
            continue;
        if (number < std::numeric_limits<To>::min() || number > std::numeric_limits<To>::max() ||
            static_cast<double>(static_cast<To>(number)) != number || (number == 0 && std::signbit(number)))
            return false;
    }
    return true;
}

class Storing {
public:
    Storing(const std::vector<const Measured*>& layers, const Report& report) : m_layers(layers), m_report(report) {}

    template <class To>
    bool CanBe() const {
        bool can = true;
        for (const Measured* const layer : m_layers)
            layer->VisitSamples([&]<class T>(std::span<const T> samples) { can = can && HoldsAll<To>(samples); });
        return can;
    }

    template <class To>
    StoredNumbers As() {
        std::vector<To>& values = m_numbers.values.emplace<std::vector<To>>();
        m_numbers.type = letterOf<To>;
        for (const Measured* const layer : m_layers)
            layer->VisitSamples([&]<class T>(std::span<const T> samples) {
                for (const T sample : samples)
                    Append(values, sample);
            });
        if (m_numRounded > 0)
            m_report.Loses(
                m_layers[0]->GetKey(),
                Core::FormatText("%1% of %2% samples are rounded to 64-bit floats", {m_numRounded, values.size()}),
                ELoss::rounded);
        return std::move(m_numbers);
    }

    StoredNumbers AsTheyAre() {
        StoredNumbers numbers;
        m_layers[0]->VisitSamples([&]<class T>(std::span<const T>) { numbers = As<Natural<T>>(); });
        return numbers;
    }

private:
    template <class To, class T>
    void Append(std::vector<To>& values, T sample) {
        if (!std::isfinite(static_cast<double>(sample))) {
            m_numbers.missing.resize(values.size());
            m_numbers.missing.push_back(true);
            values.push_back(std::numeric_limits<To>::quiet_NaN()); // 0 for integers
            return;
        }
        bool isRounded = false;
        values.push_back(RoundTo<To>(sample, isRounded));
        m_numRounded += isRounded;
        if (m_numbers.HasMissing())
            m_numbers.missing.push_back(false);
    }

    const std::vector<const Measured*>& m_layers;
    const Report& m_report;
    StoredNumbers m_numbers;
    std::uint64_t m_numRounded = 0;
};

} // namespace

StoredNumbers StoreNumbers(const std::vector<const Measured*>& layers, const std::string& preferred,
                           const Report& report) {
    Storing storing(layers, report);
    if (preferred == "I" && storing.CanBe<short>())
        return storing.As<short>();
    if (preferred == "L" && storing.CanBe<int>())
        return storing.As<int>();
    return storing.AsTheyAre();
}

} // namespace Qor::Tivor::Measurements
