#pragma once

#include <Tivor/GenericWrapper.h>

#include <vector>

namespace Example {

struct Spectrum {
    struct Point {
        double wavelength = 0; // nm
        double intensity = 0;
        bool operator==(const Point&) const = default;
    };

    std::vector<Point> points;
};

} // namespace Example

// What makes it a data object stands in spectrum.cpp; programs need to know only that it exists.
template <>
struct Qor::Tivor::ValueTraits<Example::Spectrum>;
