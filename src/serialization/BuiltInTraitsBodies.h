#pragma once

#include "ValueOperations.h"

#include <QorCore/Message.h>
#include <Tivor/BuiltInDataObjects.h>

// The bodies behind `BuiltInTraits`, for the sources that instantiate it: each adds `MakeSerializer` for its family and
// then expands the family's list with this as TIVOR_VALUE.
#define TIVOR_DEFINE_VALUE(T, id, name)                                                                                \
    template struct BuiltInTraits<T>;                                                                                  \
    template class GenericWrapper<T>;                                                                                  \
    template class Data<T>;
#define TIVOR_DEFINE_DERIVED_VALUE(Base, T)                                                                            \
    template struct BuiltInTraits<T>;                                                                                  \
    template class Details::WrapperOfDerived<T, GenericWrapper<Base>>;                                                 \
    template class Data<T, GenericWrapper<Base>>;

namespace Qor::Tivor {

namespace Details {

template <class T>
struct BaseTypeOf {
    using Type = T;
};
template <IsMatrix T>
struct BaseTypeOf<T> {
    using Type = typename T::value_type;
};
template <IsCollection T>
struct BaseTypeOf<T> {
    using Type = typename T::value_type;
};
template <IsMap T>
struct BaseTypeOf<T> {
    using Type = typename T::mapped_type;
};

/// The class of a single value of type T, also of those that only occur as elements.
template <class T>
void DescribeElement(ETypeID& typeID, std::string& typeName) {
#define TIVOR_ROW(E, STEM, code, position, name)                                                                       \
    if constexpr (std::is_same_v<T, E>) {                                                                              \
        typeID = e##STEM;                                                                                              \
        typeName = name;                                                                                               \
        return;                                                                                                        \
    }
    TIVOR_COLLECTION_NUMBER_TYPES(TIVOR_ROW)
#undef TIVOR_ROW
    if constexpr (rowOf<T> < builtInTypeFacts.size()) {
        typeID = ValueTraits<T>::GetTypeID();
        typeName = ValueTraits<T>::GetTypeName();
    }
}

} // namespace Details

template <class T>
void BuiltInTraits<T>::GetBaseDataTypeInfo(ETypeID& typeID, std::string& typeName) {
    Details::DescribeElement<typename Details::BaseTypeOf<T>::Type>(typeID, typeName);
}

template <class T>
boost::logic::tribool BuiltInTraits<T>::Equal(const T& left, const T& right) {
    return Details::SameValue(left, right);
}

template <class T>
std::string BuiltInTraits<T>::ToString(const T& value) {
    if constexpr (Details::IsMatrix<T>)
        return Core::FormatText("%1% %2% x %3%", {GetTypeName(), value.size1(), value.size2()});
    else if constexpr (Details::IsCollection<T>)
        return Details::ListText<typename T::value_type>(value.begin(), value.size());
    else
        return Details::PlainText(value);
}

} // namespace Qor::Tivor
