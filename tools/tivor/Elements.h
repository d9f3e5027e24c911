#pragma once

#include "Display.h"

#include <QorCore/Utf8.h>
#include <Tivor/CollectionSerialization.h>

#include <charconv>
#include <cmath>
#include <functional>
#include <type_traits>

namespace Qor::Tivor::Tool {

/// The shortest text that reads back as the same number.
template <class T>
std::string NumberText(T number) {
    char text[64];
    return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

/// With that many digits, or fewer where these tell it.
inline std::string ShortText(double number, int digits) {
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, number, std::chars_format::general, digits).ptr};
}

template <class T>
concept AnyFloat = std::is_floating_point_v<T>;
template <class T>
concept AnyText = std::is_same_v<T, std::string> || std::is_same_v<T, std::wstring>;
template <class T>
concept AnyMatrix = requires(const T& value) {
    value.size1();
};
template <class T>
concept AnyMap = requires {
    typename T::mapped_type;
};
template <class T>
concept AnySequence = !AnyText<T> && !AnyMap<T> && requires(const T& value) {
    value.begin();
};

inline std::string Utf8Of(const std::string& text) { return text; }
inline std::string Utf8Of(const std::wstring& text) { return Core::Utf8FromWide(text); }

/// An integer of whatever class as one of 64 bits.
template <class T>
auto Widen(T number) {
    if constexpr (std::is_unsigned_v<T> || std::is_same_v<T, ULong32>)
        return static_cast<std::uint64_t>(number);
    else
        return static_cast<std::int64_t>(number);
}

/// An element on one line.
template <class T>
std::string ElementText(const T& element) {
    if constexpr (std::is_same_v<T, bool>)
        return element ? "true" : "false";
    else if constexpr (AnyFloat<T>)
        return NumberText(element);
    else if constexpr (AnyText<T>)
        return Show(Utf8Of(element));
    else if constexpr (requires { element.real(); })
        return '(' + ElementText(element.real()) + ',' + ElementText(element.imag()) + ')';
    else if constexpr (requires { element.ToString(); })
        return OneLine(element.ToString());
    else
        return NumberText(Widen(element));
}

template <AnyFloat T>
Json FloatJson(T number) {
    const std::string text = NumberText(number);
    if (!std::isfinite(number))
        return text;
    double value = 0; // a float has more digits as a double than it takes
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

inline Json UnitJson(const Core::UnitDescriptor& unit) {
    return {{"name", TextJson(unit.GetName())},
            {"symbol", TextJson(unit.GetSymbol())},
            {"scale", FloatJson(unit.GetScale())},
            {"offset", FloatJson(unit.GetOffset())},
            {"exponents", unit.GetExponents()}};
}

inline Json ErrorJson(const Core::Error& error) {
    Json variables = Json::array();
    for (const auto& [name, value] : error.GetVariables())
        variables.push_back({{"name", TextJson(name)}, {"value", TextJson(value)}});
    return {{"class", TextJson(error.GetTypeName())},
            {"text", TextJson(error.GetText())},
            {"category", TextJson(error.GetCategory())},
            {"severity", error.GetSeverity()},
            {"variables", variables}};
}

template <class T>
Json ElementJson(const T& element) {
    if constexpr (std::is_same_v<T, bool>)
        return element;
    else if constexpr (AnyFloat<T>)
        return FloatJson(element);
    else if constexpr (AnyText<T>)
        return TextJson(Utf8Of(element));
    else if constexpr (requires { element.real(); })
        return Json::array({ElementJson(element.real()), ElementJson(element.imag())});
    else if constexpr (std::is_same_v<T, UnitizedDouble>)
        return {{"value", FloatJson(element.GetValue())}, {"unit", UnitJson(*element.GetUnits())}};
    else if constexpr (std::is_same_v<T, Core::UnitDescriptor>)
        return UnitJson(element);
    else if constexpr (std::is_same_v<T, Core::Error>)
        return ErrorJson(element);
    else if constexpr (requires { element.ToString(); })
        return element.ToString();
    else
        return Widen(element);
}

using LineSink = std::function<void(const std::string&)>;

template <AnyMatrix T>
void MatrixLines(const T& matrix, const LineSink& print) {
    for (std::size_t i = 0; i < matrix.size1(); ++i) {
        std::string line;
        for (std::size_t j = 0; j < matrix.size2(); ++j)
            line += (j > 0 ? "\t" : "") + ElementText(matrix(i, j));
        print(line);
    }
}

/// A value of any shape, one row or element per line.
template <class T>
void Lines(const T& value, const LineSink& print) {
    if constexpr (AnyMatrix<T>) {
        MatrixLines(value, print);
    } else if constexpr (AnyMap<T>) {
        for (const auto& [key, mapped] : value)
            print(ElementText(key) + '\t' + ElementText(mapped));
    } else if constexpr (AnySequence<T>) {
        for (const typename T::value_type& element : value)
            print(ElementText(element));
    } else {
        print(ElementText(value));
    }
}

template <AnyMatrix T>
Json MatrixJson(const T& matrix) {
    Json rows = Json::array();
    for (std::size_t i = 0; i < matrix.size1(); ++i) {
        Json& row = rows.emplace_back(Json::array());
        for (std::size_t j = 0; j < matrix.size2(); ++j)
            row.push_back(ElementJson(matrix(i, j)));
    }
    return {{"rows", matrix.size1()}, {"columns", matrix.size2()}, {"values", std::move(rows)}};
}

template <class T>
Json ValueJson(const T& value) {
    if constexpr (AnyMatrix<T>) {
        return MatrixJson(value);
    } else if constexpr (AnyMap<T>) {
        Json json = Json::object();
        for (const auto& [key, mapped] : value)
            AddMember(json, MemberName(Utf8Of(key)), ElementJson(mapped));
        return json;
    } else if constexpr (AnySequence<T>) {
        Json json = Json::array();
        for (const typename T::value_type& element : value)
            json.push_back(ElementJson(element));
        return json;
    } else {
        return ElementJson(value);
    }
}

} // namespace Qor::Tivor::Tool
