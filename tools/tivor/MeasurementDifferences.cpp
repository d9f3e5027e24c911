#include "MeasurementDifferences.h"

#include "Elements.h"

#include <algorithm>

namespace Qor::Tivor::Tool {

namespace {

constexpr double rounding = 1e-15; // of a conversion between units, relative to the value

/// How numbers differ that are compared one by one.
struct Comparison {
    std::size_t numDiffering = 0;
    std::size_t numMissingInA = 0; ///< only there
    std::size_t numMissingInB = 0;
    std::size_t firstMissing = 0;
    std::size_t largestAt = 0;
    double largest = 0;
};

/// Compares each sample of so many parts. A number that is not finite is missing.
Comparison Compare(const Quantities& a, const Quantities& b, std::size_t parts, double tolerance) {
    const double relative = a.factor == b.factor && a.offset == b.offset ? 0 : rounding;
    Comparison result;
    for (std::size_t begin = 0; begin < a.numbers.size(); begin += parts) {
        bool isMissingInA = false, isMissingInB = false, differs = false;
        for (std::size_t i = begin; i < begin + parts; ++i) {
            const double left = a.numbers[i], right = b.numbers[i];
            isMissingInA |= !std::isfinite(left);
            isMissingInB |= !std::isfinite(right);
            const double difference = std::abs(left - right);
            if (!std::isfinite(left) || !std::isfinite(right) ||
                difference <= std::max(tolerance, relative * std::max(std::abs(left), std::abs(right))))
                continue;
            differs = true;
            if (difference > result.largest) {
                result.largest = difference;
                result.largestAt = i;
            }
        }
        if (isMissingInA != isMissingInB) {
            if (result.numMissingInA + result.numMissingInB == 0)
                result.firstMissing = begin / parts;
            ++(isMissingInA ? result.numMissingInA : result.numMissingInB);
        } else if (differs && !isMissingInA) {
            ++result.numDiffering;
        }
    }
    return result;
}

std::string PointsText(const std::vector<std::uint64_t>& points) {
    std::string text;
    for (const std::uint64_t count : points)
        text += (text.empty() ? "" : " x ") + std::to_string(count);
    return text;
}

/// The indices of a sample along each dimension.
Json PlaceOf(std::size_t index, const std::vector<std::uint64_t>& points) {
    std::vector<std::uint64_t> place(points.size());
    std::uint64_t rest = index;
    for (std::size_t i = points.size(); i-- > 0;) {
        place[i] = rest % points[i];
        rest /= points[i];
    }
    return place;
}

std::string UnitName(const Quantities& quantities) {
    const std::string unit = UnitText(quantities.exponents);
    return unit.empty() ? "plain numbers" : unit;
}

/// Compares two measured arrays.
class Comparer {
public:
    Comparer(const Measurement& a, const Measurement& b, const Tolerance& tolerance)
        : m_a(a), m_b(b), m_tolerance(tolerance) {}

    std::vector<MeasuredDifference> Compare() {
        CompareTexts("kind", m_a.kind, m_b.kind);
        CompareTexts("origin", m_a.origin, m_b.origin);
        if (m_a.points != m_b.points) {
            Add("points", "points: " + PointsText(m_a.points) + ", " + PointsText(m_b.points),
                {{"a", m_a.points}, {"b", m_b.points}});
            return std::move(m_found);
        }
        CompareSamples();
        for (std::size_t i = 0; i < m_a.positions.size(); ++i)
            ComparePositions(i);
        return std::move(m_found);
    }

private:
    void Add(const char* what, std::string text, Json facts) {
        Json json = {{"what", what}};
        json.update(facts);
        m_found.push_back({std::move(text), std::move(json)});
    }

    void CompareTexts(const char* what, const std::string& a, const std::string& b) {
        if (a != b)
            Add(what, std::string(what) + ": " + Show(a) + ", " + Show(b), {{"a", TextJson(a)}, {"b", TextJson(b)}});
    }

    bool HaveSameUnits(const std::string& of, const Quantities& a, const Quantities& b) {
        const bool areSame = a.exponents == b.exponents;
        if (!areSame)
            Add("unit", "unit of " + of + ": " + UnitName(a) + ", " + UnitName(b),
                {{"of", of}, {"a", UnitName(a)}, {"b", UnitName(b)}});
        return areSame;
    }

    void CompareSamples() {
        const Quantities &a = m_a.samples, &b = m_b.samples;
        if (!m_a.HasSamples() || !m_b.HasSamples() || m_a.partsPerSample != m_b.partsPerSample)
            return Add("type", "samples that cannot be compared: " + Show(m_a.sampleType) + ", " + Show(m_b.sampleType),
                       {{"a", TextJson(m_a.sampleType)}, {"b", TextJson(m_b.sampleType)}});
        if (!HaveSameUnits("samples", a, b))
            return;
        const double tolerance = m_tolerance.exponents == a.exponents ? m_tolerance.most : 0;
        const Comparison found = Tool::Compare(a, b, m_a.partsPerSample, tolerance);
        if (found.numDiffering > 0)
            AddSamples(found);
        if (found.numMissingInA + found.numMissingInB > 0) {
            const Json first = PlaceOf(found.firstMissing, m_a.points);
            Add("missing",
                "missing points: " + std::to_string(found.numMissingInA) + " only in A, " +
                    std::to_string(found.numMissingInB) + " only in B, the first at " + first.dump(),
                {{"onlyInA", found.numMissingInA}, {"onlyInB", found.numMissingInB}, {"firstAt", first}});
        }
    }

    void AddSamples(const Comparison& found) {
        const Quantities &a = m_a.samples, &b = m_b.samples;
        const Json place = PlaceOf(found.largestAt / m_a.partsPerSample, m_a.points);
        Json largest = LargestJson(a, b, found);
        largest["at"] = place;
        Add("samples",
            "samples: " + std::to_string(found.numDiffering) + " of " +
                Count(static_cast<std::size_t>(m_a.GetNumPoints()), "point differs, ", "points differ, ") +
                LargestText(a, b, found, place.dump()),
            {{"points", m_a.GetNumPoints()}, {"differing", found.numDiffering}, {"largest", std::move(largest)}});
    }

    static std::string LargestText(const Quantities& a, const Quantities& b, const Comparison& found,
                                   const std::string& place) {
        return "most by " + QuantityText(found.largest, a.exponents) + " at " + place + ": " +
               QuantityText(a.numbers[found.largestAt], a.exponents) + ", " +
               QuantityText(b.numbers[found.largestAt], b.exponents);
    }
    static Json LargestJson(const Quantities& a, const Quantities& b, const Comparison& found) {
        return {{"difference", FloatJson(found.largest)},
                {"a", FloatJson(a.numbers[found.largestAt])},
                {"b", FloatJson(b.numbers[found.largestAt])},
                {"unit", UnitText(a.exponents)}};
    }

    void ComparePositions(std::size_t axis) {
        const Positions &a = m_a.positions[axis], &b = m_b.positions[axis];
        const std::string of = "positions along dimension " + std::to_string(axis + 1);
        const Json dimension = {{"dimension", axis + 1}};
        if (a.numbers.size() != b.numbers.size()) {
            Json facts = dimension;
            facts.update({{"aCount", a.numbers.size()}, {"bCount", b.numbers.size()}});
            return Add("positions",
                       of + ": " + std::to_string(a.numbers.size()) + ", " + std::to_string(b.numbers.size()), facts);
        }
        if (!HaveSameUnits(of, a, b))
            return;
        const Comparison found = Tool::Compare(a, b, 1, 0);
        const std::size_t numDiffering = found.numDiffering + found.numMissingInA + found.numMissingInB;
        if (numDiffering == 0)
            return;
        Json facts = dimension;
        facts["differing"] = numDiffering;
        facts["largest"] = LargestJson(a, b, found);
        facts["largest"]["at"] = found.largestAt;
        std::string text = of + ": " + std::to_string(numDiffering) + " of " + std::to_string(a.numbers.size()) +
                           " differ, " + LargestText(a, b, found, std::to_string(found.largestAt));
        if (a.spacing && b.spacing)
            text += "; spacing " + OneLine(a.spacing->ToString()) + ", " + OneLine(b.spacing->ToString());
        Add("positions", std::move(text), std::move(facts));
    }

    const Measurement& m_a;
    const Measurement& m_b;
    const Tolerance& m_tolerance;
    std::vector<MeasuredDifference> m_found;
};

} // namespace

std::vector<MeasuredDifference> CompareMeasurements(const Measurement& a, const Measurement& b,
                                                    const Tolerance& tolerance) {
    return Comparer(a, b, tolerance).Compare();
}

} // namespace Qor::Tivor::Tool
