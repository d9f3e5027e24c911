#include "Imported.h"

#include "Display.h"
#include "Elements.h"
#include "EvenSpacing.h"
#include "Units.h"
#include "Values.h"

#include <QorCore/Message.h>
#include <Tivor/Data1D.h>
#include <Tivor/Data2D.h>

#include <cstring>

namespace Qor::Tivor::Tool {

namespace {

using Teller = std::function<void(const std::string& deviation)>;

const Path reviewPath{"Comments", "Review"};

UnitizedDouble SpacingOf(const Length& length, std::size_t points) {
    return {length.number / static_cast<double>(points), FindUnit(length.unit)};
}

std::shared_ptr<DataObject> MakeSurface(const MeasuredText& text) {
    const auto surface = Data2D::Create(MakeData(text.numbers));
    surface->SetFixedSpacing(SpacingOf(text.height, text.numbers.size1()), SpacingOf(text.width, text.numbers.size2()));
    surface->SetDataKind(text.GetHeader("Channel"));
    surface->SetDataScale(UnitizedDouble(1.0, FindUnit(text.GetHeader("Value units"))));
    return ValueTraits<Data2D>::MakeData(surface);
}

std::shared_ptr<DataObject> MakeProfile(const MeasuredText& text) {
    const std::size_t count = text.numbers.size1();
    const auto positions = AllocateArray<double>(count);
    const auto heights = AllocateArray<double>(count);
    for (std::size_t i = 0; i < count; ++i) {
        positions.get()[i] = text.numbers(i, 0);
        heights.get()[i] = text.numbers(i, 1);
    }
    const auto profile = Data1D::CreateFrom(std::make_shared<Array<double>>(heights, count));
    if (const auto spacing = FindEvenSpacing({positions.get(), count}, text.lastDigits))
        profile->SetFixedSpacing(UnitizedDouble(*spacing));
    else
        profile->SetPositionFunction(std::make_shared<ArrayPosition1D>(positions, count, nullptr));
    return ValueTraits<Data1D>::MakeData(profile);
}

bool AreSameBits(double left, double right) { return std::memcmp(&left, &right, sizeof left) == 0; }

/// Numbers as what they are to a reader: the samples of a surface have a row and a column, those of a profile a place.
void CompareSamples(const RowMajorMatrix<double>& expected, const RowMajorMatrix<double>& found,
                    const std::string& name, const Teller& tell) {
    if (expected.size1() != found.size1() || expected.size2() != found.size2())
        return tell(Core::FormatText("%1%: the text has %2% x %3%, the file %4% x %5%",
                                     {name, expected.size1(), expected.size2(), found.size1(), found.size2()}));
    for (std::size_t y = 0; y < expected.size1(); ++y)
        for (std::size_t x = 0; x < expected.size2(); ++x)
            if (!AreSameBits(expected(y, x), found(y, x)))
                tell(Core::FormatText("%1%, row %2%, column %3%: the text has %4%, the file %5%",
                                      {name, y, x, NumberText(expected(y, x)), NumberText(found(y, x))}));
}

void CompareSamples(std::span<const double> expected, std::span<const double> found, const std::string& name,
                    const Teller& tell) {
    if (expected.size() != found.size())
        return tell(Core::FormatText("%1%: the text has %2%, the file %3%", {name, expected.size(), found.size()}));
    for (std::size_t i = 0; i < expected.size(); ++i)
        if (!AreSameBits(expected[i], found[i]))
            tell(Core::FormatText("%1%, point %2%: the text has %3%, the file %4%",
                                  {name, i, NumberText(expected[i]), NumberText(found[i])}));
}

bool AreComparedAsSamples(DataObject& expected, DataObject& found, const std::string& name, const Teller& tell) {
    using Matrix = Data<RowMajorMatrix<double>>;
    using Profile = const Array<double>;
    if (auto* const left = dynamic_cast<Matrix*>(&expected), * const right = dynamic_cast<Matrix*>(&found);
        left != nullptr && right != nullptr)
        CompareSamples(left->GetValue(), right->GetValue(), name, tell);
    else if (auto* const ours = dynamic_cast<Profile*>(&expected), * const theirs = dynamic_cast<Profile*>(&found);
             ours != nullptr && theirs != nullptr)
        CompareSamples(ours->GetElements(), theirs->GetElements(), name, tell);
    else
        return false;
    return true;
}

void CompareContainers(const DataContainer& expected, const DataContainer& found, const Path& above,
                       const Teller& tell);

void CompareObjects(DataObject& expected, DataObject& found, const Path& path, const Teller& tell) {
    const std::string name = ShowPath(path);
    if (!expected.HoldsSameTypeAs(found))
        return tell(Core::FormatText("%1%: the text makes a %2%, the file has a %3%",
                                     {name, expected.GetTypeName(), Show(found.GetTypeName())}));
    if (const auto below = EntriesIn(expected))
        CompareContainers(*below, *EntriesIn(found), path, tell);
    else if (!AreComparedAsSamples(expected, found, name, tell) && !bool(expected.HoldsSameValueAs(found)))
        tell(Core::FormatText("%1%: the text has %2%, the file %3%", {name, BriefText(expected), BriefText(found)}));
}

void CompareContainers(const DataContainer& expected, const DataContainer& found, const Path& above,
                       const Teller& tell) {
    for (const auto& [key, object] : expected) {
        Path path = above;
        path.push_back(key);
        if (path == reviewPath)
            continue;
        if (const auto other = found.Get(key))
            CompareObjects(*object, *std::const_pointer_cast<DataObject>(other), path, tell);
        else
            tell(ShowPath(path) + ": the file has no such entry");
    }
}

} // namespace

const char* GetMeasuredKey(const MeasuredText& text) { return text.isProfile ? "Profile" : "Surface"; }

void PutImported(DataContainer& container, const MeasuredText& text) {
    container.Put(GetMeasuredKey(text), text.isProfile ? MakeProfile(text) : MakeSurface(text));
    const auto source = container.GetSubData({"Comments", "Source"}, true);
    for (const auto& [name, line] : text.header)
        source->PutValue(name, line);
    const auto review = container.GetSubData(reviewPath, true);
    review->PutValue("State", "as measured, not levelled");
    review->PutValue("Checks", 0);
}

std::vector<std::string> FindUnknownUnits(const MeasuredText& text) {
    std::vector<std::string> unknown;
    if (!text.isProfile)
        for (const std::string& unit : {text.width.unit, text.height.unit, text.GetHeader("Value units")})
            if (!FindUnit(unit))
                unknown.push_back(unit);
    return unknown;
}

void CompareImported(DataContainer& container, const MeasuredText& text, const Teller& tell) {
    DataContainer expected;
    PutImported(expected, text);
    CompareContainers(expected, container, {}, tell);
}

} // namespace Qor::Tivor::Tool
