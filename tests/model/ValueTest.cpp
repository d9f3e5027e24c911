#include "Alerts.h"
#include "StoredBytes.h"

#include <gtest/gtest.h>

#include <future>
#include <limits>

namespace Qor::Tivor::Testing {

namespace {

using Core::Testing::RaisedBy;

template <class T>
std::vector<T> Edges(std::type_identity<T>) {
    using Limits = std::numeric_limits<T>;
    if constexpr (std::is_same_v<T, bool>)
        return {false, true};
    else if constexpr (std::is_integral_v<T>)
        return {1, 65, Limits::min(), Limits::max()};
    else if constexpr (std::is_floating_point_v<T>)
        return {T(-0.0),
                T(1.5),
                Limits::min(),
                Limits::max(),
                Limits::denorm_min(),
                -Limits::infinity(),
                Limits::quiet_NaN()};
    else
        return {0, -1, std::numeric_limits<std::int32_t>::min(), 0x7FFFFFFF}; // Long32
}
std::vector<std::complex<double>> Edges(std::type_identity<std::complex<double>>) {
    return {{-0.0, 1.5}, {1.5, -0.0}, {std::numeric_limits<double>::quiet_NaN(), 1}};
}
std::vector<std::string> Edges(std::type_identity<std::string>) {
    return {"", "text", std::string("a\0b\0", 4), "\xFF\xC3\x28 no UTF-8", std::string(5000, 'x')};
}
std::vector<std::wstring> Edges(std::type_identity<std::wstring>) {
    return {L"", L"H\u00F6he", std::wstring(L"a\0b\0", 4), L"\uD7FF\uE000\uFFFD\uFFFF\U00010000\U0001F600\U0010FFFF"};
}
template <class T, class Order>
std::vector<Nalix::Matrix<T, Order>> Edges(std::type_identity<Nalix::Matrix<T, Order>>) {
    const std::vector<T> elements = Edges(std::type_identity<T>());
    std::vector<Nalix::Matrix<T, Order>> values;
    for (const auto& [size1, size2] : {std::pair(0u, 0u), {0, 5}, {5, 0}, {1, 1}, {3, 5}, {5, 3}, {70, 60}}) {
        values.emplace_back(size1, size2);
        for (std::size_t i = 0; i < values.back().size(); ++i)
            values.back().data()[i] = elements[i % elements.size()];
    }
    return values;
}

template <class T>
std::vector<std::shared_ptr<Data<T>>> EdgeObjects() {
    std::vector<std::shared_ptr<Data<T>>> objects;
    for (auto&& value : Edges(std::type_identity<T>()))
        objects.push_back(MakeData<T>(value));
    return objects;
}

template <class None, class... T>
struct ListOf {
    using Type = testing::Types<T...>;
};
#define TIVOR_VALUE(T, id) , T
using Values = ListOf<void TIVOR_BUILT_IN_VALUES>::Type;
#undef TIVOR_VALUE

} // namespace

template <class T>
class Value : public testing::Test {};
TYPED_TEST_SUITE(Value, Values);

TYPED_TEST(Value, IsHeldAndCompared) {
    using Other = std::conditional_t<std::is_same_v<TypeParam, double>, std::string, double>;
    const auto other = MakeData(Other());
    const auto objects = EdgeObjects<TypeParam>();
    const auto twins = EdgeObjects<TypeParam>();
    for (std::size_t i = 0; i < objects.size(); ++i) {
        EXPECT_TRUE(objects[i]->HoldsType(typeid(TypeParam)) && !objects[i]->HoldsType(typeid(Other)));
        EXPECT_FALSE(objects[i]->HoldsSameTypeAs(*other));
        EXPECT_TRUE(bool(!objects[i]->HoldsSameValueAs(*other)));
        for (std::size_t j = 0; j < objects.size(); ++j) {
            EXPECT_TRUE(objects[i]->HoldsSameTypeAs(*twins[j]));
            EXPECT_EQ(objects[i]->HoldsSameValueAs(*twins[j]), boost::logic::tribool(i == j)) << i << " " << j;
        }
    }
}

TYPED_TEST(Value, CopiesShareNeitherValueNorMutex) {
    for (const auto& object : EdgeObjects<TypeParam>()) {
        EXPECT_FALSE(object->IsLockable() || object->GetDataLock() || Data<TypeParam>(*object).IsLockable());
        ASSERT_TRUE(object->EnableDataLocking());
        const auto clone = std::dynamic_pointer_cast<Data<TypeParam>>(object->Clone());
        const auto copy = std::make_shared<Data<TypeParam>>(*object);
        ASSERT_TRUE(clone);
        for (const auto& twin : {clone, copy, std::make_shared<Data<TypeParam>>(object->GetValue())}) {
            EXPECT_TRUE(bool(twin->HoldsSameValueAs(*object)));
            EXPECT_NE(twin->GetData(), object->GetData());
            if constexpr (requires { object->GetValue().size1(); }) {
                EXPECT_TRUE(object->GetValue().size() == 0 || twin->GetValue().data() != object->GetValue().data());
            }
        }
        auto lock = object->GetDataLock();
        const auto same = std::async(std::launch::async, [&] { return object->GetDataLock() != nullptr; });
        const auto copies = std::async(std::launch::async, [&] { return clone->GetDataLock() && copy->GetDataLock(); });
        const std::future_status copiesAre = copies.wait_for(std::chrono::seconds(10));
        const std::future_status sameIs = same.wait_for(std::chrono::milliseconds(2));
        lock.reset();
        ASSERT_EQ(copiesAre, std::future_status::ready);
        EXPECT_EQ(sameIs, std::future_status::timeout);
    }
}

TYPED_TEST(Value, ChangesInPlaceOrByReference) {
    const auto objects = EdgeObjects<TypeParam>();
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
    const auto object = EdgeObjects<TypeParam>().back();
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

TYPED_TEST(Value, ComesBackFromItsBytes) {
    for (const auto& object : EdgeObjects<TypeParam>()) {
        const std::string bytes = Stored(*object, "key");
        EXPECT_EQ(object->GetSerializer()->GetSerializedDataObjectSize_bytes() + 7, bytes.size());
        const std::shared_ptr<DataObject> read = Read(bytes);
        ASSERT_TRUE(read && bool(read->HoldsSameValueAs(*object)));
        EXPECT_EQ(Stored(*read, "key"), bytes); // -0.0, and whatever else compares equal
        for (std::size_t cut = 0; cut < bytes.size(); cut += 1 + cut / 64 * 500)
            RaisedBy<EndOfStreamOnInput>([&] { Read(bytes.substr(0, cut)); });
    }
}

TEST(ValueText, IsForReaders) {
    const auto text = [](const auto& value) { return MakeData(value)->ToString(); };
    EXPECT_EQ(text(true) + text('A') + text(static_cast<unsigned char>(200)) + text(Long32(-7)), "true65200-7");
    EXPECT_EQ(text(std::numeric_limits<std::uint64_t>::max()) + text(0.1) + text(-1.5f), "184467440737095516150.1-1.5");
    EXPECT_EQ(text(std::string("a b")) + text(std::wstring(L"H\u00F6he")), "a bH\xC3\xB6he");
    EXPECT_EQ(text(ColumnMajorMatrix<int>(3, 5)), "FortranMatrix 3 x 5");
}

} // namespace Qor::Tivor::Testing
