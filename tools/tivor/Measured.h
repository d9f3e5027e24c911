#pragma once

#include "Commands.h"
#include "Display.h"

#include <Tivor/DataFile.h>
#include <Tivor/SampleStatistics.h>

#include <optional>

namespace Qor::Tivor::Tool {

/// What a measured array is, in short.
struct MeasuredFacts {
    /// Along one dimension: a spacing, or the first position and the last.
    struct Axis {
        std::uint64_t points = 0;
        std::optional<UnitizedDouble> spacing;
        std::optional<std::pair<UnitizedDouble, UnitizedDouble>> ends;
    };

    std::string className;
    std::string valueType;
    std::vector<Axis> axes;
    std::string kind;
    UnitizedDouble scale;
    std::optional<SampleStatistics> statistics; ///< nothing for samples that are complex
};

/// Nothing for other objects. Reads the samples.
std::optional<MeasuredFacts> FindMeasuredFacts(const DataObject& object);
/// Whether an entry with this header is a measured array.
bool IsMeasured(const DataObjectHeader& header);
/// Larger files are not read only to tell what measured arrays hold.
inline constexpr std::uint64_t mostBytesForFacts = std::uint64_t{64} << 20;
/// Of the measured arrays of a file where the paths lead, without a warning; of those that cannot be read, or stand in
/// a larger file, nothing.
std::vector<std::optional<MeasuredFacts>> ReadMeasuredFacts(const std::string& fileName, const std::vector<Path>& paths,
                                                            Console& console);

/// On one line: points, element type, positions, kind, scale, missing points.
std::string Describe(const MeasuredFacts& facts);
/// A line; empty when there are no statistics, or of no sample.
std::string DescribeStatistics(const MeasuredFacts& facts);
Json ToJson(const MeasuredFacts& facts);

} // namespace Qor::Tivor::Tool
