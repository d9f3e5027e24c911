#include <Tivor/DataObjectFactory.h>

#include <gtest/gtest.h>

#include <set>

namespace Qor::Tivor::Testing {

namespace {

/// Identifiers whose classes are still to be built; this list only ever gets shorter.
const std::set<std::uint32_t> stillMissing{eCOMPLEX,          eTIME,
                                           eELAPSE,           eERROR,
                                           eUNIT_DESCRIPTOR,  eUNITIZED_VALUE,
                                           eDATA_SET,         eVECTOR_INT8,
                                           eVECTOR_UINT8,     eVECTOR_INT16,
                                           eVECTOR_UINT16,    eVECTOR_INT32,
                                           eVECTOR_UINT32,    eVECTOR_INT64,
                                           eVECTOR_UINT64,    eVECTOR_FLOAT,
                                           eVECTOR_DOUBLE,    eVECTOR_COMPLEX,
                                           eVECTOR_UNITIZED,  eSCALAR_ARRAY,
                                           eSCALAR_CONTAINER, eSTRING_CONTAINER,
                                           eSTRING_MAP,       eUNITIZED_CONTAINER,
                                           eNAMED_CLASS};
/// Identifiers of classes that are never created by description: abstract ones, and a mere element type.
const std::set<std::uint32_t> neverCreated{eULONG, ePROPERTY_CONTAINER, ePOSITION_1D, ePOSITION_2D};

std::shared_ptr<DataObject> Create(std::uint32_t id, const std::string& name) {
    return DataObjectFactory::Instance().CreateBuiltInDataObject(static_cast<ETypeID>(id), name);
}

} // namespace

TEST(TypeTable, EveryClassIsCreatedAsItIsDescribed) {
    for (const TypeFacts& facts : builtInTypeFacts) {
        const bool namesItself = facts.className.empty();
        const std::string name(namesItself ? "Some::Enumeration" : facts.className);
        SCOPED_TRACE(name + " " + std::to_string(facts.id));
        const std::shared_ptr<DataObject> object = Create(facts.id, name);
        ASSERT_EQ(object == nullptr, stillMissing.contains(facts.id) || neverCreated.contains(facts.id));
        if (!object)
            continue;
        EXPECT_EQ(object->GetTypeID(), facts.id);
        EXPECT_EQ(object->GetTypeName(), name);
        EXPECT_TRUE(object->SerializationIsEnabled());
        const std::shared_ptr<DataObject> flagged = Create(facts.id | typeCodeFlag, name);
        ASSERT_TRUE(flagged);
        EXPECT_TRUE(flagged->HoldsSameTypeAs(*object));
        EXPECT_EQ(flagged->GetTypeID(), facts.id);
    }
}

TEST(TypeTable, WhatNamesNoClassGivesNothing) {
    for (const std::uint32_t id : {0u,   9u,   17u,  19u,  44u,  63u,  69u,    72u,     79u,      91u,
                                   107u, 123u, 126u, 127u, 128u, 255u, 0x106u, 0xFF06u, 0x10006u, 0xFFFFFFFFu})
        EXPECT_FALSE(Create(id, "int32")) << id;
    for (const std::uint32_t id : {eCOMPLEX, eSTRING_CONTAINER, eSTRING_MAP, eUNITIZED_CONTAINER, eNAMED_CLASS})
        for (const char* const name : {"", "int32", "Nothing"})
            EXPECT_FALSE(Create(id, name)) << id << name;
}

TEST(TypeTable, StoredNumbersStayAsTheyAre) {
    struct Row {
        std::uint32_t code;
        const char* name;
        unsigned size; // 0: the size is stored
    };
    constexpr Row rows[] = {
        {1, "bool", 1},           {2, "int8", 1},         {3, "uint8", 1},           {4, "int16", 2},
        {5, "uint16", 2},         {6, "int32", 4},        {7, "uint32", 4},          {8, "long", 4},
        {9, "ulong", 4},          {10, "int64", 8},       {11, "uint64", 8},         {12, "float", 4},
        {13, "double", 8},        {21, "AsciiString", 0}, {22, "UnicodeString", 0},  {23, "QORTime", 9},
        {24, "QORElapse", 9},     {25, "QORError", 0},    {26, "UnitDescriptor", 0}, {27, "UnitizedValue", 0},
        {28, "DataSet", 0},       {32, "Vector", 0},      {43, "Vector", 0},         {80, "Matrix", 0},
        {89, "Matrix", 0},        {90, "Matrix", 0},      {96, "FortranMatrix", 0},  {106, "FortranMatrix", 0},
        {125, "DataContainer", 0}};
    for (const Row& row : rows)
        for (const std::uint32_t code : {row.code, row.code | typeCodeFlag}) {
            const TypeFacts* const facts = FindTypeFacts(code);
            ASSERT_NE(facts, nullptr) << code;
            EXPECT_EQ(facts->className, row.name);
            EXPECT_EQ(facts->constantSize, row.size) << row.name;
        }
    const std::set<std::uint16_t> named{14, 15, 16, 20, 64, 65, 66, 67, 68, 69, 72, 124};
    for (std::uint16_t code = 0; code < 128; ++code)
        EXPECT_EQ(CarriesClassName(code), named.contains(code)) << code;
}

} // namespace Qor::Tivor::Testing
