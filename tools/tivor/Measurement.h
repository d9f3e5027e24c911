#pragma once

#include "Display.h"

#include <Tivor/DataContainer.h>
#include <Tivor/DataSet.h>

#include <functional>
#include <optional>
#include <vector>

namespace Qor::Tivor::Tool {

/// Numbers in units of SI, whatever unit they are stored in.
struct Quantities {
    Core::UnitDescriptor::Exponents exponents{};
    double factor = 1; ///< what the stored numbers were multiplied by
    double offset = 0; ///< and what was added then
    std::vector<double> numbers;
};

/// Where the samples lie along one dimension; no numbers where nothing tells it.
struct Positions : Quantities {
    std::optional<UnitizedDouble> spacing; ///< as it is stored, where a fixed one tells all of them
};

/// What a measured array means, however it is stored.
struct Measurement {
    std::uint64_t GetNumPoints() const;
    /// Whether the samples are numbers: those of classes that are not known here are not.
    bool HasSamples() const { return samples.numbers.size() == GetNumPoints() * partsPerSample; }

    Path path;
    std::string className;
    std::string sampleType;
    std::string kind;
    std::string origin; ///< of a surface
    UnitizedDouble scale;
    std::vector<std::uint64_t> points; ///< along each dimension
    Quantities samples;                ///< the last dimension runs fastest; not finite where a point is missing
    std::size_t partsPerSample = 1;    ///< 2 of complex numbers
    std::vector<Positions> positions;  ///< along each dimension
    std::shared_ptr<const DataContainer> properties; ///< beside those that each measured array has
};

/// A file's content by what it means: the data set that it is in whatever layout, and what stands beside its surfaces
/// and profiles.
class MeasuredContent {
public:
    /// Changes nothing in the container. One in a layout that has no codec has entries only.
    explicit MeasuredContent(const DataContainer& container);

    /// Surfaces and profiles of the data set, then those deeper among the entries, each described when its turn comes.
    void ForEach(const std::function<void(Measurement)>& visit) const;
    std::vector<Measurement> List() const;
    /// The metadata without what each layout has of its own, and what stands beside the layout's containers.
    const DataContainer& GetEntries() const { return *m_entries; }

private:
    std::shared_ptr<IDataSet> m_set;
    std::shared_ptr<DataContainer> m_entries;
};

/// Nothing for other objects.
std::optional<Measurement> FindMeasurement(const DataObject& object, Path path);
bool IsMeasured(const DataObject& object);

/// A number of a unit in SI. Where the unit is one of several equal parts, as a micrometer, the result is the double
/// nearest to the quotient.
double InSI(double number, const Core::UnitDescriptor& unit);
/// The unit of SI of these dimensions, as "m" or "m*s^-1"; empty for plain numbers.
std::string UnitText(const Core::UnitDescriptor::Exponents& exponents);
std::string QuantityText(double number, const Core::UnitDescriptor::Exponents& exponents);

} // namespace Qor::Tivor::Tool
