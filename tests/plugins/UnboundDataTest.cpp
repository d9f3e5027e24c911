#include "Alerts.h"
#include "PlugInValues.h"
#include "Samples.h"
#include "StoredBytes.h"

#include <QorCore/Context.h>
#include <Tivor/DataObjectFactory.h>
#include <Tivor/UnboundDataObject.h>

#include <gtest/gtest.h>

namespace Qor::Tivor::Testing {

namespace {

using namespace std::string_literals;
using namespace Core::Testing;

/// The object, and what becomes of it in the places where it can stand.
std::vector<std::shared_ptr<DataObject>> Everywhere(const std::shared_ptr<DataObject>& object) {
    DataContainer container(true);
    container.GetSubData({"sub", "below"}, true)->Put("k", object);
    const std::string stored = Stored(container);
    const auto deep = [](const DataContainer& root) {
        return root.Clone()->GetSubData({"sub", "below"}, false)->Get("k");
    };
    DataContainer read(true);
    ReadInto(read, stored);
    EXPECT_EQ(Stored(read), stored);
    return {object, object->Clone(), deep(container), deep(read), Read(Stored(*object))};
}

std::shared_ptr<UnboundData> Filled(std::shared_ptr<UnboundData> unbound, const std::string& data) {
    Fill(*unbound, data, data.size());
    return unbound;
}
std::shared_ptr<UnboundData> Unbound(const std::string& typeName, const std::string& data, bool isArray = false) {
    return Filled(std::make_shared<UnboundData>(typeName, isArray ? "?[]" : "?", true, isArray), data);
}
std::shared_ptr<UnboundData> UnboundArray(const std::string& typeName, const std::string& data) {
    return Filled(std::make_shared<UnboundScalarArray>(typeName, "*", false), data);
}

std::shared_ptr<DataObject> FromPlugIn(const std::string& className) {
    return DataObjectFactory::Instance().CreateExternalDataObject(className, "2.1", "GoodPlugIn.dll", false);
}
template <class T>
std::shared_ptr<DataObject> Numbers(std::initializer_list<T> numbers) {
    return std::make_shared<Array<T>>(std::span<const T>(numbers.begin(), numbers.size()));
}

enum EHow { eTYPE, eARRAY };

void Bind(const UnboundData& unbound, EHow how, DataObject& target) {
    how == eTYPE ? unbound.BindType(target) : unbound.BindArray(target);
}

} // namespace

TEST(UnboundData, ComesBackAsItWasStored) {
    for (const std::string& module : {"?"s, "?[]"s, "*"s, ""s, "abc"s, "dll"s, "X.DLL"s, "X.dll "s, "X.dll\0"s, "a b"s,
                                      "a\0b"s, "?[] "s, "\xC3\xA4"s})
        for (const char* const code : {"00", "80"})
            for (const std::string version : {"", "7.1"}) {
                SCOPED_TRACE(module + code);
                std::string header = Bytes("01000000 'k'") + Bytes(code) + Bytes("05000000 'A B_C'");
                for (const std::string& text : {version, module})
                    header += static_cast<char>(text.size()) + Bytes("000000") + text;
                const std::string bytes = header + Bytes("01 03 00FF41");
                const Warnings warnings;
                const auto object = Read(bytes);
                for (const auto& one : Everywhere(object)) {
                    const auto unbound = std::dynamic_pointer_cast<UnboundData>(one);
                    ASSERT_TRUE(unbound);
                    EXPECT_EQ(Stored(*one), bytes);
                    EXPECT_EQ(unbound->IsArray(), module == "?[]");
                    EXPECT_EQ(unbound->GetVersion() + '|' + unbound->GetModule(), version + '|' + module);
                    EXPECT_EQ(unbound->GetTypeID(), std::stoi(code, nullptr, 16));
                    EXPECT_TRUE(bool(one->HoldsSameValueAs(*object)) && unbound->GetDataCapacity() == 3);
                }
                const auto other = Read(bytes.substr(0, bytes.size() - 1) + "B");
                EXPECT_TRUE(boost::logic::indeterminate(object->HoldsSameValueAs(*other)));
                EXPECT_TRUE(warnings.seen.empty());
            }
}

// Where the code tells the kind, it stays; the flag belongs to what is not known.
TEST(UnboundData, KeepsUnknownCollections) {
    const std::tuple<const char*, const char*, bool> rows[] = {
        {"40 0A000000 'Array_half' 01 04 'abcd'", nullptr, true},
        {"C0 0A000000 'Array_half' 01 04 'abcd'", nullptr, true},
        {"41 0C000000 'StdRing_long' 01 04 'abcd'", nullptr, false},
        {"C1 00000000 01 00", nullptr, false},
        {"C0 0C000000 'Array_double' 01 0C 08000000 00000000 00000000",
         "40 0C000000 'Array_double' 01 0C 08000000 00000000 00000000", false},
        {"86 05000000", "06 05000000", false},
    };
    for (const auto& [read, written, isArray] : rows) {
        SCOPED_TRACE(read);
        const std::string bytes = Bytes("01000000 'k'") + Bytes(written != nullptr ? written : read);
        const auto object = Read(Bytes("01000000 'k'") + Bytes(read));
        ASSERT_TRUE(object);
        for (const auto& one : Everywhere(object)) {
            EXPECT_EQ(Stored(*one), bytes);
            EXPECT_EQ(std::dynamic_pointer_cast<UnboundScalarArray>(one) != nullptr, isArray);
            EXPECT_EQ(std::dynamic_pointer_cast<UnboundScalarContainer>(one) != nullptr,
                      written == nullptr && !isArray);
            EXPECT_TRUE(!isArray || IsScalarArrayData(*one));
        }
    }
}

TEST(UnboundData, OutlivesAPlaceWithoutItsPlugIn) {
    const auto lines = [](const DataContainer& container, const std::string& key) {
        const auto spectrum = container.GetPtr<Spectrum>(key);
        return spectrum ? spectrum->lines + std::to_string(spectrum->order) : "unbound";
    };
    DataContainer first;
    first.Put("top", FromPlugIn("Test.Spectrum"));
    first.GetPtr<Spectrum>("top")->lines = "top";
    first.PutValue("changing", 1);
    const auto deep = first.GetSubData({"sub", "below"}, true);
    deep->Put("deep", FromPlugIn("Test.Spectrum"));
    deep->GetPtr<Spectrum>("deep")->order = 2;
    deep->Put("band", FromPlugIn("Test.Band"));
    std::string second;
    {
        const Core::Context::ScopedLimits refusing({.moduleNames = Core::EModuleNames::none});
        const Warnings warnings;
        DataContainer container(true);
        ReadInto(container, Stored(first));
        EXPECT_EQ(warnings.GetNames(), std::vector<std::string>(3, "KeepingUnread"));
        EXPECT_TRUE(container.GetPtr<UnboundData>("top"));
        DataContainer copy;
        copy.CloneContents(container);
        copy.PutValue("changing", 2);
        second = Stored(DataContainer(*copy.Clone()));
    }
    first.PutValue("changing", 2);
    EXPECT_EQ(second, Stored(first));
    DataContainer third;
    ReadInto(third, second);
    EXPECT_EQ(lines(third, "top") + lines(*third.GetSubData({"sub", "below"}, false), "deep"), "top02");
    EXPECT_TRUE(third.GetSubData({"sub", "below"}, false)->GetPtr<Band>("band"));
    EXPECT_EQ(Stored(third), second);
}

TEST(UnboundData, BindsToItsClass) {
    const auto list = MakeData(std::vector<double>{1, 2});
    const auto numbers = Numbers<double>({1, 2});
    const auto vector = MakeData(Nalix::Vector<double>(3));
    const auto container = DataContainer::Create();
    container->PutValue("a", 1);
    const auto band = FromPlugIn("Test.Band");
    const auto spectrum = FromPlugIn("Test.Spectrum");
    const std::string lines = Bytes("03000000 'abc' 07000000");
    struct Row {
        std::shared_ptr<UnboundData> unbound;
        EHow how;
        std::shared_ptr<DataObject> target;
        std::string surplus = "";
    };
    const Row rows[] = {
        {Unbound("double", DataOf(*MakeData(2.5))), eTYPE, MakeData(1.0)},
        {Unbound("Vector", DataOf(*vector)), eTYPE, MakeData(Nalix::Vector<double>(1))},
        {Unbound("Vector", DataOf(*vector), true), eARRAY, MakeData(Nalix::Vector<double>(1))},
        {Unbound("double", DataOf(*list), true), eARRAY, MakeData(std::vector<double>())},
        {UnboundArray("Array_double", DataOf(*numbers)), eARRAY, Numbers<double>({})},
        {Unbound("double", DataOf(*numbers), true), eARRAY, Numbers<double>({3})},
        {Unbound("DataContainer", Stored(*container)), eTYPE, std::make_shared<DataContainerWrapper>()},
        {Unbound("Test.Band", std::string(15, '\0') + "@"), eTYPE, band},
        {Unbound("Test.Spectrum", lines), eTYPE, spectrum},
        {Unbound("Test.Spectrum", lines + "more"), eTYPE, spectrum, "more"},
        {Unbound("Vector", DataOf(*vector) + "more"), eTYPE, MakeData(Nalix::Vector<double>(1)), "more"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.target->GetTypeName());
        const std::string before = Stored(*row.unbound);
        row.target->EnableDataLocking();
        const Warnings warnings;
        Bind(*row.unbound, row.how, *row.target);
        EXPECT_EQ(warnings.GetNames(), std::vector<std::string>(row.surplus.empty() ? 0 : 1, "SkippingData"));
        EXPECT_EQ(DataOf(*row.target) + row.surplus, DataOf(*row.unbound));
        EXPECT_EQ(Stored(*row.unbound), before);
    }
}

TEST(UnboundData, ThatDoesNotFitChangesNothing) {
    const std::string other = "Attempted to bind unbound data of type \"%\" as \"%2\"";
    const std::string kind = "Attempted to bind unbound data to a %";
    const std::string size = "Attempted to bind unbound data with size % to size %2\n";
    const auto text = [](std::string pattern, const std::string& part) {
        return pattern.replace(pattern.find('%'), 1, part);
    };
    const auto disabled = MakeData(1.0);
    disabled->EnableSerialization(false);
    const auto full = std::make_shared<DataContainerWrapper>();
    full->GetData()->PutValue("was", 1);
    const std::string damaged = Bytes("01000000 'a' 01 01 01000000 'b' 06 05");
    const auto doubles = DataOf(*Numbers<double>({1, 2}));
    const auto names = DataOf(*MakeData(std::vector{"a"s, "b"s, "c"s}));
    const auto matrix = MakeData(RowMajorMatrix<double>(2, 2));
    struct Row {
        std::shared_ptr<UnboundData> unbound;
        EHow how;
        std::shared_ptr<DataObject> target;
        std::string text = "";
        bool refuses = false;
    };
    const Row rows[] = {
        {Unbound("Double", "12345678"), eTYPE, MakeData(1.0), text(other, "Double")},
        {Unbound("int32", "", true), eARRAY, MakeData(1.0), text(other, "int32")},
        {Unbound("double", "", true), eTYPE, MakeData(1.0), text(kind, "double storing a double")},
        {Unbound("double", "12345678", true), eARRAY, MakeData(1.0), text(kind, "double storing a double")},
        {Unbound("double", doubles), eARRAY, Numbers<double>({3}), text(kind, "Array_double storing a double")},
        {UnboundArray("Array_double", doubles), eTYPE, Numbers<double>({3}),
         text(kind, "Array_double storing a double")},
        {Unbound("Test.Band", "", true), eARRAY, FromPlugIn("Test.Band"), text(kind, "Test.Band storing a Test.Band")},
        {Unbound("double", "1234567"), eTYPE, MakeData(1.0), text(size, "7")},
        {Unbound("double", "12345678"), eTYPE, disabled, "No serializer for data with class name = double"},
        {Unbound("Test.Spectrum", Bytes("03000000 'abc' 07")), eTYPE, FromPlugIn("Test.Spectrum")},
        {Unbound("Vector", doubles), eTYPE, MakeData(Nalix::Vector<float>(2))},
        {UnboundArray("Array_double", doubles.substr(0, 20)), eARRAY, Numbers<double>({3})},
        {Unbound("StdVector_AsciiString", names.substr(0, names.size() - 1)), eTYPE, MakeData(std::vector{"x"s})},
        {Unbound("StdMap_AsciiString", names), eTYPE, MakeData(std::map<std::string, std::string>{{"x", "y"}})},
        {Unbound("Matrix", DataOf(*matrix).substr(0, 30)), eTYPE, MakeData(RowMajorMatrix<double>(1, 2))},
        {Unbound("DataContainer", damaged), eTYPE, full},
        {Unbound("Array_double", doubles + "more", true), eARRAY, Numbers<double>({3}), "refused", true},
        {Unbound("Test.Spectrum", Bytes("00000000 07000000 'more'")), eTYPE, FromPlugIn("Test.Spectrum"), "refused",
         true},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.target->GetTypeName() + " from " + row.unbound->ToString());
        const auto before = row.target->Clone();
        const std::string kept = Stored(*row.unbound);
        {
            const Warnings warnings(row.refuses);
            const auto error = RaisedBy<Core::Error>([&] { Bind(*row.unbound, row.how, *row.target); });
            EXPECT_TRUE(row.text.empty() || error.GetText() == row.text) << error.GetText();
        }
        row.target->EnableSerialization(true);
        before->EnableSerialization(true);
        EXPECT_TRUE(bool(row.target->HoldsSameValueAs(*before)));
        EXPECT_EQ(row.target->ToString(), before->ToString());
        EXPECT_EQ(Stored(*row.unbound), kept);
    }
}

} // namespace Qor::Tivor::Testing
