#include "Alerts.h"
#include "Samples.h"
#include "StoredBytes.h"

#include <Tivor/PropertyContainer.h>

#include <gtest/gtest.h>

#include <cstring>

// Position functions as data objects; what goes for all classes is tested with those.

namespace Qor::Tivor::Testing {

namespace {

using Core::Testing::RaisedBy;
using Core::Testing::Warnings;

/// Reads the content of an object's element.
template <class T>
T ReadXML(const std::string& content) {
    const auto read = DataContainer::FromXMLString("<DataContainer><Data key='k' typeid='124' typename='" +
                                                   ValueTraits<T>::GetTypeName() + "' size='1'>" + content +
                                                   "</Data></DataContainer>");
    return read->template GetValue<T>("k").value();
}

} // namespace

TEST(PositionData, IsFoundAsItselfAndAsAnyPosition) {
    DataContainer container;
    container.PutValue("fixed", FixedSpacing1D(UnitizedDouble(2, "Meter")));
    container.Put("bare", GenericWrapper<Position1D>::Create(container.GetPtr<Position1D>("fixed")));
    container.PutValue("grid", PositionsOf({0}, {}, {1}, {}));
    for (const char* const key : {"fixed", "bare"}) {
        EXPECT_EQ(container.GetPtr<Position1D>(key)->GetPosition(3).ToString(), "6 m");
        EXPECT_EQ(std::as_const(container).GetPtr<FixedSpacing1D>(key), container.GetPtr<Position1D>(key));
        EXPECT_EQ(container.GetValue<FixedSpacing1D>(key), FixedSpacing1D(UnitizedDouble(2, "Meter")));
        EXPECT_FALSE(container.GetPtr<ArrayPosition1D>(key) || container.GetPtr<Position2D>(key));
    }
    EXPECT_TRUE(container.GetPtr<Position2D>("grid")->Dim1SpacingIsFixed() &&
                !container.GetPtr<FixedSpacing2D>("grid"));
    PropertyContainer properties(true);
    properties.SetProperty("fixed", container.Get("fixed"));
    EXPECT_EQ(properties.GetValue<FixedSpacing1D>("fixed"), container.GetValue<FixedSpacing1D>("fixed"));
    EXPECT_FALSE(properties.GetValue<ArrayPosition1D>("fixed").has_value());
}

TEST(PositionData, OfAForeignClassIsNeitherStoredNorCompared) {
    struct Squares final : Position1D {
        UnitizedDouble GetPosition(std::uint64_t index) const override { return static_cast<double>(index * index); }
        bool SpacingIsFixed() const override { return false; }
    };
    const auto squares = GenericWrapper<Position1D>::Create(std::make_shared<Squares>());
    const auto others = GenericWrapper<Position1D>::Create(std::make_shared<Squares>());
    const auto fixed = MakeData(FixedSpacing1D());
    EXPECT_TRUE(squares->GetTypeID() == ePOSITION_1D && squares->GetTypeName() == "Position1D");
    EXPECT_TRUE(squares->HoldsSameTypeAs(*fixed) && fixed->HoldsSameTypeAs(*squares));
    EXPECT_TRUE(bool(!squares->HoldsSameValueAs(*fixed)) && bool(squares->Clone()->HoldsSameValueAs(*squares)));
    EXPECT_TRUE(boost::logic::indeterminate(squares->HoldsSameValueAs(*others)));
    EXPECT_FALSE(squares->GetSerializer() || squares->ToString() != "Position1D");
    EXPECT_FALSE(fixed->SetData(squares->GetData()));
}

TEST(PositionData, IsReadFromTheElementsThatItKnows) {
    const std::string two = "<Value unit='Millimeter'>2</Value>", three = "<Value unit='Second'>3</Value>";
    const std::string note = "<Note><Spacing>" + three + "</Spacing><Dim1Spacing/></Note>";
    const std::string other = "<spacing>" + three + "</spacing><SpacingX>" + three + "</SpacingX><Dim3Spacing/>";
    Warnings warnings;
    EXPECT_EQ(ReadXML<FixedSpacing1D>(note + other + "<Spacing>" + two + "<Note/></Spacing><Dim1Spacing/>").ToString(),
              "2 mm");
    EXPECT_EQ(warnings.GetNames(), std::vector<std::string>(6, "SkippingUnknownTag"));
    const auto grid = ReadXML<FixedSpacing2D>(note + "<Dim2Spacing>" + three + "</Dim2Spacing>" + other +
                                              "<Dim1Spacing>" + two + "</Dim1Spacing><Spacing/>");
    EXPECT_EQ(grid.ToString() + " " + std::to_string(grid.GetAspect()), "2 mm x 3 s 1.000000");
    EXPECT_EQ(warnings.seen.size(), 11u);
    for (const char* const missing : {"Dim1Spacing", "Dim2Spacing"}) {
        const std::string there = missing == std::string("Dim1Spacing") ? "Dim2Spacing" : "Dim1Spacing";
        const auto error =
            RaisedBy<Core::IOError>([&] { ReadXML<FixedSpacing2D>('<' + there + '>' + two + "</" + there + '>'); });
        EXPECT_TRUE(error.GetText().starts_with("Expected \"" + std::string(missing) + "\" in the data of a"));
    }
    RaisedBy<Core::IOError>([&] { ReadXML<FixedSpacing1D>("<Spacing/>"); });
    const auto base64 = DataContainer::FromXMLString(
        "<DataContainer><Data key='k' typeid='124' typename='FixedSpacing1D' size='40' encoding='def/base64'>"
        "AAAAAAAA4D8AAAAAAAAAAAAAAAAAAPA/AAAAAAAAAAAAAAAAAAAAAA==</Data></DataContainer>");
    EXPECT_EQ(base64->GetValue<FixedSpacing1D>("k")->ToString(), "0.5");
}

// The first array is whole, and the second one is said to have more than its block or the stream holds.
TEST(PositionData, CountsItsSecondArrayToo) {
    const auto object = MakeData(PositionsOf({1, 2, 3}, {}, {4, 5}, {}));
    const std::string before = DataOf(*object);
    const std::size_t place = 32 + 8 + 3 * 8 + 32;
    ASSERT_EQ(before.size(), place + 8 + 2 * 8);
    for (const int more : {0, 60, 61, 63}) {
        const std::uint64_t count = 2 + (std::uint64_t{1} << more);
        std::string damaged = before;
        std::memcpy(damaged.data() + place, &count, sizeof count);
        RaisedBy<Core::IOError>([&] { Fill(*object, damaged, damaged.size()); });
        RaisedBy<Core::IOError>([&] { Fill(*object, damaged, UINT64_MAX); });
        EXPECT_EQ(DataOf(*object), before);
    }
}

} // namespace Qor::Tivor::Testing
