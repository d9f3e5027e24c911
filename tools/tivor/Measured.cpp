#include "Measured.h"

#include "Elements.h"
#include "Files.h"

namespace Qor::Tivor::Tool {

namespace {

using Axis = MeasuredFacts::Axis;

/// The ends of the positions along one axis, where they can be told.
template <class GetPosition>
void FindEnds(Axis& axis, GetPosition getPosition) {
    if (axis.points == 0)
        return;
    try {
        axis.ends.emplace(getPosition(0), getPosition(axis.points - 1));
    } catch (const Core::Error&) { // fewer positions than points
    }
}

// An array that begins elsewhere than at 0 may have a fixed spacing, too, which does not tell where it begins.
std::vector<Axis> AxesOf(const Data1D& profile) {
    std::vector<Axis> axes(1);
    axes[0].points = profile.GetNumPoints();
    const auto positions = profile.GetPositionFunction();
    if (const auto fixed = std::dynamic_pointer_cast<const FixedSpacing1D>(positions))
        axes[0].spacing = fixed->GetSpacing();
    else if (positions)
        FindEnds(axes[0], [&](std::uint64_t index) { return positions->GetPosition(index); });
    return axes;
}

std::vector<Axis> AxesOf(const Data2D& surface) {
    std::vector<Axis> axes(2);
    axes[0].points = surface.GetNumDimension1Points();
    axes[1].points = surface.GetNumDimension2Points();
    const auto positions = surface.GetPositionFunction();
    if (const auto fixed = std::dynamic_pointer_cast<const FixedSpacing2D>(positions)) {
        axes[0].spacing = fixed->GetDim1Spacing();
        axes[1].spacing = fixed->GetDim2Spacing();
    } else if (positions) {
        Nalix::Vector<UnitizedDouble> position;
        for (std::size_t i = 0; i < axes.size(); ++i)
            FindEnds(axes[i], [&](std::uint64_t index) {
                positions->GetPosition(i == 0 ? index : 0, i == 0 ? 0 : index, position);
                return position[i];
            });
    }
    return axes;
}

template <class T>
std::optional<SampleStatistics> StatisticsOf(const T& measured) {
    try {
        return GetStatistics(measured);
    } catch (const Core::LogicError&) { // there are none of such samples
        return std::nullopt;
    }
}

template <class T>
std::optional<MeasuredFacts> FactsOf(const DataObject& object) {
    const auto* const wrapper = dynamic_cast<const GenericWrapper<T>*>(&object);
    const auto value = wrapper != nullptr ? wrapper->GetData() : nullptr;
    if (!value)
        return std::nullopt;
    return MeasuredFacts{object.GetTypeName(), value->GetValueTypeName(), AxesOf(*value),
                         value->GetDataKind(), value->GetDataScale(),     StatisticsOf(*value)};
}

std::string DescribePositions(const std::vector<Axis>& axes) {
    std::string spacings, ends;
    for (const Axis& axis : axes) {
        if (axis.spacing)
            spacings += (spacings.empty() ? "spacing " : " x ") + OneLine(axis.spacing->ToString());
        else if (axis.ends)
            ends += (ends.empty() ? "positions from " : ", from ") + OneLine(axis.ends->first.ToString()) + " to " +
                    OneLine(axis.ends->second.ToString());
        else
            return "no positions";
    }
    return spacings + ends;
}

std::string DescribeMissing(const SampleStatistics& statistics) {
    return statistics.numMissing == 0 ? "no points missing"
                                      : Count(statistics.numMissing, "point missing", "points missing");
}

Json AxisJson(const Axis& axis) {
    Json json = {{"points", axis.points}};
    if (axis.spacing)
        json["spacing"] = ElementJson(*axis.spacing);
    if (axis.ends) {
        json["first"] = ElementJson(axis.ends->first);
        json["last"] = ElementJson(axis.ends->second);
    }
    return json;
}

} // namespace

std::optional<MeasuredFacts> FindMeasuredFacts(const DataObject& object) {
    const auto profile = FactsOf<Data1D>(object);
    return profile ? profile : FactsOf<Data2D>(object);
}

bool IsMeasured(const DataObjectHeader& header) {
    return WithoutFlag(header.typeCode) == eNAMED_CLASS && (header.typeName == "Data1D" || header.typeName == "Data2D");
}

std::vector<std::optional<MeasuredFacts>> ReadMeasuredFacts(const std::string& fileName, const std::vector<Path>& paths,
                                                            Console& console) {
    std::vector<std::optional<MeasuredFacts>> all(paths.size());
    const bool hidWarnings = std::exchange(console.hidesWarnings, true);
    try {
        const bool isRead = !paths.empty() && GetFileSize(fileName) <= mostBytesForFacts;
        const auto file = isRead ? OpenFile(fileName, DataFile::eREAD_ONLY) : nullptr;
        for (std::size_t i = 0; file && i < paths.size(); ++i)
            all[i] = FindMeasuredFacts(*FindObject(*file, paths[i]));
    } catch (const Core::Error&) { // the headers tell what they can
    }
    console.hidesWarnings = hidWarnings;
    return all;
}

std::string Describe(const MeasuredFacts& facts) {
    std::string points;
    for (const Axis& axis : facts.axes)
        points += (points.empty() ? "" : " x ") + std::to_string(axis.points);
    return points + ' ' + facts.valueType + ", " + DescribePositions(facts.axes) + ", kind " + Show(facts.kind) +
           ", scale " + OneLine(facts.scale.ToString()) +
           (facts.statistics ? ", " + DescribeMissing(*facts.statistics) : "");
}

std::string DescribeStatistics(const MeasuredFacts& facts) {
    if (!facts.statistics || facts.statistics->numMissing == facts.statistics->numPoints)
        return {};
    const SampleStatistics& statistics = *facts.statistics;
    return "samples from " + NumberText(statistics.minimum) + " to " + NumberText(statistics.maximum) + ", mean " +
           ShortText(statistics.mean, 6) + ", rms " + ShortText(statistics.rms, 6) + '\n';
}

Json ToJson(const MeasuredFacts& facts) {
    Json axes = Json::array();
    for (const Axis& axis : facts.axes)
        axes.push_back(AxisJson(axis));
    Json json = {{"class", TextJson(facts.className)},
                 {"type", facts.valueType},
                 {"axes", std::move(axes)},
                 {"kind", TextJson(facts.kind)},
                 {"scale", ElementJson(facts.scale)}};
    if (facts.statistics) {
        json["missing"] = facts.statistics->numMissing;
        json["minimum"] = FloatJson(facts.statistics->minimum);
        json["maximum"] = FloatJson(facts.statistics->maximum);
        json["mean"] = FloatJson(facts.statistics->mean);
        json["rms"] = FloatJson(facts.statistics->rms);
    }
    return json;
}

} // namespace Qor::Tivor::Tool
