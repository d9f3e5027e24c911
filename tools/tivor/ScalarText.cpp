#include "ScalarText.h"

#include "Display.h"
#include "Units.h"

#include <QorCore/Message.h>
#include <QorCore/NumberText.h>
#include <QorCore/Utf8.h>
#include <Tivor/BuiltInDataObjects.h>
#include <Tivor/ScalarData.h>

#include <algorithm>
#include <charconv>

namespace Qor::Tivor::Tool {

namespace {

/// The classes that can be set.
#define TIVOR_SETTABLE_VALUES                                                                                          \
    TIVOR_SCALAR_VALUES TIVOR_STRING_VALUES TIVOR_VALUE(Core::Time, eTIME, ) TIVOR_VALUE(Core::Elapse, eELAPSE, )      \
        TIVOR_VALUE(UnitizedDouble, eUNITIZED_VALUE, )

[[noreturn]] void FailToParse(const std::string& expected, const std::string& text) {
    Fail(Core::FormatText("Expected %1% as the value, found %2%", {expected, Show(text)}));
}

template <class T>
T ParseNumber(const std::string& text, const std::string& className) {
    T number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error == std::errc() && end == text.data() + text.size())
        return number;
    const char* const kind = std::is_floating_point_v<T> ? "a number" : "a whole number";
    FailToParse(Core::FormatText("%1% in the range of %2%", {kind, className}), text);
}

/// A number, and behind it the name or the symbol of a unit, if there is one.
UnitizedDouble ParseUnitized(const std::string& text) {
    const std::string_view trimmed = Core::TrimBlanks(text);
    const std::size_t end = std::min(trimmed.find(' '), trimmed.size());
    const std::string unitName(Core::TrimBlanks(trimmed.substr(end)));
    const auto number = Core::ParseNumber<double>(trimmed.substr(0, end));
    const auto unit = unitName.empty() ? nullptr : FindUnit(unitName);
    if (!number || (!unit && !unitName.empty()))
        FailToParse("a number, or a number, a blank and a unit, as 1 um or 2.5 Meter,", text);
    return {*number, unit};
}

template <class T>
T Parse(const std::string& text) {
    const std::string className = ValueTraits<T>::GetTypeName();
    if constexpr (std::is_same_v<T, bool>) {
        if (text != "true" && text != "false")
            FailToParse("true or false", text);
        return text == "true";
    } else if constexpr (std::is_same_v<T, char>) {
        return static_cast<char>(ParseNumber<signed char>(text, className));
    } else if constexpr (std::is_same_v<T, Long32>) {
        return ParseNumber<std::int32_t>(text, className);
    } else if constexpr (std::is_same_v<T, std::string>) {
        return text;
    } else if constexpr (std::is_same_v<T, std::wstring>) {
        return IsUtf8(text) ? Core::WideFromUtf8(text) : (FailToParse("a text in UTF-8", text), L"");
    } else if constexpr (std::is_same_v<T, UnitizedDouble>) {
        return ParseUnitized(text);
    } else if constexpr (requires { T::FromString(text); }) {
        return T::FromString(text);
    } else {
        return ParseNumber<T>(text, className);
    }
}

template <class T>
bool SetIfOf(DataObject& object, const std::string& text) {
    auto* const data = dynamic_cast<Data<T>*>(&object);
    if (data != nullptr)
        data->SetValue(Parse<T>(text));
    return data != nullptr;
}

void SetScalar(ScalarData& scalar, const std::string& text) {
    const std::string className = Show(scalar.GetTypeName());
    const std::string width = Count(scalar.GetSize_bytes(), "byte", "bytes");
    try {
        if (scalar.GetTypeID() == eSIGNED_INTEGRAL_TYPE)
            scalar.SetValue(ParseNumber<std::int64_t>(text, className));
        else if (scalar.GetTypeID() == eUNSIGNED_INTEGRAL_TYPE)
            scalar.SetValue(ParseNumber<std::uint64_t>(text, className));
        else if (scalar.GetSize_bytes() == sizeof(float))
            scalar.SetValue(ParseNumber<float>(text, className));
        else
            scalar.SetValue(ParseNumber<double>(text, className));
    } catch (const Core::OutOfRangeError&) {
        FailToParse(Core::FormatText("a whole number in the range of %1%, which has %2%", {className, width}), text);
    }
}

std::string ListClasses() {
    std::string list;
#define TIVOR_VALUE(T, id, name) list += (list.empty() ? "" : ", ") + ValueTraits<T>::GetTypeName();
    TIVOR_SETTABLE_VALUES
#undef TIVOR_VALUE
    return list;
}

} // namespace

std::shared_ptr<DataObject> MakeFromText(const std::string& className, const std::string& text) {
#define TIVOR_VALUE(T, id, name)                                                                                       \
    if (className == ValueTraits<T>::GetTypeName())                                                                    \
        return MakeData(Parse<T>(text));
    TIVOR_SETTABLE_VALUES
#undef TIVOR_VALUE
    Fail(Core::FormatText("Expected one of the classes %1%, found %2%", {ListClasses(), Show(className)}));
}

void SetFromText(DataObject& object, const std::string& text) {
    if (auto* const scalar = dynamic_cast<ScalarData*>(&object))
        return SetScalar(*scalar, text);
#define TIVOR_VALUE(T, id, name)                                                                                       \
    if (SetIfOf<T>(object, text))                                                                                      \
        return;
    TIVOR_SETTABLE_VALUES
#undef TIVOR_VALUE
    Fail(Core::FormatText("Expected an entry of one of the classes %1%, found a %2%",
                          {ListClasses(), Show(object.GetTypeName())}));
}

} // namespace Qor::Tivor::Tool
