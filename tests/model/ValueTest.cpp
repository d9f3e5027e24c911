#include "Alerts.h"
#include "StoredBytes.h"

#include <QorCore/MemoryStreams.h>

#include <gtest/gtest.h>

#include <future>
#include <limits>

namespace Qor::Tivor::Testing {

namespace {

using Core::Testing::RaisedBy;

template <class T>
struct Edges;

template <>
struct Edges<bool> {
    static std::vector<bool> Get() { return {false, true}; }
};
template <std::integral T>
struct Edges<T> {
    static std::vector<T> Get() { return {1, 65, std::numeric_limits<T>::min(), std::numeric_limits<T>::max()}; }
};
template <>
struct Edges<Long32> {
    static std::vector<Long32> Get() { return {0, -1, std::numeric_limits<std::int32_t>::min(), 0x7FFFFFFF}; }
};
template <std::floating_point T>
struct Edges<T> {
    static std::vector<T> Get() {
        using Limits = std::numeric_limits<T>;
        return {T(-0.0),
                T(1.5),
                Limits::min(),
                Limits::max(),
                Limits::lowest(),
                Limits::denorm_min(),
                Limits::infinity(),
                -Limits::infinity(),
                Limits::quiet_NaN()};
    }
};
template <>
struct Edges<std::complex<double>> {
    static std::vector<std::complex<double>> Get() {
        std::vector<std::complex<double>> values;
        for (const double number : Edges<double>::Get())
            values.emplace_back(number, -1 / number);
        return values;
    }
};
template <>
struct Edges<std::string> {
    static std::vector<std::string> Get() {
        return {"", "text", std::string("a\0b\0", 4), "\xFF\xC3\x28 no UTF-8", std::string(5000, 'x')};
    }
};
template <>
struct Edges<std::wstring> {
    static std::vector<std::wstring> Get() {
        return {L"", L"H\u00F6he", std::wstring(L"a\0b\0", 4),
                L"\uD7FF\uE000\uFFFD\uFFFF\U00010000\U0001F600\U0010FFFF", std::wstring(5000, L'\u6E2C')};
    }
};
template <class T, class Order>
struct Edges<Nalix::Matrix<T, Order>> {
    static std::vector<Nalix::Matrix<T, Order>> Get() {
        const std::vector<T> elements = Edges<T>::Get();
        std::vector<Nalix::Matrix<T, Order>> values;
        for (const auto& [size1, size2] : {std::pair(0, 0), {0, 5}, {5, 0}, {1, 1}, {3, 5}, {5, 3}, {70, 60}}) {
            values.emplace_back(static_cast<std::size_t>(size1), static_cast<std::size_t>(size2));
            for (std::size_t i = 0; i < values.back().size(); ++i)
                values.back().data()[i] = elements[i % elements.size()];
        }
        return values;
    }
};

template <class T>
std::vector<std::shared_ptr<Data<T>>> EdgeObjects() {
    std::vector<std::shared_ptr<Data<T>>> objects;
    for (auto&& value : Edges<T>::Get())
        objects.push_back(MakeData<T>(value));
    return objects;
}

template <class Nothing, class... T>
struct ListOf {
    using Type = testing::Types<T...>;
};
#define TIVOR_VALUE(T, id) , T
using Values = ListOf<void TIVOR_BUILT_IN_VALUES>::Type;
#undef TIVOR_VALUE

template <class T>
ETypeID ExpectedID();
#define TIVOR_VALUE(T, id)                                                                                             \
    template <>                                                                                                        \
    ETypeID ExpectedID<T>() {                                                                                          \
        return id;                                                                                                     \
    }
TIVOR_BUILT_IN_VALUES
#undef TIVOR_VALUE

} // namespace

template <class T>
class Value : public testing::Test {};
TYPED_TEST_SUITE(Value, Values);

TYPED_TEST(Value, IsHeldAndCompared) {
    using Other = std::conditional_t<std::is_same_v<TypeParam, double>, std::string, double>;
    const auto other = MakeData(Other());
    const auto objects = EdgeObjects<TypeParam>();
    for (std::size_t i = 0; i < objects.size(); ++i) {
        Data<TypeParam>& object = *objects[i];
        EXPECT_EQ(object.GetTypeID(), ExpectedID<TypeParam>());
        EXPECT_TRUE(object.HoldsType(typeid(TypeParam)));
        EXPECT_FALSE(object.HoldsType(typeid(Other)));
        EXPECT_FALSE(object.HoldsSameTypeAs(*other));
        EXPECT_TRUE(bool(!object.HoldsSameValueAs(*other)));
        ETypeID baseID = eNO_TYPE;
        std::string baseName;
        object.GetBaseDataTypeInfo(baseID, baseName);
        EXPECT_EQ(std::pair(baseID, baseName), std::pair(object.GetTypeID(), object.GetTypeName()));
        for (std::size_t j = 0; j < objects.size(); ++j) {
            EXPECT_TRUE(object.HoldsSameTypeAs(*objects[j]));
            const auto rhs = MakeData<TypeParam>(Edges<TypeParam>::Get()[j]);
            EXPECT_EQ(bool(object.HoldsSameValueAs(*rhs)), i == j) << i << " " << j;
            EXPECT_EQ(bool(!object.HoldsSameValueAs(*rhs)), i != j) << i << " " << j;
        }
    }
}

TYPED_TEST(Value, CopiesShareNeitherValueNorMutex) {
    for (const auto& object : EdgeObjects<TypeParam>()) {
        EXPECT_FALSE(object->IsLockable());
        EXPECT_FALSE(object->GetDataLock());
        EXPECT_FALSE(Data<TypeParam>(*object).IsLockable());
        ASSERT_TRUE(object->EnableDataLocking());
        const auto clone = std::dynamic_pointer_cast<Data<TypeParam>>(object->Clone());
        const auto copy = std::make_shared<Data<TypeParam>>(*object);
        ASSERT_TRUE(clone);
        for (const auto& twin : {clone, copy, std::make_shared<Data<TypeParam>>(object->GetValue())}) {
            EXPECT_TRUE(bool(twin->HoldsSameValueAs(*object)));
            EXPECT_NE(twin->GetData(), object->GetData());
            if constexpr (requires { object->GetValue().size1(); }) {
                if (object->GetValue().size() > 0) {
                    EXPECT_NE(twin->GetValue().data(), object->GetValue().data());
                }
            }
        }
        EXPECT_TRUE(clone->IsLockable() && copy->IsLockable());
        auto lock = object->GetDataLock();
        ASSERT_TRUE(lock);
        const auto copies = std::async(std::launch::async, [&] { return clone->GetDataLock() && copy->GetDataLock(); });
        EXPECT_EQ(copies.wait_for(std::chrono::seconds(10)), std::future_status::ready);
        const auto same = std::async(std::launch::async, [&] { return object->GetDataLock() != nullptr; });
        EXPECT_EQ(same.wait_for(std::chrono::milliseconds(2)), std::future_status::timeout);
        lock.reset();
    }
}

TYPED_TEST(Value, ChangesInPlaceOrByReference) {
    const auto values = Edges<TypeParam>::Get();
    const auto last = MakeData<TypeParam>(values.back());
    for (const bool moved : {false, true}) {
        const auto object = MakeData<TypeParam>(values.front());
        const std::shared_ptr<TypeParam> held = object->GetData();
        TypeParam value = values.back();
        moved ? object->SetValue(std::move(value)) : object->SetValue(value);
        EXPECT_EQ(object->GetData(), held);
        EXPECT_TRUE(bool(object->HoldsSameValueAs(*last)));
        const auto next = ValueTraits<TypeParam>::MakeValue(values.front());
        EXPECT_TRUE(object->SetData(next));
        EXPECT_EQ(object->GetData(), next);
    }
    Data<TypeParam> empty;
    EXPECT_TRUE(empty.IsEmpty());
    EXPECT_FALSE(empty.SerializationIsEnabled());
    EXPECT_FALSE(empty.GetSerializer());
    EXPECT_EQ(empty.ToString(), "");
    EXPECT_TRUE(bool(empty.HoldsSameValueAs(Data<TypeParam>())));
    EXPECT_TRUE(bool(!empty.HoldsSameValueAs(*last)) && bool(!last->HoldsSameValueAs(empty)));
    EXPECT_TRUE(std::dynamic_pointer_cast<Data<TypeParam>>(empty.Clone())->IsEmpty());
    RaisedBy<Core::NullPointerError>([&] { empty.GetValue(); });
    RaisedBy<NullSerializer>([&] { Stored(empty); });
    empty.SetValue(values.back());
    EXPECT_TRUE(bool(empty.HoldsSameValueAs(*last)));
}

TYPED_TEST(Value, SerializationIsSwitchedOnTheSerializableClassOnly) {
    const auto object = MakeData<TypeParam>(Edges<TypeParam>::Get().back());
    for (const bool enable : {false, true, false}) {
        EXPECT_TRUE(object->EnableSerialization(enable));
        EXPECT_EQ(object->SerializationIsEnabled(), enable);
        EXPECT_EQ(object->GetSerializer() != nullptr, enable);
        EXPECT_EQ(object->Clone()->SerializationIsEnabled(), enable);
    }
    const auto bare = GenericWrapper<TypeParam>::Create(object->GetData());
    EXPECT_TRUE(bare->EnableSerialization(false));
    EXPECT_FALSE(bare->EnableSerialization(true));
    EXPECT_FALSE(bare->SerializationIsEnabled());
    EXPECT_TRUE(bool(bare->HoldsSameValueAs(*object)));
    EXPECT_TRUE(bool(bare->Clone()->HoldsSameValueAs(*object)));
    EXPECT_FALSE(GenericWrapper<TypeParam>::SupportsSetValue());
    EXPECT_TRUE(Data<TypeParam>::SupportsSetValue());
}

TYPED_TEST(Value, ComesBackFromItsBytes) {
    for (const auto& object : EdgeObjects<TypeParam>()) {
        const std::string bytes = Stored(*object, "key");
        EXPECT_EQ(object->GetSerializer()->GetSerializedDataObjectSize_bytes() + 7, bytes.size());
        const std::shared_ptr<DataObject> read = Read(bytes);
        ASSERT_TRUE(read && read->HoldsSameTypeAs(*object));
        EXPECT_TRUE(bool(read->HoldsSameValueAs(*object)));
        EXPECT_EQ(Stored(*read, "key"), bytes); // -0.0, and whatever else compares equal
        for (std::size_t cut = 0; cut < bytes.size(); cut += 1 + cut / 64 * 500)
            RaisedBy<EndOfStreamOnInput>([&] { Read(bytes.substr(0, cut)); });
    }
}

TEST(ValueText, IsForReaders) {
    const auto text = [](const auto& value) { return MakeData(value)->ToString(); };
    EXPECT_EQ(text(true) + text(false), "truefalse");
    EXPECT_EQ(text('A'), "65");
    EXPECT_EQ(text(static_cast<unsigned char>(200)), "200");
    EXPECT_EQ(text(Long32(-7)), "-7");
    EXPECT_EQ(text(std::numeric_limits<std::uint64_t>::max()), "18446744073709551615");
    EXPECT_EQ(text(0.1), "0.1");
    EXPECT_EQ(text(-1.5f), "-1.5");
    EXPECT_EQ(text(std::wstring(L"H\u00F6he")), "H\xC3\xB6he");
    EXPECT_EQ(text(ColumnMajorMatrix<int>(3, 5)), "FortranMatrix 3 x 5");
    EXPECT_EQ(MakeData(std::string("constant"))->ToString(), "constant");
}

} // namespace Qor::Tivor::Testing
