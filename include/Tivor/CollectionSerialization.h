#pragma once

#include <Tivor/BuiltInDataObjects.h>

#include <deque>
#include <list>
#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

// The standard collections as data objects: include this header to wrap, put and get them.
//
// Stored form: a 64-bit count, then the elements. Sequences keep their order; sets and maps are stored sorted, those of
// strings by their UTF-8 bytes, so that equal collections have equal bytes. Strings carry their length in front.
//
// Reading: of equal keys of a map the last stands, of equal elements of a set the first. A set or map that holds fewer
// elements than were stored (equal ones, or NaN among floating-point numbers, which has no place in an order) raises
// the warning `ShrunkCollection`.

namespace Qor::Tivor {

QOR_DECLARE_ALERT(TIVOR_API, ShrunkCollection, Core::Warning);

template <class T>
using SelfMap = std::map<T, T>;
template <class T>
using SelfUnorderedMap = std::unordered_map<T, T>;

/// The collections of numbers, of strings and of unitized values: expands TIVOR_VALUE(type, identifier, class name) for
/// each.
#define TIVOR_NUMBER_COLLECTION_VALUES TIVOR_COLLECTION_NUMBER_TYPES(TIVOR_NUMBER_COLLECTIONS)
#define TIVOR_STRING_COLLECTION_VALUES TIVOR_STRING_TYPES(TIVOR_STRING_COLLECTIONS)
#define TIVOR_UNITIZED_COLLECTION_VALUES TIVOR_SEQUENCE_VALUES(UnitizedDouble, eUNITIZED_CONTAINER, "UnitizedValue")
#define TIVOR_COLLECTION_VALUES                                                                                        \
    TIVOR_NUMBER_COLLECTION_VALUES TIVOR_STRING_COLLECTION_VALUES TIVOR_UNITIZED_COLLECTION_VALUES

#define TIVOR_SEQUENCE_VALUES(T, id, name)                                                                             \
    TIVOR_VALUE(std::vector<T>, id, "StdVector_" name)                                                                 \
    TIVOR_VALUE(std::list<T>, id, "StdList_" name)                                                                     \
    TIVOR_VALUE(std::deque<T>, id, "StdDeque_" name)                                                                   \
    TIVOR_VALUE(std::set<T>, id, "StdSet_" name)
#define TIVOR_NUMBER_COLLECTIONS(T, STEM, code, position, name) TIVOR_SEQUENCE_VALUES(T, eSCALAR_CONTAINER, name)
#define TIVOR_STRING_COLLECTIONS(T, STEM, code, position, name)                                                        \
    TIVOR_SEQUENCE_VALUES(T, eSTRING_CONTAINER, name)                                                                  \
    TIVOR_VALUE(std::unordered_set<T>, eSTRING_CONTAINER, "StdUnorderedSet_" name)                                     \
    TIVOR_VALUE(SelfMap<T>, eSTRING_MAP, "StdMap_" name)                                                               \
    TIVOR_VALUE(SelfUnorderedMap<T>, eSTRING_MAP, "StdUnorderedMap_" name)

#define TIVOR_VALUE TIVOR_DECLARE_VALUE
TIVOR_COLLECTION_VALUES
#undef TIVOR_VALUE

} // namespace Qor::Tivor
