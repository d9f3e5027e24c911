#include "Alerts.h"

#include <Tivor/ArrayDataObjects.h>
#include <Tivor/CollectionSerialization.h>
#include <Tivor/MatrixView.h>

#include <gtest/gtest.h>

#include <cmath>

namespace Qor::Tivor::Testing {

using Core::Testing::RaisedBy;

TEST(Array, SharesItsElementsUntilItIsCopied) {
    const std::vector<int> numbers{1, 2, 3};
    const auto array = MakeArray(std::span(numbers));
    const boost::shared_array<int> elements = array->GetData();
    const Array<int>& constant = *array;
    const Core::QorConstArray<int> seen = constant.GetData();
    const auto clone = std::dynamic_pointer_cast<Array<int>>(array->Clone());
    const Array<int> sharing(elements, 2);

    array->GetElements()[1] = 20;
    EXPECT_TRUE(elements[1] == 20 && seen[1] == 20 && seen.size() == 3 && sharing.GetElements()[1] == 20);
    EXPECT_EQ(numbers[1] + clone->GetElements()[1], 4);
    array->SetValue(std::vector<int>{4, 5, 6}); // as many: all who share see them
    EXPECT_EQ(elements[2], 6);
    array->SetValue(std::vector<int>{7});
    EXPECT_TRUE(elements[0] == 4 && array->GetCount() == 1 && array->ToString() == "[7]");
    EXPECT_TRUE(array->SetData(elements, 3));
    EXPECT_TRUE(array->GetElements().data() == elements.get() && bool(!array->HoldsSameValueAs(*clone)));

    RaisedBy<Core::NullPointerError>([&] { array->SetData({}, 3); });
    RaisedBy<Core::NullPointerError>([] { Array<bool>(boost::shared_array<bool>(), 1); });
    EXPECT_EQ(array->ToString(), "[4, 5, 6]");
    EXPECT_TRUE(array->SetData({}, 0) && array->GetElements().empty());
    EXPECT_EQ(Array<double>(2).ToString(), "[0, 0]");
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(AllocateArray<char>(1 << 22).get()) % (1 << 21), 0u);
}

TEST(Array, IsAnsweredForByItsElements) {
    Array<ULong32> array(1);
    ETypeID id{};
    std::string name;
    array.GetBaseDataTypeInfo(id, name);
    EXPECT_TRUE(id == eULONG && name == "ulong" && array.GetTypeName() == "Array_ulong");
    MakeData(std::set<signed char>())->GetBaseDataTypeInfo(id, name);
    EXPECT_TRUE(id == eINT8 && name == "schar");
    MakeData(std::unordered_map<std::wstring, std::wstring>())->GetBaseDataTypeInfo(id, name);
    EXPECT_TRUE(id == eUNICODE_STRING && name == "UnicodeString");
    MakeData(Nalix::Vector<std::complex<double>>())->GetBaseDataTypeInfo(id, name);
    EXPECT_TRUE(id == eCOMPLEX && name == "complex_double");
    MakeData(std::list<UnitizedDouble>())->GetBaseDataTypeInfo(id, name);
    EXPECT_TRUE(id == eUNITIZED_VALUE && name == "UnitizedValue");
    EXPECT_TRUE(array.EnableSerialization(false) && !array.GetSerializer() && !array.SerializationIsEnabled());
    EXPECT_TRUE(IsMatrixData(*MakeData(RowMajorMatrix<char>())) && IsMatrixData(*MakeData(ColumnMajorMatrix<float>())));
    EXPECT_FALSE(IsMatrixData(array) || IsMatrixData(*MakeData(Nalix::Vector<int>())) ||
                 IsScalarArrayData(*MakeData(std::vector<int>())));
}

template <class M>
void ShowsTheSamples() {
    const auto object = MakeData(M(2, 3));
    {
        const MatrixView<short> view(*object);
        for (std::size_t i = 0; i < view.size1(); ++i)
            for (std::size_t j = 0; j < view.size2(); ++j)
                view(i, j) = static_cast<short>(10 * i + j);
        EXPECT_EQ(object->GetValue()(1, 2), 12);
    }
    const MatrixView<const short> view(static_cast<const DataObject&>(*object));
    object->SetData(std::make_shared<M>());
    EXPECT_EQ(view.IsRowMajor(), (std::is_same_v<M, RowMajorMatrix<short>>));
    EXPECT_EQ(view.GetElements()[1], view.IsRowMajor() ? 1 : 10);
    EXPECT_TRUE(view.size() == 6 && view(0, 2) == 2 && view(1, 0) == 10);
    RaisedBy<Core::LogicError>([&] { MatrixView<int>{*object}; });
    RaisedBy<Core::LogicError>([] { MatrixView<const short>{*MakeData(1)}; });
    RaisedBy<Core::LogicError>([] { MatrixView<short>{*std::make_shared<Data<M>>()}; });
}

TEST(MatrixView, IsTheSameForBothStorageOrders) {
    ShowsTheSamples<RowMajorMatrix<short>>();
    ShowsTheSamples<ColumnMajorMatrix<short>>();
}

TEST(ClosestStandardUnit, IsTheOneOfTheNearestScale) {
    const auto closest = [](double scale, double offset, const Core::UnitDescriptor::Exponents& exponents) {
        const auto unit = GetClosestStandardUnit(Core::UnitDescriptor::Create("x", "x", scale, offset, exponents));
        return unit ? unit->GetName() + '.' : "none";
    };
    const Core::UnitDescriptor::Exponents length{1}, temperature{0, 0, 0, 0, 1}, current{0, 0, 0, 1}, odd{5, -3};
    const std::tuple<double, double, Core::UnitDescriptor::Exponents, const char*> rows[] = {
        {1, 0, length, "Meter."},
        {1.1e-6, 0, length, "Micrometer."},
        {4e-5, 0, length, "Mil."},
        {1e-20, 0, length, "Picometer."},
        {1, 0, temperature, "Kelvin."},
        {1, 273.15, temperature, "Celsius."},
        {0.5, 1, temperature, "Fahrenheit."},
        {1, 0, odd, "none"},
        {1, 0, {}, "."},
        {0.02, 0, {}, "Percent."},
        {std::nan(""), 0, current, "Ampere."}};
    for (const auto& [scale, offset, exponents, name] : rows)
        EXPECT_EQ(closest(scale, offset, exponents), name) << scale << " " << offset;
    EXPECT_FALSE(GetClosestStandardUnit(nullptr));
}

} // namespace Qor::Tivor::Testing
