#pragma once

#include <Tivor/Long32.h>

#include <array>
#include <complex>
#include <cstdint>
#include <string>
#include <string_view>

namespace Qor::Tivor {

// The lists from which everything that is "one per type" derives: enumerators, facts, traits, wrappers, instantiations,
// tests. The codes are stored in files: append, never renumber.

/// The ten numeric element types: X(type, STEM, code, position in the vector and matrix families, class name).
#define TIVOR_NUMERIC_TYPES(X)                                                                                         \
    X(char, INT8, 2, 0, "int8")                                                                                        \
    X(unsigned char, UINT8, 3, 1, "uint8")                                                                             \
    X(short, INT16, 4, 2, "int16")                                                                                     \
    X(unsigned short, UINT16, 5, 3, "uint16")                                                                          \
    X(int, INT32, 6, 4, "int32")                                                                                       \
    X(unsigned int, UINT32, 7, 5, "uint32")                                                                            \
    X(std::int64_t, INT64, 10, 6, "int64")                                                                             \
    X(std::uint64_t, UINT64, 11, 7, "uint64")                                                                          \
    X(float, FLOAT, 12, 8, "float")                                                                                    \
    X(double, DOUBLE, 13, 9, "double")

/// The twelve types that a plain value wrapper holds: X(type, STEM, code, -, class name).
#define TIVOR_SCALAR_TYPES(X)                                                                                          \
    X(bool, BOOL, 1, 0, "bool")                                                                                        \
    TIVOR_NUMERIC_TYPES(X)                                                                                             \
    X(::Qor::Tivor::Long32, LONG, 8, 0, "long")

/// The eleven element types of matrices, in both storage orders: X(type, STEM, -, position, -).
#define TIVOR_MATRIX_ELEMENT_TYPES(X) TIVOR_NUMERIC_TYPES(X) X(std::complex<double>, COMPLEX, 0, 10, "")

/// The six complex types: X(type of both parts, class name).
#define TIVOR_COMPLEX_TYPES(X)                                                                                         \
    X(short, "complex_int16")                                                                                          \
    X(int, "complex_int32")                                                                                            \
    X(::Qor::Tivor::Long32, "complex_long")                                                                            \
    X(std::int64_t, "complex_int64")                                                                                   \
    X(float, "complex_float")                                                                                          \
    X(double, "complex_double")

/// The thirteen element types of scalar arrays: X as in `TIVOR_SCALAR_TYPES`.
#define TIVOR_ARRAY_ELEMENT_TYPES(X) TIVOR_SCALAR_TYPES(X) X(::Qor::Tivor::ULong32, ULONG, 9, 0, "ulong")

/// The fourteen numeric element types of the standard collections. Strings and unitized values complete the seventeen.
#define TIVOR_COLLECTION_NUMBER_TYPES(X) TIVOR_ARRAY_ELEMENT_TYPES(X) X(signed char, INT8, 2, 0, "schar")

/// The two string types: X(type, STEM, code, -, class name).
#define TIVOR_STRING_TYPES(X)                                                                                          \
    X(std::string, ASCII_STRING, 21, 0, "AsciiString")                                                                 \
    X(std::wstring, UNICODE_STRING, 22, 0, "UnicodeString")

/// The type identifier of a data object. The low seven bits are the type code of the binary header; bit 7 of a stored
/// code is a flag that readers mask off.
enum ETypeID : std::uint32_t {
    eNO_TYPE = 0,
#define TIVOR_ROW(T, STEM, code, position, name) e##STEM = code,
    TIVOR_ARRAY_ELEMENT_TYPES(TIVOR_ROW) TIVOR_STRING_TYPES(TIVOR_ROW)
#undef TIVOR_ROW
        eSIGNED_INTEGRAL_TYPE = 14,
    eUNSIGNED_INTEGRAL_TYPE = 15,
    eFLOATING_POINT_TYPE = 16,
    eCOMPLEX = 20,
    eTIME = 23,
    eELAPSE = 24,
    eERROR = 25,
    eUNIT_DESCRIPTOR = 26,
    eUNITIZED_VALUE = 27,
    eDATA_SET = 28,
    ePROPERTY_CONTAINER = 29,
    ePOSITION_1D = 30,
    ePOSITION_2D = 31,
#define TIVOR_ROW(T, STEM, code, position, name)                                                                       \
    eVECTOR_##STEM = 32 + position, eMATRIX_##STEM = 80 + position, eFORTRAN_MATRIX_##STEM = 96 + position,
    TIVOR_MATRIX_ELEMENT_TYPES(TIVOR_ROW)
#undef TIVOR_ROW
        eVECTOR_UNITIZED = 43,
    eSCALAR_ARRAY = 64,
    eSCALAR_CONTAINER = 65,
    eSTRING_CONTAINER = 66,
    eSTRING_MAP = 67,
    eUNITIZED_CONTAINER = 68,
    eNAMED_CLASS = 124,
    eDATA_CONTAINER = 125,
    eESCAPE = 127
};

/// What follows the type code in a binary header.
enum class EHeaderKind : std::uint8_t {
    external,     ///< class name, version, module, data size
    nameCarrying, ///< class name, data size
    fixedSize,    ///< nothing: everything is implied
    sized,        ///< data size
    never         ///< the class does not occur in files
};

/// How many objects of a class its pool keeps for reuse.
enum class EPool : std::uint8_t { none, small, large };

/// What is known about one built-in class before any object of it exists.
struct TypeFacts {
    ETypeID id;
    std::string_view className; ///< empty: the class name is the object's own
    EHeaderKind header;
    std::uint8_t constantSize; ///< bytes of data for `fixedSize`, else 0
    EPool pool;
};

/// One row per built-in class.
inline constexpr auto builtInTypeFacts = std::to_array<TypeFacts>({
    {eBOOL, "bool", EHeaderKind::fixedSize, 1, EPool::large},
#define TIVOR_ROW(T, STEM, code, position, name) {e##STEM, name, EHeaderKind::fixedSize, sizeof(T), EPool::large},
    TIVOR_NUMERIC_TYPES(TIVOR_ROW)
#undef TIVOR_ROW
        {eLONG, "long", EHeaderKind::fixedSize, 4, EPool::large},
    {eULONG, "ulong", EHeaderKind::fixedSize, 4, EPool::none},
    {eSIGNED_INTEGRAL_TYPE, "", EHeaderKind::nameCarrying, 0, EPool::large},
    {eUNSIGNED_INTEGRAL_TYPE, "", EHeaderKind::nameCarrying, 0, EPool::large},
    {eFLOATING_POINT_TYPE, "", EHeaderKind::nameCarrying, 0, EPool::large},
#define TIVOR_ROW(T, name) {eCOMPLEX, name, EHeaderKind::nameCarrying, 0, EPool::none},
    TIVOR_COMPLEX_TYPES(TIVOR_ROW)
#undef TIVOR_ROW
#define TIVOR_ROW(T, STEM, code, position, name) {e##STEM, name, EHeaderKind::sized, 0, EPool::large},
        TIVOR_STRING_TYPES(TIVOR_ROW)
#undef TIVOR_ROW
            {eTIME, "QORTime", EHeaderKind::fixedSize, 9, EPool::small},
    {eELAPSE, "QORElapse", EHeaderKind::fixedSize, 9, EPool::small},
    {eERROR, "QORError", EHeaderKind::sized, 0, EPool::small},
    {eUNIT_DESCRIPTOR, "UnitDescriptor", EHeaderKind::sized, 0, EPool::small},
    {eUNITIZED_VALUE, "UnitizedValue", EHeaderKind::sized, 0, EPool::large},
    {eDATA_SET, "DataSet", EHeaderKind::sized, 0, EPool::none},
    {ePROPERTY_CONTAINER, "PropertyContainer", EHeaderKind::never, 0, EPool::none},
    {ePOSITION_1D, "Position1D", EHeaderKind::never, 0, EPool::none},
    {ePOSITION_2D, "Position2D", EHeaderKind::never, 0, EPool::none},
#define TIVOR_ROW(T, STEM, code, position, name)                                                                       \
    {eVECTOR_##STEM, "Vector", EHeaderKind::sized, 0, EPool::none},                                                    \
        {eMATRIX_##STEM, "Matrix", EHeaderKind::sized, 0, EPool::none},                                                \
        {eFORTRAN_MATRIX_##STEM, "FortranMatrix", EHeaderKind::sized, 0, EPool::none},
    TIVOR_MATRIX_ELEMENT_TYPES(TIVOR_ROW)
#undef TIVOR_ROW
        {eVECTOR_UNITIZED, "Vector", EHeaderKind::sized, 0, EPool::none},
#define TIVOR_ROW(T, STEM, code, position, name)                                                                       \
    {eSCALAR_ARRAY, "Array_" name, EHeaderKind::nameCarrying, 0, EPool::none},
    TIVOR_ARRAY_ELEMENT_TYPES(TIVOR_ROW)
#undef TIVOR_ROW
#define TIVOR_SEQUENCES(id, name)                                                                                      \
    {id, "StdVector_" name, EHeaderKind::nameCarrying, 0, EPool::none},                                                \
        {id, "StdList_" name, EHeaderKind::nameCarrying, 0, EPool::none},                                              \
        {id, "StdDeque_" name, EHeaderKind::nameCarrying, 0, EPool::none},                                             \
        {id, "StdSet_" name, EHeaderKind::nameCarrying, 0, EPool::none},
#define TIVOR_ROW(T, STEM, code, position, name) TIVOR_SEQUENCES(eSCALAR_CONTAINER, name)
        TIVOR_COLLECTION_NUMBER_TYPES(TIVOR_ROW)
#undef TIVOR_ROW
#define TIVOR_ROW(T, STEM, code, position, name)                                                                       \
    TIVOR_SEQUENCES(eSTRING_CONTAINER, name){eSTRING_CONTAINER, "StdUnorderedSet_" name, EHeaderKind::nameCarrying, 0, \
                                             EPool::none},                                                             \
        {eSTRING_MAP, "StdMap_" name, EHeaderKind::nameCarrying, 0, EPool::none},                                      \
        {eSTRING_MAP, "StdUnorderedMap_" name, EHeaderKind::nameCarrying, 0, EPool::none},
            TIVOR_STRING_TYPES(TIVOR_ROW)
#undef TIVOR_ROW
                TIVOR_SEQUENCES(eUNITIZED_CONTAINER, "UnitizedValue")
#undef TIVOR_SEQUENCES
                    {eNAMED_CLASS, "FixedSpacing2D", EHeaderKind::nameCarrying, 0, EPool::none},
    {eNAMED_CLASS, "FixedSpacing1D", EHeaderKind::nameCarrying, 0, EPool::none},
    {eNAMED_CLASS, "Data2D", EHeaderKind::nameCarrying, 0, EPool::none},
    {eNAMED_CLASS, "Data1D", EHeaderKind::nameCarrying, 0, EPool::none},
    {eNAMED_CLASS, "ArrayPosition1D", EHeaderKind::nameCarrying, 0, EPool::none},
    {eNAMED_CLASS, "ArrayPosition2D", EHeaderKind::nameCarrying, 0, EPool::none},
    {eDATA_CONTAINER, "DataContainer", EHeaderKind::sized, 0, EPool::small},
});

/// The bit of a stored type code that is carried along and never changes its meaning.
inline constexpr std::uint16_t typeCodeFlag = 0x80;

constexpr std::uint16_t WithoutFlag(std::uint16_t typeCode) { return typeCode & 0xFF7F; }

/// The codes whose header carries the class name, those among them that no class uses yet included.
constexpr bool CarriesClassName(std::uint16_t code) {
    switch (code) {
    case eSIGNED_INTEGRAL_TYPE:
    case eUNSIGNED_INTEGRAL_TYPE:
    case eFLOATING_POINT_TYPE:
    case eCOMPLEX:
    case eSCALAR_ARRAY:
    case eSCALAR_CONTAINER:
    case eSTRING_CONTAINER:
    case eSTRING_MAP:
    case eUNITIZED_CONTAINER:
    case 69:
    case 72:
    case eNAMED_CLASS:
        return true;
    default:
        return false;
    }
}

namespace Details {

/// Position of the row of each code that implies its class, or -1.
inline constexpr auto compactRows = [] {
    std::array<std::int16_t, 128> rows{};
    rows.fill(-1);
    for (std::size_t i = 0; i < builtInTypeFacts.size(); ++i)
        if (!CarriesClassName(static_cast<std::uint16_t>(builtInTypeFacts[i].id)))
            rows[builtInTypeFacts[i].id] = static_cast<std::int16_t>(i);
    return rows;
}();

constexpr bool TypeFactsAreSound() {
    for (std::size_t i = 0; i < builtInTypeFacts.size(); ++i) {
        const TypeFacts& row = builtInTypeFacts[i];
        if (row.id == eNO_TYPE || row.id >= eESCAPE)
            return false;
        if (CarriesClassName(static_cast<std::uint16_t>(row.id)) != (row.header == EHeaderKind::nameCarrying))
            return false;
        if ((row.header == EHeaderKind::fixedSize) != (row.constantSize != 0))
            return false;
        for (std::size_t j = 0; j < i; ++j)
            if (builtInTypeFacts[j].id == row.id &&
                (row.header != EHeaderKind::nameCarrying || builtInTypeFacts[j].className == row.className))
                return false;
    }
    return true;
}
static_assert(TypeFactsAreSound(), "two built-in classes collide, or a row contradicts its header kind");

} // namespace Details

/// The facts of the class that a code implies; null for the codes that carry a class name, and for unknown ones.
constexpr const TypeFacts* FindTypeFacts(std::uint32_t typeCode) {
    const std::uint16_t code = WithoutFlag(static_cast<std::uint16_t>(typeCode));
    if (typeCode > 0xFF || Details::compactRows[code] < 0)
        return nullptr;
    return &builtInTypeFacts[static_cast<std::size_t>(Details::compactRows[code])];
}

/// The position of a class's row, or of none; the name is needed for the codes that carry one.
constexpr std::size_t FindTypeRow(ETypeID id, std::string_view className) {
    for (std::size_t i = 0; i < builtInTypeFacts.size(); ++i)
        if (builtInTypeFacts[i].id == id &&
            (builtInTypeFacts[i].header != EHeaderKind::nameCarrying || builtInTypeFacts[i].className == className))
            return i;
    return builtInTypeFacts.size();
}

/// The pool of the classes with that identifier.
constexpr EPool GetPoolKind(ETypeID id) {
    for (const TypeFacts& row : builtInTypeFacts)
        if (row.id == id)
            return row.pool;
    return EPool::none;
}

static_assert(sizeof(char) == 1 && static_cast<char>(-1) < 0, "char is the signed 8-bit integer of the files");

} // namespace Qor::Tivor
