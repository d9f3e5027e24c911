#include "Comparison.h"

#include "Elements.h"
#include "SameMeasurements.h"

#include <algorithm>
#include <cmath>

namespace Qor::Tivor::Tool {

namespace {

struct Rounding {
    std::uint64_t numSamples = 0;
    std::uint64_t numRounded = 0;
    double largest = 0; ///< in the unit of the source's scale
};

/// The distance of two samples in SI units: exact where both have the same scale, else what doubles tell.
double FindDistance(long double left, double leftFactor, long double right, double rightFactor) {
    if (!std::isfinite(left) && !std::isfinite(right)) // a point that is missing in both
        return 0;
    if (leftFactor == rightFactor)
        return static_cast<double>(std::abs(left - right)) * std::abs(leftFactor);
    return std::abs(static_cast<double>(left) * leftFactor - static_cast<double>(right) * rightFactor);
}

Rounding FindRounding(const SampledArray& source, const SampledArray& written) {
    const double factor = source.scale.GetSIValue(), otherFactor = written.scale.GetSIValue();
    Rounding rounding{source.samples.NumRows() * source.samples.NumColumns()};
    for (std::size_t row = 0; row < source.samples.NumRows(); ++row)
        for (std::size_t column = 0; column < source.samples.NumColumns(); ++column) {
            const double distance =
                FindDistance(source.samples.At(row, column), factor, written.samples.At(row, column), otherFactor);
            rounding.numRounded += distance != 0;
            rounding.largest = std::max(rounding.largest, distance);
        }
    rounding.largest /= source.scale.GetUnits()->GetScale();
    return rounding;
}

std::string Describe(const Rounding& rounding, const UnitizedDouble& scale) {
    const std::string& symbol = scale.GetUnits()->GetSymbol();
    return std::to_string(rounding.numRounded) + " of " + Count(rounding.numSamples, "sample", "samples") +
           " differ, by at most " + ShortText(rounding.largest, 3) + (symbol.empty() ? "" : ' ' + symbol);
}

/// What somebody told of the samples that were rounded, or null.
LedgerEntry* FindRounded(Ledger& ledger, const std::string& place) {
    const auto found = std::find_if(ledger.begin(), ledger.end(), [&](const LedgerEntry& entry) {
        return entry.kind == LedgerEntry::eROUNDED && entry.place == place;
    });
    return found != ledger.end() ? &*found : nullptr;
}

void Compare(const SampledArray& source, const SampledArray& written, Ledger& ledger) {
    if (source.valueType != written.valueType)
        ledger.push_back({LedgerEntry::eRETYPED, source.key,
                          "samples of " + source.valueType + " are written as " + written.valueType});
    if (!(source.scale == written.scale))
        ledger.push_back({LedgerEntry::eRESCALED, source.key,
                          "the scale " + source.scale.ToString() + " is written as " + written.scale.ToString()});
    const Rounding rounding = FindRounding(source, written);
    if (rounding.numRounded == 0)
        return;
    const std::string text = Describe(rounding, source.scale);
    if (LedgerEntry* const told = FindRounded(ledger, source.key))
        told->text += "; " + text;
    else
        ledger.push_back({LedgerEntry::eROUNDED, source.key, text});
}

/// What was written of an array, which may have another key then.
const SampledArray* FindWritten(const SampledArray& source, const std::vector<SampledArray>& written) {
    const SampledArray* found = nullptr;
    for (const SampledArray& candidate : written)
        if (candidate.key == source.key && candidate.HasSamePoints(source))
            return &candidate;
        else if (found == nullptr && source.MeansSameAs(candidate))
            found = &candidate;
    return found;
}

} // namespace

void TellChanges(const DataContainer& source, const DataContainer& written, Ledger& ledger) {
    const std::vector<SampledArray> theirs = ListSampledArrays(written);
    for (const SampledArray& our : ListSampledArrays(source)) {
        if (const SampledArray* const their = FindWritten(our, theirs))
            Compare(our, *their, ledger);
        else if (std::none_of(ledger.begin(), ledger.end(),
                              [&](const LedgerEntry& entry) { return entry.place == our.key; }))
            ledger.push_back({LedgerEntry::eDROPPED, our.key, "it is not among what was written"});
    }
}

} // namespace Qor::Tivor::Tool
