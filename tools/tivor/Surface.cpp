#include "Surface.h"

#include "Display.h"
#include "Elements.h"
#include "Values.h"

#include <QorCore/Message.h>

#include <cstring>

namespace Qor::Tivor::Tool {

namespace {

using Samples = RowMajorMatrix<double>;
using Teller = std::function<void(const std::string& deviation)>;

const char* const samplesKey = "Samples";
const Path reviewPath{"Comments", "Review"};

void PutAxis(DataContainer& axes, const std::string& name, const Length& length, std::size_t points) {
    const auto axis = axes.GetSubData({name}, true);
    axis->PutValue("Length", length.number);
    axis->PutValue("Unit", length.unit);
    axis->PutValue("Points", static_cast<int>(points));
}

void CompareSamples(const Samples& expected, const Samples& found, const Teller& tell) {
    if (expected.size1() != found.size1() || expected.size2() != found.size2())
        return tell(Core::FormatText("%1%: the text has %2% x %3%, the file %4% x %5%",
                                     {samplesKey, expected.size1(), expected.size2(), found.size1(), found.size2()}));
    for (std::size_t y = 0; y < expected.size1(); ++y)
        for (std::size_t x = 0; x < expected.size2(); ++x)
            if (std::memcmp(&expected(y, x), &found(y, x), sizeof(double)) != 0)
                tell(Core::FormatText("%1%, row %2%, column %3%: the text has %4%, the file %5%",
                                      {samplesKey, y, x, NumberText(expected(y, x)), NumberText(found(y, x))}));
}

void CompareObjects(DataObject& expected, DataObject& found, const std::string& name, const Teller& tell) {
    auto* const expectedSamples = dynamic_cast<Data<Samples>*>(&expected);
    auto* const foundSamples = dynamic_cast<Data<Samples>*>(&found);
    if (expectedSamples != nullptr && foundSamples != nullptr)
        CompareSamples(expectedSamples->GetValue(), foundSamples->GetValue(), tell);
    else if (!expected.HoldsSameTypeAs(found))
        tell(Core::FormatText("%1%: the text makes a %2%, the file has a %3%",
                              {name, expected.GetTypeName(), Show(found.GetTypeName())}));
    else if (!bool(expected.HoldsSameValueAs(found)))
        tell(Core::FormatText("%1%: the text has %2%, the file %3%", {name, BriefText(expected), BriefText(found)}));
}

void CompareContainers(DataContainer& expected, DataContainer& found, const Path& above, const Teller& tell) {
    for (const auto& [key, object] : expected) {
        Path path = above;
        path.push_back(key);
        if (path == reviewPath)
            continue;
        const auto below = expected.GetPtr<DataContainer>(key);
        const auto foundBelow = found.GetPtr<DataContainer>(key);
        if (const auto other = found.Get(key); !other)
            tell(ShowPath(path) + ": the file has no such entry");
        else if (below && foundBelow)
            CompareContainers(*below, *foundBelow, path, tell);
        else
            CompareObjects(*object, *other, ShowPath(path), tell);
    }
}

} // namespace

void PutSurface(DataContainer& container, const SurfaceText& surface) {
    container.PutValue("Name", surface.GetHeader("Channel"));
    container.PutValue(samplesKey, surface.heights);
    const auto axes = container.GetSubData({"Axes"}, true);
    PutAxis(*axes, "X", surface.width, surface.heights.size2());
    PutAxis(*axes, "Y", surface.height, surface.heights.size1());
    axes->GetSubData({"Value"}, true)->PutValue("Unit", surface.GetHeader("Value units"));
    const auto source = container.GetSubData({"Comments", "Source"}, true);
    for (const auto& [name, text] : surface.header)
        source->PutValue(name, text);
    const auto review = container.GetSubData(reviewPath, true);
    review->PutValue("State", "as measured, not levelled");
    review->PutValue("Checks", 0);
}

void CompareSurface(DataContainer& container, const SurfaceText& surface, const Teller& tell) {
    DataContainer expected;
    PutSurface(expected, surface);
    CompareContainers(expected, container, {}, tell);
}

} // namespace Qor::Tivor::Tool
