#pragma once

#include <QorCore/Alert.h>
#include <QorCore/Time.h>
#include <QorCore/UnitizedValue.h>
#include <QorCore/Utf8.h>
#include <Tivor/Long32.h>

#include <algorithm>
#include <charconv>
#include <complex>
#include <string>
#include <type_traits>
#include <vector>

/// What is asked of every kind of value, whatever holds it: whether two are the same, and how one reads as text.
namespace Qor::Tivor::Details {

template <class T>
concept IsMatrix = requires(const T& value) {
    value.size1();
};
template <class T>
concept IsText = std::is_same_v<T, std::string> || std::is_same_v<T, std::wstring>;
template <class T>
concept IsCollection = !IsText<T> && requires(const T& value) {
    value.size();
    value.begin();
};
template <class T>
concept IsMap = IsCollection<T> && requires {
    typename T::mapped_type;
};
template <class T>
concept IsHashed = IsCollection<T> && requires {
    typename T::hasher;
};
template <class T>
inline constexpr bool isComplex = false;
template <class T>
inline constexpr bool isComplex<std::complex<T>> = true;

template <class T>
concept HasText = requires(const T& value) {
    value.ToString();
};

template <class T>
bool SameValue(const T& left, const T& right);

template <class T>
bool SameElements(const T* left, const T* right, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        if (!SameValue(left[i], right[i]))
            return false;
    return true;
}

// NaN is the same as NaN: a value that nobody changed is the same value.
template <class T>
bool SameValue(const T& left, const T& right) {
    if constexpr (std::is_floating_point_v<T>) {
        return left == right || (left != left && right != right);
    } else if constexpr (isComplex<T>) {
        return SameValue(left.real(), right.real()) && SameValue(left.imag(), right.imag());
    } else if constexpr (std::is_same_v<T, Core::UnitizedValue<double>>) {
        return SameValue(left.GetValue(), right.GetValue()) &&
               (left.GetUnits() == right.GetUnits() || *left.GetUnits() == *right.GetUnits());
    } else if constexpr (IsMatrix<T>) {
        return left.size1() == right.size1() && left.size2() == right.size2() &&
               SameElements(left.data(), right.data(), left.size());
    } else if constexpr (IsCollection<T> && !IsHashed<T> && !IsMap<T>) {
        auto other = right.begin();
        if (left.size() != right.size())
            return false;
        for (const typename T::value_type& element : left)
            if (const typename T::value_type& counterpart = *other++; !SameValue(element, counterpart))
                return false;
        return true;
    } else {
        return left == right;
    }
}

template <class T>
std::string NumberText(T number) {
    char text[64];
    return {text, std::to_chars(text, text + sizeof text, number).ptr};
}
inline std::string NumberText(bool value) { return value ? "true" : "false"; }
inline std::string NumberText(char value) { return NumberText(static_cast<int>(value)); }
inline std::string NumberText(signed char value) { return NumberText(static_cast<int>(value)); }
inline std::string NumberText(unsigned char value) { return NumberText(static_cast<unsigned>(value)); }
template <class Integer>
std::string NumberText(Long32Value<Integer> value) {
    return NumberText(value.value);
}
template <class T>
std::string NumberText(const std::complex<T>& value) {
    return '(' + NumberText(value.real()) + ", " + NumberText(value.imag()) + ')';
}

inline const std::string& PlainText(const std::string& value) { return value; }
inline std::string PlainText(const std::wstring& value) { return Core::Utf8FromWide(value); }
template <HasText T>
std::string PlainText(const T& value) {
    return value.ToString();
}
template <class T>
requires(!HasText<T>) std::string PlainText(const T& value) { return NumberText(value); }

template <class T>
std::string ElementText(const T& element) {
    if constexpr (requires { element.first; })
        return ElementText(element.first) + ": " + ElementText(element.second);
    else if constexpr (IsText<T>)
        return '"' + PlainText(element) + '"';
    else
        return PlainText(element);
}

/// The elements' texts in brackets; only the first of them when there are many.
std::string ListText(std::size_t count, const std::vector<std::string>& firstTexts);

inline constexpr std::size_t listedElements = 16;

template <class T, class Iterator>
std::string ListText(Iterator element, std::size_t count) {
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < std::min(count, listedElements); ++i, ++element)
        texts.push_back(ElementText<T>(*element));
    return ListText(count, texts);
}

} // namespace Qor::Tivor::Details
