#include "Alerts.h"
#include "Samples.h"
#include "StoredBytes.h"

#include <gtest/gtest.h>

#include <future>

namespace Qor::Tivor {
namespace Testing {

namespace {

using Core::Testing::RaisedBy;

// One type of each make: all others share their code with one of these.
using Values = testing::Types<bool, double, std::wstring, std::complex<float>, Core::Error, UnitizedDouble,
                              Nalix::Vector<UnitizedDouble>, ColumnMajorMatrix<int>, std::vector<bool>,
                              SelfUnorderedMap<std::string>>;

template <class T>
std::vector<std::shared_ptr<Data<T>>> Objects() {
    std::vector<std::shared_ptr<Data<T>>> objects;
    for (const auto& [key, object] : ObjectsOf<T>())
        objects.push_back(std::static_pointer_cast<Data<T>>(object));
    return objects;
}

} // namespace

template <class T>
class Value : public testing::Test {};
TYPED_TEST_SUITE(Value, Values);

TYPED_TEST(Value, CopiesShareNeitherValueNorMutex) {
    for (const auto& object : Objects<TypeParam>()) {
        EXPECT_FALSE(object->IsLockable() || object->GetDataLock() || Data<TypeParam>(*object).IsLockable());
        ASSERT_TRUE(object->EnableDataLocking());
        const auto clone = std::dynamic_pointer_cast<Data<TypeParam>>(object->Clone());
        const auto copy = std::make_shared<Data<TypeParam>>(*object);
        ASSERT_TRUE(clone);
        for (const auto& twin : {clone, copy, std::make_shared<Data<TypeParam>>(object->GetValue())}) {
            EXPECT_TRUE(bool(twin->HoldsSameValueAs(*object)));
            EXPECT_NE(twin->GetData(), object->GetData());
        }
        auto lock = object->GetDataLock();
        const auto same = std::async(std::launch::async, [&] { return object->GetDataLock() != nullptr; });
        std::async(std::launch::async, [&] { EXPECT_TRUE(clone->GetDataLock() && copy->GetDataLock()); }).get();
        EXPECT_EQ(same.wait_for(std::chrono::milliseconds(2)), std::future_status::timeout);
        lock.reset();
    }
}

TYPED_TEST(Value, ChangesInPlaceOrByReference) {
    const auto objects = Objects<TypeParam>();
    const auto& last = objects.back();
    const std::shared_ptr<TypeParam> held = objects.front()->GetData();
    objects.front()->SetValue(last->GetValue());
    EXPECT_EQ(objects.front()->GetData(), held);
    EXPECT_TRUE(bool(objects.front()->HoldsSameValueAs(*last)));
    EXPECT_TRUE(objects.front()->SetData(last->GetData()));
    EXPECT_EQ(objects.front()->GetData(), last->GetData());

    Data<TypeParam> empty;
    EXPECT_TRUE(empty.IsEmpty() && !empty.SerializationIsEnabled() && !empty.GetSerializer());
    EXPECT_EQ(empty.ToString(), "");
    EXPECT_TRUE(bool(empty.HoldsSameValueAs(Data<TypeParam>())) && bool(!empty.HoldsSameValueAs(*last)));
    EXPECT_TRUE(std::dynamic_pointer_cast<Data<TypeParam>>(empty.Clone())->IsEmpty());
    RaisedBy<Core::NullPointerError>([&] { empty.GetValue(); });
    RaisedBy<NullSerializer>([&] { Stored(empty); });
    empty.SetValue(last->GetValue());
    EXPECT_TRUE(bool(empty.HoldsSameValueAs(*last)) && empty.GetData() != last->GetData());
}

TYPED_TEST(Value, SerializationIsSwitchedOnTheSerializableClassOnly) {
    const auto object = Objects<TypeParam>().back();
    for (const bool enable : {false, true, false}) {
        EXPECT_TRUE(object->EnableSerialization(enable));
        EXPECT_EQ(object->SerializationIsEnabled(), enable);
        EXPECT_EQ(object->GetSerializer() != nullptr, enable);
        EXPECT_EQ(object->Clone()->SerializationIsEnabled(), enable);
    }
    const auto bare = GenericWrapper<TypeParam>::Create(object->GetData());
    EXPECT_TRUE(bare->EnableSerialization(false) && !bare->EnableSerialization(true));
    EXPECT_FALSE(bare->SerializationIsEnabled() || bare->SupportsSetValue() || !object->SupportsSetValue());
    EXPECT_TRUE(bool(bare->Clone()->HoldsSameValueAs(*object)));
}

// A class that is wrapped through its abstract base, as position functions are.
class Shape {
public:
    virtual int GetArea() const = 0;

protected:
    ~Shape() = default;
};
struct Square final : Shape {
    explicit Square(int length) : side(length) {}
    int GetArea() const override { return side * side; }
    int side;
};
struct Circle final : Shape {
    int GetArea() const override { return 3; }
};
using SquareData = Data<Square, GenericWrapper<Shape>>;

} // namespace Testing

template <>
struct ValueTraits<Testing::Shape> {
    static ETypeID GetTypeID() { return eNO_TYPE; }
    static std::string GetTypeName() { return "Test.Shape"; }
    static boost::logic::tribool Equal(const Testing::Shape& left, const Testing::Shape& right) {
        return left.GetArea() == right.GetArea();
    }
    static std::string ToString(const Testing::Shape& value) { return std::to_string(value.GetArea()); }
};
template <>
struct ValueTraits<Testing::Square> {
    static ETypeID GetTypeID() { return eNAMED_CLASS; }
    static std::string GetTypeName() { return "Test.Square"; }
    static std::shared_ptr<Testing::Square> Clone(const Testing::Square& value) {
        return std::make_shared<Testing::Square>(value);
    }
    static void Assign(Testing::Square& target, const Testing::Square& value) { target = value; }
    static std::shared_ptr<Testing::Square> CreateDefault() { return std::make_shared<Testing::Square>(1); }
    static std::shared_ptr<Testing::SquareData> MakeData(const Testing::SquareData& other) {
        return std::make_shared<Testing::SquareData>(other);
    }
    static std::shared_ptr<Serializer> MakeSerializer(Testing::SquareData&) { return nullptr; }
};

namespace Testing {

TEST(DerivedValue, IsWrappedByItsBaseAndNotSliced) {
    SquareData square(Square(4));
    EXPECT_TRUE(square.GetTypeID() == eNAMED_CLASS && square.GetTypeName() == "Test.Square");
    EXPECT_TRUE(square.HoldsType(typeid(Square)) && square.HoldsType(typeid(Shape)) && !square.HoldsType(typeid(int)));
    const auto clone = std::dynamic_pointer_cast<SquareData>(square.Clone());
    square.SetValue(Square(5));
    EXPECT_EQ(square.ToString() + " " + clone->ToString(), "25 16");
    EXPECT_TRUE(clone->GetValue().side == 4 && bool(!clone->HoldsSameValueAs(square)));
    EXPECT_FALSE(square.SetData(std::make_shared<Circle>()));
    EXPECT_TRUE(square.GetValue().side == 5 && square.SetData(nullptr) && square.IsEmpty());

    GenericWrapper<Shape> shape(clone->GetData());
    EXPECT_TRUE(shape.HoldsSameTypeAs(*clone) && bool(shape.HoldsSameValueAs(*clone)));
    EXPECT_TRUE(shape.GetTypeName() == "Test.Shape" && !shape.HoldsType(typeid(Square)));
    EXPECT_EQ(std::dynamic_pointer_cast<GenericWrapper<Shape>>(shape.Clone())->GetData(), clone->GetData());
    EXPECT_TRUE(shape.SetData(std::make_shared<Circle>()));
}

TEST(ValueText, IsForReaders) {
    const auto text = [](const auto& value) { return MakeData(value)->ToString(); };
    EXPECT_EQ(text(true) + text('A') + text(static_cast<unsigned char>(200)) + text(Long32(-7)), "true65200-7");
    EXPECT_EQ(text(std::numeric_limits<std::uint64_t>::max()) + text(0.1) + text(-1.5f), "184467440737095516150.1-1.5");
    EXPECT_EQ(text(std::string("a b")) + text(std::wstring(L"H\u00F6he")), "a bH\xC3\xB6he");
    EXPECT_EQ(text(ColumnMajorMatrix<int>(3, 5)), "FortranMatrix 3 x 5");
    EXPECT_EQ(text(std::complex<short>(-1, 2)) + text(std::complex<double>(0.1, 1e30)), "(-1, 2)(0.1, 1e+30)");
    EXPECT_EQ(text(std::set<std::wstring>{L"b", L"\u00F6"}) + text(std::list<char>()), "[\"b\", \"\u00F6\"][]");
    EXPECT_EQ(text(SelfMap<std::string>{{"k", "v"}, {"l", ""}}), R"(["k": "v", "l": ""])");
    EXPECT_EQ(text(std::vector<UnitizedDouble>{{2.5, "Millimeter"}, 3.0}), "[2.5 mm, 3]");
    EXPECT_EQ(text(std::vector<bool>(18, true)).substr(79), "true, true, true, and 2 more]");
    EXPECT_EQ(text(Core::Time()) + text(Core::Elapse(-1)), "1601-01-01T00:00:00.0000000Z-0.0000001");
}

} // namespace Testing
} // namespace Qor::Tivor
