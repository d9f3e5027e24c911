#include "Alerts.h"
#include "ForeignObject.h"
#include "StoredBytes.h"
#include "TemporaryDirectory.h"

#include <QorCore/MemoryStreams.h>
#include <Tivor/BinaryDataFile.h>
#include <Tivor/ScalarData.h>

#include <gtest/gtest.h>

namespace Qor::Tivor::Testing {

namespace {

using Core::Testing::RaisedBy;
using Core::Testing::Warnings;

template <class M>
std::shared_ptr<DataObject> Counted(std::size_t size1, std::size_t size2) {
    M matrix(size1, size2);
    for (std::size_t i = 0; i < size1; ++i)
        for (std::size_t j = 0; j < size2; ++j)
            matrix(i, j) = static_cast<typename M::value_type>(static_cast<int>(16 * i + j));
    return MakeData(matrix);
}

std::shared_ptr<DataObject> Scalar() {
    auto scalar = std::make_shared<ScalarData>("Mode", eUNSIGNED_INTEGRAL_TYPE);
    scalar->SetValue(3u);
    return scalar;
}

std::shared_ptr<DataObject> Nested() {
    const auto outer = DataContainer::Create();
    outer->PutValue("a", true);
    outer->GetSubData({"b"}, true)->PutValue("c", "x");
    return std::make_shared<DataContainerWrapper>(outer);
}

const std::string fileHeader = Bytes("'QOR DATA' 01 00 00 'A'");
const std::string endMarker = Bytes("00 00 00 00 7F FF FF");

} // namespace

TEST(GoldenBytes, AreWrittenAndReadBack) {
    const std::pair<std::shared_ptr<DataObject>, const char*> rows[] = {
        {MakeData(true), "01 | 01"},
        {MakeData('a'), "02 | 61"},
        {MakeData(short{-2}), "04 | FE FF"},
        {MakeData(0x12345678), "06 | 78 56 34 12"},
        {MakeData(Long32(-1)), "08 | FF FF FF FF"},
        {MakeData(std::uint64_t{1} << 56), "0B | 00 00 00 00 00 00 00 01"},
        {MakeData(1.5f), "0C | 00 00 C0 3F"},
        {MakeData(-0.0), "0D | 00 00 00 00 00 00 00 80"},
        {MakeData(std::string("text")), "15 01 04 | 'text'"},
        {MakeData(std::wstring(L"\u00F6\U0001F600")), "16 01 06 | C3 B6 F0 9F 98 80"},
        {Scalar(), "0F 04 00 00 00 'Mode' 01 04 | 03 00 00 00"},
        {Counted<RowMajorMatrix<short>>(2, 3), "52 01 1C | 02 00000000000000 03 00000000000000 "
                                               "0000 0100 0200 1000 1100 1200"},
        {Counted<ColumnMajorMatrix<short>>(2, 3), "62 01 1C | 02 00000000000000 03 00000000000000 "
                                                  "0000 1000 0100 1100 0200 1200"},
        {Counted<RowMajorMatrix<std::complex<double>>>(1, 1), "5A 01 20 | 01 00000000000000 01 00000000000000 "
                                                              "0000000000000000 0000000000000000"},
        {Nested(), "7D 01 26 | 01 000000 'a' 01 01 | 01 000000 'b' 7D 01 10 "
                   "| 01 000000 'c' 15 01 01 'x' | 00000000 7F FFFF | 00000000 7F FFFF"},
    };
    for (const auto& [object, notation] : rows) {
        SCOPED_TRACE(notation);
        const std::string bytes = Bytes("03 00 00 00 'key'") + Bytes(notation);
        EXPECT_EQ(Stored(*object, "key"), bytes);
        EXPECT_TRUE(bool(Read(bytes)->HoldsSameValueAs(*object)));
    }
    auto foreign = std::make_shared<ForeignObject>();
    foreign->announced = 2;
    foreign->written = "hi";
    EXPECT_EQ(Stored(*foreign, ""), Bytes("00000000 00 0C 000000 'Test.Foreign' 03 000000 '1.2' "
                                          "0A 000000 'absent.dll' 01 02 'hi'"));
}

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
        {"FE 01 00", " ( , version , from module *) for the following reason: \r\ntype identifier 126 names"},
        {"09 2A000000", " ( ulong, version , from module *) for the following reason: \r\ntype identifier 9 names"},
        {"14 02 000000 'no' 02 0100 'x'", " ( no, version , from module *) for the following reason: \r\ntype"},
        {"FC 02 000000 'no' 00", " ( no, version , from module *) for the following reason: \r\ntype identifier 124"},
        {"45 02 000000 'no' 01 01 'x'", " ( no, version , from module *) for the following reason: \r\ntype"},
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
            ASSERT_EQ(warnings.GetNames(), std::vector<std::string>{"DataObjectCreationFailed"});
            std::string expected = "Attempt to deserialize data named odd failed to create the needed DataObject";
            expected += text;
            EXPECT_EQ(warnings.seen[0].GetText().substr(0, expected.size()), expected);
            EXPECT_EQ(warnings.seen[0].GetCategory(), "Qor.Tivor.DataContainer.InputData");
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

TEST(GoldenBytes, TheEmptyFileHas19) {
    const Core::Testing::TemporaryDirectory directory;
    const auto path = directory / "empty";
    BinaryDataFile file(path.ToString(), DataFile::eREAD_WRITE, DataFile::eCREATE_NEW, nullptr);
    file.Flush();
    file.Close();
    EXPECT_EQ(Core::Testing::ReadFileText(path), fileHeader + endMarker);
    EXPECT_TRUE(file.Open(path.ToString(), DataFile::eREAD_ONLY, DataFile::eOPEN_EXISTING, nullptr));
    EXPECT_TRUE(file.IsEmpty());
}

} // namespace Qor::Tivor::Testing
