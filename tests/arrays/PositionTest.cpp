#include "Alerts.h"
#include "Samples.h"
#include "StoredBytes.h"

#include <gtest/gtest.h>

#include <cmath>

namespace Qor::Tivor::Testing {

namespace {

using Core::Testing::RaisedBy;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

const Core::UnitDescriptor millimeter = *Core::UnitDictionary::Instance().Get("Millimeter");
const Core::UnitDescriptor micrometer = *Core::UnitDictionary::Instance().Get("Micrometer");

std::string TextOf(const Core::QorConstPtr<UnitizedDouble>& spacing) { return spacing ? spacing->ToString() : "none"; }

template <class Function>
std::string PositionText(const Function& function, std::uint64_t i, std::uint64_t j) {
    Nalix::Vector<UnitizedDouble> position;
    function.GetPosition(i, j, position);
    return std::to_string(position.size()) + ": " + position[0].ToString() + ", " + position[1].ToString();
}

} // namespace

TEST(Position, IsTheIndexTimesTheSpacing) {
    const FixedSpacing1D half(UnitizedDouble(0.5, "Millimeter"));
    const std::pair<std::uint64_t, double> rows[] = {
        {0, 0}, {4, 2}, {(1ull << 53) + 1, 0x1p52}, {1ull << 63, 0x1p62}, {UINT64_MAX, 0x1p63}};
    for (const auto& [index, expected] : rows) {
        EXPECT_EQ(half.GetPosition(index), UnitizedDouble(expected, "Millimeter"));
        Nalix::Vector<UnitizedDouble> position(5);
        FixedSpacing2D(half.GetSpacing(), UnitizedDouble(0.5, "Second")).GetPosition(3, index, position);
        EXPECT_TRUE(position.size() == 2 && position[0] == UnitizedDouble(1.5, "Millimeter"));
        EXPECT_EQ(position[1], UnitizedDouble(expected, "Second"));
    }
    EXPECT_TRUE(half.SpacingIsFixed() && FixedSpacing2D().Dim1SpacingIsFixed() &&
                FixedSpacing2D().Dim2SpacingIsFixed());
    EXPECT_EQ(FixedSpacing1D().ToString() + ", " + FixedSpacing2D().ToString(), "0 mm, 0 mm x 0 mm");
}

TEST(Position, IsInTheArray) {
    const ArrayPosition1D line = PositionsOf({7, -1, 3}, micrometer);
    EXPECT_EQ(line.GetPosition(0).ToString() + ", " + line.GetPosition(2).ToString(), "7 um, 3 um");
    for (const std::uint64_t index : {std::uint64_t{3}, UINT64_MAX}) {
        const auto error = RaisedBy<Core::OutOfRangeError>([&] { line.GetPosition(index); });
        EXPECT_EQ(error.GetText(), "Invalid array index of" + std::to_string(index) + " for position array of size 3");
        EXPECT_EQ(error.GetCategory() + error.GetContext().source, "Qor.Tivor.ArrayPosition1DPosition1D");
    }
    EXPECT_EQ(RaisedBy<Core::OutOfRangeError>([] { ArrayPosition1D().GetPosition(0); }).GetText(),
              "Invalid array index of0 for position array of size 0");

    const ArrayPosition2D grid = PositionsOf({7, -1, 3}, micrometer, {5, 6}, millimeter);
    EXPECT_EQ(PositionText(grid, 2, 1), "2: 3 um, 6 mm");
    for (const auto& [i, j] : {std::pair<std::uint64_t, std::uint64_t>(3, 0), {0, 2}, {1ull << 63, UINT64_MAX}}) {
        Nalix::Vector<UnitizedDouble> position(5);
        const auto error = RaisedBy<Core::OutOfRangeError>([&, i = i, j = j] { grid.GetPosition(i, j, position); });
        EXPECT_EQ(error.GetText(), "Invalid coordinate position of (" + std::to_string(i) + ',' + std::to_string(j) +
                                       ") for position arrays of size (3,2)");
        EXPECT_EQ(error.GetCategory() + error.GetContext().source, "Qor.Tivor.ArrayPosition2DPosition2D");
        EXPECT_EQ(position.size(), 5u);
    }
}

// What files and programs rely on: it is not whether the steps are equal.
TEST(Position, IsEvenlySpacedByItsSecondElementAlone) {
    const struct {
        std::vector<double> positions;
        bool isFixed;
        std::string spacing; // of one of two dimensions
    } rows[] = {{{}, true, "0 m"},
                {{5}, true, "0 m"},
                {{7, 9}, true, "2 mm"},
                {{nan, 9}, true, "nan mm"},
                {{0, 1, 5}, true, "1 mm"},
                {{1, 2, 3}, false, "none"},
                {{0x1p-51, 1, 2}, true, "0.9999999999999996 mm"},
                {{-0x1p-51, 1, 2}, true, "1.0000000000000004 mm"},
                {{0x1p-50, 1, 2}, false, "none"},
                {{-0x1p-50, 1, 2}, false, "none"},
                {{0x1p-50, 8, 2}, true, "7.999999999999999 mm"},
                {{1, 1e17, 2}, true, "1e+17 mm"},
                {{1e-3, 1e14, 2}, true, "1e+14 mm"},
                {{0, infinity, 2}, true, "inf mm"},
                {{infinity, infinity, 2}, false, "none"},
                {{nan, 1, 2}, false, "none"},
                {{0, nan, 2}, false, "none"},
                {{0, 1, nan}, true, "1 mm"}};
    for (const auto& row : rows) {
        ArrayPosition1D line = PositionsOf(row.positions, millimeter);
        SCOPED_TRACE(line.ToString());
        EXPECT_EQ(line.SpacingIsFixed(), row.isFixed);
        for (const bool isFirst : {true, false}) {
            ArrayPosition2D grid = isFirst ? PositionsOf(row.positions, millimeter, {1, 2, 3}, micrometer)
                                           : PositionsOf({1, 2, 3}, micrometer, row.positions, millimeter);
            EXPECT_EQ(TextOf(isFirst ? grid.GetFixedDim1Spacing() : grid.GetFixedDim2Spacing()), row.spacing);
            EXPECT_EQ(isFirst ? grid.Dim1SpacingIsFixed() : grid.Dim2SpacingIsFixed(), row.isFixed);
            EXPECT_FALSE(isFirst ? grid.Dim2SpacingIsFixed() : grid.Dim1SpacingIsFixed());
        }
    }
    const auto read = Read(Stored(*MakeData(ArrayPosition1D())));
    EXPECT_TRUE(ArrayPosition1D().SpacingIsFixed() && bool(read->HoldsSameValueAs(*MakeData(ArrayPosition1D()))));
    EXPECT_EQ(TextOf(ArrayPosition2D().GetFixedDim1Spacing()), "0 m");
}

TEST(Position, HasAnAspectWhateverTheUnits) {
    const std::tuple<UnitizedDouble, UnitizedDouble, float> rows[] = {
        {{1, "Millimeter"}, {2, "Millimeter"}, 2.0f}, {{1, "Millimeter"}, {1000, "Micrometer"}, 1.0f},
        {{500, "Micrometer"}, {0.1, "Inch"}, 5.08f},  {2.0, {50, "Percent"}, 0.25f},
        {{0, "Millimeter"}, {2, "Millimeter"}, 1.0f}, {{-0.0, "Meter"}, {2, "Millimeter"}, 1.0f},
        {{4, "Millimeter"}, {2, "Second"}, 1.0f},     {{4, "Millimeter"}, 2.0, 1.0f},
        {{1, "Celsius"}, {2, "Celsius"}, 1.0f},       {{2, "Meter"}, {0, "Meter"}, 0.0f},
        {{1, "Meter"}, {nan, "Meter"}, nan}};
    for (const auto& [dim1, dim2, aspect] : rows) {
        Nalix::Vector<UnitizedDouble> both(2);
        both[0] = dim1;
        both[1] = dim2;
        FixedSpacing2D set(UnitizedDouble(3, "Second"), 7.0f), setBackwards = set;
        set.SetDim1Spacing(dim1);
        set.SetDim2Spacing(dim2);
        setBackwards.SetDim2Spacing(dim2);
        setBackwards.SetDim1Spacing(dim1);
        for (const FixedSpacing2D& spacing : {FixedSpacing2D(dim1, dim2), FixedSpacing2D(both), set, setBackwards}) {
            EXPECT_TRUE(spacing.GetAspect() == aspect || (std::isnan(spacing.GetAspect()) && std::isnan(aspect)))
                << spacing.ToString() << " has " << spacing.GetAspect();
            EXPECT_EQ(spacing, FixedSpacing2D(dim1, dim2));
        }
    }
    const FixedSpacing2D given(UnitizedDouble(2, "Celsius"), 3.0f);
    EXPECT_TRUE(given.GetAspect() == 3.0f && given.GetDim2Spacing() == UnitizedDouble(6, "Celsius"));
    EXPECT_TRUE(bool(Read(Stored(*MakeData(given)))->HoldsSameValueAs(*MakeData(given))));
    EXPECT_EQ(RaisedBy<Core::OutOfRangeError>([] { FixedSpacing2D(Nalix::Vector<UnitizedDouble>(1)); }).GetText(),
              "Expected the spacings of 2 dimensions, found 1");
}

TEST(PositionCopies, ShareWhatTheyAreMeantTo) {
    const auto array = ArrayOf({0, 1, 2});
    const auto units = millimeter.Clone();
    ArrayPosition1D line(array, 3, units);
    array[0] = 5; // evenly spaced no more, but that was found before
    ArrayPosition1D copy(line), assigned;
    assigned = line;
    const ArrayPosition1D clone = line.Clone();
    const auto stored = MakeData(line)->Clone();
    array[1] = 9;
    for (const ArrayPosition1D* const sharer : {&line, &copy, &assigned})
        EXPECT_TRUE(sharer->GetPositionArray().get() == array.get() && sharer->GetPositionUnits() == units &&
                    sharer->SpacingIsFixed());
    for (const ArrayPosition1D& own :
         {clone, std::dynamic_pointer_cast<Tivor::DataOf<ArrayPosition1D>>(stored)->GetValue()})
        EXPECT_TRUE(own.GetPositionArray().get() != array.get() && own.GetPositionUnits() != units &&
                    own == PositionsOf({5, 1, 2}, millimeter) && own.SpacingIsFixed());
    const auto read = Read(Stored(*stored));
    EXPECT_FALSE(std::dynamic_pointer_cast<Tivor::DataOf<ArrayPosition1D>>(read)->GetValue().SpacingIsFixed());
    copy.SetPositionUnits(*units);
    EXPECT_TRUE(copy == line && copy.GetPositionUnits() != units);
    RaisedBy<Core::NullPointerError>([&] { line.SetPositionArray({}, 1, {}); });
    EXPECT_EQ(line.ToString(), "[5, 9, 2] mm");
    line.SetPositionArray({}, 0, {});
    EXPECT_EQ(line, ArrayPosition1D());
}

TEST(PositionCopies, OfTwoDimensionsShareNoArrays) {
    const auto dim1 = ArrayOf({0, 1, 2}), dim2 = ArrayOf({1, 2, 3});
    ArrayPosition2D grid(dim1, dim2, 3, 3, millimeter.Clone(), nullptr);
    EXPECT_TRUE(grid.GetDim1PositionArray().get() == dim1.get() && grid.GetDim2PositionArray().get() == dim2.get());
    grid.SetDim1Units(micrometer); // the spacing keeps its unit
    dim1[0] = 5;
    ArrayPosition2D copy(grid), assigned;
    assigned = grid;
    dim1[1] = dim2[1] = 9;
    for (ArrayPosition2D* const own : {&copy, &assigned}) {
        EXPECT_EQ(own->ToString(), "[5, 1, 2] um x [1, 2, 3]");
        EXPECT_TRUE(own->GetDim1Units() != grid.GetDim1Units() && own->GetDim2Units() != grid.GetDim2Units());
        EXPECT_EQ(own->GetFixedDim1Spacing(), grid.GetFixedDim1Spacing());
        EXPECT_EQ(TextOf(own->GetFixedDim1Spacing()) + TextOf(own->GetFixedDim2Spacing()), "1 mmnone");
    }
    const ArrayPosition2D moved(std::move(grid));
    EXPECT_TRUE(moved.GetDim1PositionArray().get() == dim1.get() && grid == ArrayPosition2D());
    RaisedBy<Core::NullPointerError>([&] { copy.SetDim2PositionArray({}, 1, {}); });
    EXPECT_EQ(copy, assigned);

    FixedSpacing2D spacing(UnitizedDouble(1, "Meter"), 2.0f);
    const auto handedOut = spacing.GetFixedDim1Spacing();
    spacing.SetDim1Spacing(3.0);
    EXPECT_EQ(TextOf(handedOut) + TextOf(spacing.GetFixedDim1Spacing()) + TextOf(spacing.GetFixedDim2Spacing()),
              "1 m32 m");
}

} // namespace Qor::Tivor::Testing
