#include "Alerts.h"
#include "StoredBytes.h"

#include <QorCore/MemoryStreams.h>

#include <gtest/gtest.h>

namespace Qor::Tivor::Testing {

namespace {

using namespace Core::Testing;

const std::string endMarker = Bytes("00 00 00 00 7F FF FF");

} // namespace

TEST(GoldenBytes, SizesTakeTheSmallestForm) {
    const std::pair<std::uint64_t, const char*> rows[] = {{0, "01 00"},
                                                          {255, "01 FF"},
                                                          {256, "02 0001"},
                                                          {65535, "02 FFFF"},
                                                          {65536, "04 00000100"},
                                                          {0xFFFFFFFF, "04 FFFFFFFF"},
                                                          {0x100000000, "08 00000000 01000000"}};
    for (const auto& [size, notation] : rows) {
        DataObjectHeader header;
        header.typeCode = eASCII_STRING;
        header.dataSize = size;
        Core::MemoryOutputStream stream;
        EXPECT_EQ(header.Output(stream), Bytes(notation).size() + 1);
        const std::string bytes(reinterpret_cast<const char*>(stream.GetBytes().data()), stream.GetSize());
        EXPECT_EQ(bytes, Bytes("15") + Bytes(notation));
        if (size > 65536)
            continue;
        const std::string text(static_cast<std::size_t>(size), 't');
        EXPECT_EQ(Stored(*MakeData(text), ""), Bytes("00000000") + bytes + text);
        EXPECT_EQ(Read(Bytes("00000000") + bytes + text)->ToString(), text);
    }
}

TEST(GoldenBytes, OtherFormsAreUnderstood) {
    const std::pair<const char*, const char*> rows[] = {{"15 00", ""},
                                                        {"15 03 0200000000000000 'ab'", "ab"},
                                                        {"15 FF 0200000000000000 'ab'", "ab"},
                                                        {"95 02 0200 'ab'", "ab"},
                                                        {"86 05000000", "5"},
                                                        {"01 80", "true"},
                                                        {"8F 01 000000 'S' 04 02000000 0701", "263"}};
    const Warnings refusing(true);
    for (const auto& [notation, text] : rows)
        EXPECT_EQ(Read(Bytes("00000000") + Bytes(notation))->ToString(), text) << notation;
    for (const char* const end : {"00000000 7F FFFF", "04 000000 'name' FF FFFF"}) {
        EXPECT_FALSE(Read(Bytes(end)));
        DataContainer container;
        EXPECT_EQ(ReadInto(container, Bytes("01 000000 'a' 01 01") + Bytes(end) + "rest"), 7 + Bytes(end).size());
        EXPECT_EQ(Keys(container), "a ");
    }
    for (const char* const escape : {"7F FEFF", "7F 0000", "FF 0600"})
        RaisedBy<InputInvalidTypeID>([&] { Read(Bytes("00000000") + Bytes(escape)); });
    EXPECT_EQ(RaisedBy<EndOfStreamOnInput>([] { Read(Bytes("00000000")); }).GetCategory(),
              "Qor.Tivor.DataObjectHeader.Input");
    EXPECT_EQ(RaisedBy<EndOfStreamOnInput>([] { Read(Bytes("00000000 15 02 01")); }).GetCategory(),
              "Qor.Tivor.DataObjectHeader.InputDataSize");
}

// The class is not to be had: the entry is lost, and nothing else.
TEST(GoldenBytes, UnknownClassesCostTheirEntry) {
    const std::pair<const char*, const char*> rows[] = {
        {"13 01 03 'xyz'", " ( , version , from module *) for the following reason: \r\ntype identifier 19 names"},
        {"09 2A000000", " ( ulong, version , from module *) for the following reason: \r\ntype identifier 9 names"},
        {"FC 02 000000 'no' 00", " ( no, version , from module *) for the following reason: \r\ntype identifier 124"},
        {"00 01 000000 'C' 01 000000 'V' 08 000000 'none.dll' 01 04 'data'",
         " ( C, version V, from module none.dll) for the following reason: \r\nCall to ::LoadLibrary for none.dll "
         "failed with the error: "},
    };
    for (const auto& [notation, text] : rows) {
        SCOPED_TRACE(notation);
        const std::string block = Bytes("03 000000 'odd'") + Bytes(notation);
        const std::string bytes = Bytes("01 000000 'a' 01 01") + block + Bytes("01 000000 'b' 06 05000000") + endMarker;
        DataContainer container;
        {
            const Warnings warnings;
            EXPECT_EQ(ReadInto(container, bytes), bytes.size());
            ASSERT_EQ(warnings.seen.size(), 1u);
            const std::string expected = "DataObjectCreationFailed [Qor.Tivor.DataContainer.InputData] Attempt to "
                                         "deserialize data named odd failed to create the needed DataObject";
            EXPECT_TRUE(warnings.Tell()[0].starts_with(expected + text)) << warnings.Tell()[0];
        }
        EXPECT_EQ(Keys(container), "a b ");
        EXPECT_EQ(container.GetValue<int>("b"), 5);
        EXPECT_FALSE(Read(block));
        const Warnings refusing(true);
        DataContainer empty;
        EXPECT_EQ(RaisedBy<Core::Error>([&] { ReadInto(container, bytes); }).GetVariable("Key"), "odd");
        RaisedBy<Core::Error>([&] { ReadInto(empty, bytes); });
        EXPECT_EQ(Keys(container) + Keys(empty), "a b ");
    }
}

} // namespace Qor::Tivor::Testing
