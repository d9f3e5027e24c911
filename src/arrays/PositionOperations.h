#pragma once

#include <boost/logic/tribool.hpp>

#include <string>
#include <typeinfo>

/// What is asked of a position function of whatever class.
namespace Qor::Tivor::PositionOperations {

/// Calls `use` with the value as that of the `Classes` which it is; false when it is none of them.
template <class... Classes, class Position, class Use>
bool UseAs(const Position& value, Use use) {
    const auto useAs = [&]<class T>(const T* as) {
        if (as != nullptr)
            use(*as);
        return as != nullptr;
    };
    return (useAs(dynamic_cast<const Classes*>(&value)) || ...);
}

template <class... Classes, class Position>
boost::logic::tribool Equal(const Position& left, const Position& right) {
    if (typeid(left) != typeid(right))
        return false;
    boost::logic::tribool result = boost::logic::indeterminate;
    UseAs<Classes...>(left, [&]<class T>(const T& one) { result = one == static_cast<const T&>(right); });
    return result;
}

template <class... Classes, class Position>
std::string ToString(const Position& value, const char* ofOtherClasses) {
    std::string text = ofOtherClasses;
    UseAs<Classes...>(value, [&](const auto& one) { text = one.ToString(); });
    return text;
}

} // namespace Qor::Tivor::PositionOperations
