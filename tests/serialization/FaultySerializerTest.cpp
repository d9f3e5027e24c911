#include "Alerts.h"
#include "ForeignObject.h"
#include "StoredBytes.h"

#include <gtest/gtest.h>

namespace Qor::Tivor::Testing {

using namespace Core::Testing;
using namespace std::string_literals;

TEST(FaultySerializer, WhatItDoesNotWriteIsZero) {
    ForeignObject object;
    object.announced = 5;
    object.written = "abc";
    const Warnings warnings;
    EXPECT_TRUE(Stored(object).ends_with(std::string("abc\0\0", 5)));
}

TEST(FaultySerializer, MayBeMissing) {
    const auto object = std::make_shared<ForeignObject>();
    object->isSerializable = false;
    EXPECT_EQ(RaisedBy<NullSerializer>([&] { Stored(*object); }).GetText(),
              "No serializer for data with class name = Test.Foreign");
    DataContainer container;
    container.Put("k", object);
    EXPECT_EQ(Stored(container), Bytes("00000000 7F FFFF"));
}

// A block that is longer than what its class reads from it is stepped over.
TEST(FaultySerializer, WhatIsNotReadIsSkipped) {
    const std::string extents = "00000000 00000000 00000000 00000000";
    const std::pair<std::string, const char*> rows[] = {
        {"50 01 13" + extents + "'abc'", "A Matrix version  from module * input 16 bytes but the serialized data size "
                                         "was 19 bytes, skipping remaining bytes..."},
        {"7D 01 0A 00000000 7F FFFF 'abc'", "A DataContainer version  from module * input 7 bytes but the serialized "
                                            "data size was 10 bytes, skipping remaining bytes..."}};
    for (const auto& [notation, text] : rows) {
        const std::string bytes = Bytes("01 000000 'k'" + notation + "01 000000 'b' 01 01 00000000 7F FFFF");
        DataContainer container;
        {
            const Warnings warnings;
            EXPECT_EQ(ReadInto(container, bytes), bytes.size());
            EXPECT_EQ(warnings.Tell(), std::vector{"SkippingData [Qor.Tivor.DataObject] "s + text});
        }
        EXPECT_EQ(Keys(container), "k b ");
        const std::string before = Stored(container);
        const Warnings refusing(true);
        EXPECT_EQ(RaisedBy<Core::Error>([&] { ReadInto(container, bytes); }).GetVariable("Key"), "k");
        EXPECT_EQ(Stored(container), before);
        const std::string shortened = Bytes("01 000000 'k'" + notation);
        RaisedBy<Core::Error>([&] { Read(shortened.substr(0, shortened.size() - 1)); });
    }
    for (const char* const notation :
         {"50 01 0F 000000 00000000 00000000 00000000", "51 01 11 02 000000 00000000 01 000000 00000000 'x'",
          "58 01 10 FF FFFFFF FFFFFF7F FF FFFFFF FFFFFF7F", "7D 01 00", "7D 00"})
        RaisedBy<Core::IOError>([&] { Read(Bytes("00000000") + Bytes(notation)); });
}

TEST(ForeignObject, IsAnsweredForByTheBase) {
    ForeignObject object;
    EXPECT_TRUE(object.SerializationIsEnabled());
    EXPECT_TRUE(object.EnableSerialization(false) && !object.EnableSerialization(true));
    EXPECT_FALSE(object.IsLockable() || object.EnableDataLocking());
    const std::unique_ptr<std::shared_ptr<DataObject>> kept(CreateDataObjectPtr(MakeData(5)));
    EXPECT_EQ((*kept)->ToString(), "5");
    EXPECT_EQ(WrapRawDataObject(&object).get(), &object);
    EXPECT_FALSE(WrapRawDataObject(nullptr));
}

} // namespace Qor::Tivor::Testing
