#include "Plausibility.h"

#include <QorCore/Message.h>
#include <QorCore/NumberText.h>

#include <algorithm>
#include <cmath>

namespace Qor::Tivor::Tool {

namespace {

constexpr Core::UnitDescriptor::Exponents plain{};
constexpr Core::UnitDescriptor::Exponents length{1};

class Checker {
public:
    explicit Checker(const Measurement& measurement)
        : m_measurement(measurement),
          m_place(measurement.path.size() == 1 ? measurement.path.front() : ShowPath(measurement.path)) {}

    std::vector<Finding> Check() {
        CheckScale();
        CheckSamples();
        for (std::size_t i = 0; i < m_measurement.positions.size(); ++i)
            CheckPositions(m_measurement.positions[i], "dimension " + std::to_string(i + 1), m_measurement.points[i]);
        CheckLengths();
        return std::move(m_findings);
    }

private:
    void Add(Finding::EKind kind, const std::string& where, const std::string& expected, const std::string& found) {
        m_findings.push_back({m_place + (where.empty() ? "" : ", " + where), expected,
                              "expected " + expected + ", found " + found, kind});
    }

    void CheckScale() {
        const double scale = m_measurement.samples.factor;
        if (!std::isfinite(scale) || scale == 0)
            Add(Finding::eDEVIATION, "scale", "a finite scale other than 0", OneLine(m_measurement.scale.ToString()));
        if (m_measurement.samples.exponents == plain)
            Add(Finding::eIMPLAUSIBLE, "scale", "a unit", "none");
    }

    void CheckSamples() {
        const auto& numbers = m_measurement.samples.numbers;
        if (!m_measurement.HasSamples() || numbers.empty())
            Add(Finding::eDEVIATION, "", "samples that are numbers", numbers.empty() ? "none" : "others");
        else if (std::none_of(numbers.begin(), numbers.end(), [](double number) { return std::isfinite(number); }) &&
                 std::isfinite(m_measurement.samples.factor))
            Add(Finding::eIMPLAUSIBLE, "", "points that were measured",
                "none: all " + std::to_string(m_measurement.GetNumPoints()) + " are missing");
    }

    void CheckPositions(const Positions& positions, const std::string& where, std::uint64_t points) {
        if (positions.spacing)
            CheckSpacing(*positions.spacing, where, points);
        else if (!positions.numbers.empty())
            CheckList(positions.numbers, where, points);
        else
            return;
        if (positions.exponents == plain)
            Add(Finding::eIMPLAUSIBLE, where, "positions with a unit", "none");
    }

    void CheckSpacing(const UnitizedDouble& spacing, const std::string& where, std::uint64_t points) {
        const double value = spacing.GetValue();
        const bool isNeeded = points > 1 || !std::isfinite(value) || value < 0;
        if (isNeeded && !(std::isfinite(value) && value > 0))
            Add(Finding::eDEVIATION, where, "a finite spacing above 0", OneLine(spacing.ToString()));
    }

    void CheckList(const std::vector<double>& positions, const std::string& where, std::uint64_t points) {
        if (positions.size() != points)
            Add(Finding::eDEVIATION, where, std::to_string(points) + " positions, one for each point",
                std::to_string(positions.size()));
        if (std::any_of(positions.begin(), positions.end(), [](double position) { return !std::isfinite(position); }))
            return Add(Finding::eDEVIATION, where, "finite positions", "others");
        const auto stands = [&](auto isWrong) {
            return std::adjacent_find(positions.begin(), positions.end(), isWrong) == positions.end();
        };
        if (!stands(std::greater_equal<>()) && !stands(std::less_equal<>()))
            Add(Finding::eIMPLAUSIBLE, where, "positions in one direction", "some that turn back or do not advance");
    }

    void CheckLength(const char* what, double value, double least, double most) {
        if (std::isfinite(value) && value != 0 && (value < least || value > most))
            Add(Finding::eIMPLAUSIBLE, "",
                Core::FormatText("%1% %2% m to %3% m apart",
                                 {what, Core::GetNumberText(least), Core::GetNumberText(most)}),
                Core::GetNumberText(value) + " m, which is implausible; the unit may be another one");
    }

    void CheckAxis(const Positions& positions, const char* ofSamples, const char* ofEnds) {
        static constexpr double closest = 1e-12, farthest = 1e-3, widest = 1;
        const auto& numbers = positions.numbers;
        if (positions.exponents != length || numbers.size() < 2)
            return;
        const double width = std::abs(numbers.back() - numbers.front());
        CheckLength(ofSamples, width / static_cast<double>(numbers.size() - 1), closest, farthest);
        CheckLength(ofEnds, width, closest, widest);
    }

    /// In the words of those who read formats of measurements.
    void CheckLengths() {
        static constexpr double highestStep = 0.1;
        const auto& positions = m_measurement.positions;
        CheckAxis(positions.back(), "samples along x", "ends along x");
        if (positions.size() > 1)
            CheckAxis(positions.front(), "samples along y", "ends along y");
        if (m_measurement.samples.exponents != length)
            return;
        double lowest = HUGE_VAL, highest = -HUGE_VAL;
        for (const double height : m_measurement.samples.numbers)
            if (std::isfinite(height)) {
                lowest = std::min(lowest, height);
                highest = std::max(highest, height);
            }
        CheckLength("lowest and highest point", highest - lowest, 0, highestStep);
    }

    const Measurement& m_measurement;
    const std::string m_place;
    std::vector<Finding> m_findings;
};

} // namespace

std::vector<Finding> CheckMeasurement(const Measurement& measurement) { return Checker(measurement).Check(); }

} // namespace Qor::Tivor::Tool
