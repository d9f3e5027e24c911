#pragma once

#include <Tivor/MeasuredArray.h>

#include <span>

namespace Qor::Tivor {

struct MeasuredArray::Property {
    const char* key;
    EPermissions permissions;
    Texts texts{}; ///< without a display name: none
};

struct MeasuredArray::Axis {
    const char* numPoints;
    const char* extent;
    const char* positions;
    const char* units;
};

struct MeasuredArray::Layout {
    static constexpr const char* positionFunction = "PositionFunction";
    static constexpr Property dataKind{
        "DataKind",
        eREADABLE_WRITABLE,
        {"Kind Of Data", "Data",
         "Describes the kind of data which can be applied to various scopes of data such as an array, a matrix or even "
         "an entire dataset"}};
    static constexpr Property dataScale{
        "DataScale",
        eREADABLE_WRITABLE,
        {"Scale", "Data",
         "Scaling to apply to data values which may be unitized (e.g. height scaling with linear units)"}};
    static constexpr Property version{"Version", eREADABLE, {"Version", "Misc"}};
    static constexpr Property positions{positionFunction, eNO_PERMISSIONS};

    const char* samples;
    std::span<const Axis> axes;
    std::span<const Property> properties;
};

} // namespace Qor::Tivor
