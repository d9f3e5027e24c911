#pragma once

#include "../common/Report.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Qor::Tivor::Measurements {

/// An element of main.xml.
struct Element {
    /// Without the prefix of a namespace.
    std::string GetLocalName() const { return name.substr(name.find(':') + 1); }
    /// The first child of that local name, or null.
    const Element* Find(std::string_view localName) const;
    /// The same along a path of names.
    const Element* FindBelow(std::string_view path) const;
    std::string GetPlace() const;
    /// The element with all that is in it, as XML.
    std::string ToXML() const;

    std::string name;
    std::vector<std::pair<std::string, std::string>> attributes;
    std::string text; ///< without the blanks around it
    std::vector<Element> children;
    std::uint64_t line = 0;
};

/// The content of main.xml: its elements, but those of points in text ("Datum"), which stand side by side.
struct MainDocument {
    /// Raises `MalformedMeasurement` for what is no XML.
    MainDocument(const std::string& xml, const Report& report);

    Element root;
    std::string points; ///< the texts of the points, each ended by '\n'
    std::uint64_t numPoints = 0;
};

} // namespace Qor::Tivor::Measurements
