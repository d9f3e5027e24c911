#pragma once

#include "Measured.h"

#include <QorCore/NumberText.h>
#include <QorCore/Stream.h>

#include <cmath>
#include <string>
#include <string_view>

namespace Qor::Tivor::Measurements {

/// All that is left of a stream.
std::string ReadAll(Core::BinaryInputStream& stream);

/// What is left of a text, read line by line: without '\n' and '\r' at the ends.
class Lines {
public:
    explicit Lines(std::string_view text) : m_rest(text) {}

    bool IsAtEnd() const { return m_rest.empty(); }
    std::string_view Next();
    /// Of the line that came last; they count from 1.
    std::uint64_t GetNumber() const { return m_number; }
    std::string GetPlace() const { return "line " + std::to_string(m_number); }
    std::string_view GetRest() const { return m_rest; }

private:
    std::string_view m_rest;
    std::uint64_t m_number = 0;
};

/// The number in a text, blanks around it and a '+' in front aside. Empty when it is none.
template <class T>
std::optional<T> FindNumber(std::string_view text) {
    text = Core::TrimBlanks(text);
    if (text.size() > 1 && text[0] == '+' && text[1] != '-')
        text.remove_prefix(1);
    return Core::ParseNumber<T>(text);
}

/// A unit by its symbol or name, with either micro sign; an empty text is plain numbers. Empty when there is none.
Unit FindUnit(std::string_view text);

/// The unit of the same dimensions whose scale is 1, if there is one; else the unit itself.
Unit BaseUnitOf(const Unit& unit);

/// `exact` as a T, and whether that is another number.
template <class T, class From>
T RoundTo(From exact, bool& isRounded) {
    const auto rounded = static_cast<T>(exact);
    // Holds each number of all types, on both systems.
    isRounded = std::isfinite(static_cast<double>(exact)) &&
                static_cast<long double>(rounded) != static_cast<long double>(exact);
    return rounded;
}

} // namespace Qor::Tivor::Measurements
