#pragma once

#include <QorCore/Message.h>
#include <QorCore/Utf8.h>
#include <Tivor/BuiltInDataObjects.h>

#include <charconv>
#include <type_traits>

// The bodies behind `BuiltInTraits`, for the sources that instantiate it: each adds `MakeSerializer` for its family and
// then expands the family's list.
#define TIVOR_VALUE(T, id)                                                                                             \
    template struct BuiltInTraits<T, id>;                                                                              \
    template class GenericWrapper<T>;                                                                                  \
    template class Data<T>;

namespace Qor::Tivor {

namespace Details {

template <class T>
concept IsMatrix = requires(const T& value) {
    value.size1();
};

template <class T>
bool SameNumber(const T& left, const T& right) {
    if constexpr (std::is_floating_point_v<T>)
        return left == right || (left != left && right != right);
    else
        return left == right;
}
template <class T>
bool SameNumber(const std::complex<T>& left, const std::complex<T>& right) {
    return SameNumber(left.real(), right.real()) && SameNumber(left.imag(), right.imag());
}

template <class T>
bool SameMatrix(const T& left, const T& right) {
    if (left.size1() != right.size1() || left.size2() != right.size2())
        return false;
    const auto* const a = left.data();
    const auto* const b = right.data();
    for (std::size_t i = 0; i < left.size(); ++i)
        if (!SameNumber(a[i], b[i]))
            return false;
    return true;
}

template <class T>
std::string NumberText(T number) {
    char text[64];
    return {text, std::to_chars(text, text + sizeof text, number).ptr};
}
inline std::string NumberText(bool value) { return value ? "true" : "false"; }
inline std::string NumberText(char value) { return NumberText(static_cast<int>(value)); }
inline std::string NumberText(unsigned char value) { return NumberText(static_cast<unsigned>(value)); }
inline std::string NumberText(Long32Value<std::int32_t> value) { return NumberText(value.value); }

} // namespace Details

template <class T, ETypeID id>
void BuiltInTraits<T, id>::GetBaseDataTypeInfo(ETypeID& typeID, std::string& typeName) {
    typeID = GetTypeID();
    typeName = GetTypeName();
    if constexpr (Details::IsMatrix<T>) {
        using Element = std::remove_cvref_t<decltype(*std::declval<T&>().data())>;
        if constexpr (std::is_same_v<Element, std::complex<double>>) {
            typeID = eCOMPLEX;
            typeName = "complex_double";
        } else {
            typeID = ValueTraits<Element>::GetTypeID();
            typeName = ValueTraits<Element>::GetTypeName();
        }
    }
}

template <class T, ETypeID id>
boost::logic::tribool BuiltInTraits<T, id>::Equal(const T& left, const T& right) {
    if constexpr (Details::IsMatrix<T>)
        return Details::SameMatrix(left, right);
    else
        return Details::SameNumber(left, right);
}

template <class T, ETypeID id>
std::string BuiltInTraits<T, id>::ToString(const T& value) {
    if constexpr (Details::IsMatrix<T>)
        return Core::FormatText("%1% %2% x %3%", {GetTypeName(), value.size1(), value.size2()});
    else if constexpr (std::is_same_v<T, std::string>)
        return value;
    else if constexpr (std::is_same_v<T, std::wstring>)
        return Core::Utf8FromWide(value);
    else
        return Details::NumberText(value);
}

} // namespace Qor::Tivor
