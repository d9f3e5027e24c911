#include "PositionForms.h"

namespace Qor::Tivor::Tool {

namespace {

using Positions = Core::QorConstArray<double>;

void PrintEach(const Positions& positions, Core::QorConstPtr<Core::UnitDescriptor> unit, const LineSink& print) {
    for (std::size_t i = 0; i < positions.size(); ++i)
        print(OneLine(UnitizedDouble(positions[i], unit).ToString()));
}

Json SpacingJson(const UnitizedDouble& spacing) { return {{"spacing", ElementJson(spacing)}}; }

Json ArrayJson(const Positions& positions, const Core::UnitDescriptor& unit) {
    return {{"positions", ValueJson(std::span(positions.get(), positions.size()))}, {"unit", UnitJson(unit)}};
}

} // namespace

void PositionLines(const FixedSpacing1D& positions, const LineSink& print) { print(OneLine(positions.ToString())); }
void PositionLines(const FixedSpacing2D& positions, const LineSink& print) { print(OneLine(positions.ToString())); }

void PositionLines(const ArrayPosition1D& positions, const LineSink& print) {
    PrintEach(positions.GetPositionArray(), positions.GetPositionUnits(), print);
}

void PositionLines(const ArrayPosition2D& positions, const LineSink& print) {
    PrintEach(positions.GetDim1PositionArray(), positions.GetDim1Units(), print);
    PrintEach(positions.GetDim2PositionArray(), positions.GetDim2Units(), print);
}

Json PositionJson(const FixedSpacing1D& positions) { return SpacingJson(positions.GetSpacing()); }

Json PositionJson(const FixedSpacing2D& positions) {
    return Json::array({SpacingJson(positions.GetDim1Spacing()), SpacingJson(positions.GetDim2Spacing())});
}

Json PositionJson(const ArrayPosition1D& positions) {
    return ArrayJson(positions.GetPositionArray(), *positions.GetPositionUnits());
}

Json PositionJson(const ArrayPosition2D& positions) {
    return Json::array({ArrayJson(positions.GetDim1PositionArray(), *positions.GetDim1Units()),
                        ArrayJson(positions.GetDim2PositionArray(), *positions.GetDim2Units())});
}

} // namespace Qor::Tivor::Tool
