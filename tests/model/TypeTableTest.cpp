#include <Tivor/DataObjectFactory.h>

#include <gtest/gtest.h>

#include <set>

namespace Qor::Tivor::Testing {

namespace {

std::shared_ptr<DataObject> Create(std::uint32_t id, const std::string& name) {
    return DataObjectFactory::Instance().CreateBuiltInDataObject(static_cast<ETypeID>(id), name);
}

} // namespace

TEST(TypeTable, WhatNamesNoClassGivesNothing) {
    for (const std::uint32_t id : {0u,   9u,   17u,  19u,  44u,  63u,  69u,    72u,     79u,      91u,
                                   107u, 123u, 126u, 127u, 128u, 255u, 0x106u, 0xFF06u, 0x10006u, 0xFFFFFFFFu})
        EXPECT_FALSE(Create(id, "int32")) << id;
    for (const std::uint32_t id : {eCOMPLEX, eSTRING_CONTAINER, eSTRING_MAP, eUNITIZED_CONTAINER, eNAMED_CLASS})
        EXPECT_FALSE(Create(id, "") || Create(id, "int32") || Create(id, "Nothing")) << id;
}

TEST(TypeTable, StoredNumbersStayAsTheyAre) {
    const std::set<std::uint32_t> named{14, 15, 16, 20, 64, 65, 66, 67, 68, 69, 72, 124};
    std::string compact;
    for (std::uint16_t code = 0; code < 128; ++code) {
        EXPECT_EQ(CarriesClassName(code), named.contains(code)) << code;
        EXPECT_EQ(FindTypeFacts(code | typeCodeFlag), FindTypeFacts(code));
        if (const TypeFacts* const facts = FindTypeFacts(code); facts != nullptr && facts->header != EHeaderKind::never)
            compact += std::to_string(code) + ' ' + std::string(facts->className) + ' ' +
                       std::to_string(facts->constantSize) + ", ";
    }
    std::string expected = "1 bool 1, 2 int8 1, 3 uint8 1, 4 int16 2, 5 uint16 2, 6 int32 4, 7 uint32 4, 8 long 4, "
                           "9 ulong 4, 10 int64 8, 11 uint64 8, 12 float 4, 13 double 8, 21 AsciiString 0, "
                           "22 UnicodeString 0, 23 QORTime 9, 24 QORElapse 9, 25 QORError 0, 26 UnitDescriptor 0, "
                           "27 UnitizedValue 0, 28 DataSet 0, ";
    for (const auto& [first, last, name] :
         {std::tuple(32, 43, "Vector"), {80, 90, "Matrix"}, {96, 106, "FortranMatrix"}})
        for (int code = first; code <= last; ++code)
            expected += std::to_string(code) + ' ' + name + " 0, ";
    EXPECT_EQ(compact, expected + "125 DataContainer 0, ");
}

} // namespace Qor::Tivor::Testing
