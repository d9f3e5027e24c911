#pragma once

#include <QorCore/UnitDescriptor.h>

#include <numbers>

namespace Qor::Core::UnitTable {

/// What is known of a unit before anything runs.
struct Row {
    const char* name;
    const char* symbol;
    double scale;
    UnitDescriptor::Exponents exponents;
    double offset = 0.0;
};

inline constexpr UnitDescriptor::Exponents length{1};
inline constexpr UnitDescriptor::Exponents area{2};
inline constexpr UnitDescriptor::Exponents volume{3};
inline constexpr UnitDescriptor::Exponents time{0, 0, 1};
inline constexpr UnitDescriptor::Exponents frequency{0, 0, -1};
inline constexpr UnitDescriptor::Exponents angle{0, 0, 0, 0, 0, 0, 0, 1};
inline constexpr UnitDescriptor::Exponents temperature{0, 0, 0, 0, 1};
inline constexpr UnitDescriptor::Exponents mass{0, 1};
inline constexpr UnitDescriptor::Exponents force{1, 1, -2};
inline constexpr UnitDescriptor::Exponents pressure{-1, 1, -2};
inline constexpr UnitDescriptor::Exponents current{0, 0, 0, 1};
inline constexpr UnitDescriptor::Exponents voltage{2, 1, -3, -1};
inline constexpr UnitDescriptor::Exponents power{2, 1, -3};
inline constexpr UnitDescriptor::Exponents energy{2, 1, -2};
inline constexpr UnitDescriptor::Exponents velocity{1, 0, -1};
inline constexpr UnitDescriptor::Exponents perLength{-1};
inline constexpr UnitDescriptor::Exponents none{};

inline constexpr double degree = std::numbers::pi / 180;

inline constexpr Row rows[] = {
    {"Meter", "m", 1.0, length},
    {"Kilometer", "km", 1e3, length},
    {"Centimeter", "cm", 1e-2, length},
    {"Millimeter", "mm", 1e-3, length},
    {"Micrometer", "um", 1e-6, length},
    {"Nanometer", "nm", 1e-9, length},
    {"Picometer", "pm", 1e-12, length},
    {"Angstrom", "Ang", 1e-10, length},
    {"Inch", "in", 0.0254, length},
    {"Mil", "mil", 2.54e-5, length},
    {"Microinch", "uin", 2.54e-8, length},
    {"Foot", "ft", 0.3048, length},
    {"SquareMeter", "m^2", 1.0, area},
    {"SquareMillimeter", "mm^2", 1e-6, area},
    {"SquareMicrometer", "um^2", 1e-12, area},
    {"CubicMeter", "m^3", 1.0, volume},
    {"CubicMillimeter", "mm^3", 1e-9, volume},
    {"CubicMicrometer", "um^3", 1e-18, volume},
    {"Second", "s", 1.0, time},
    {"Millisecond", "ms", 1e-3, time},
    {"Microsecond", "us", 1e-6, time},
    {"Nanosecond", "ns", 1e-9, time},
    {"Minute", "min", 60.0, time},
    {"Hour", "h", 3600.0, time},
    {"Hertz", "Hz", 1.0, frequency},
    {"Kilohertz", "kHz", 1e3, frequency},
    {"Megahertz", "MHz", 1e6, frequency},
    {"Radian", "rad", 1.0, angle},
    {"Milliradian", "mrad", 1e-3, angle},
    {"Microradian", "urad", 1e-6, angle},
    {"Degree", "deg", degree, angle},
    {"ArcMinute", "arcmin", degree / 60, angle},
    {"ArcSecond", "arcsec", degree / 3600, angle},
    {"Kelvin", "K", 1.0, temperature},
    {"Celsius", "degC", 1.0, temperature, 273.15},
    {"Fahrenheit", "degF", 5.0 / 9.0, temperature, 459.67 * 5.0 / 9.0},
    {"Kilogram", "kg", 1.0, mass},
    {"Gram", "g", 1e-3, mass},
    {"Milligram", "mg", 1e-6, mass},
    {"Newton", "N", 1.0, force},
    {"Millinewton", "mN", 1e-3, force},
    {"Pascal", "Pa", 1.0, pressure},
    {"Kilopascal", "kPa", 1e3, pressure},
    {"Megapascal", "MPa", 1e6, pressure},
    {"Bar", "bar", 1e5, pressure},
    {"Ampere", "A", 1.0, current},
    {"Milliampere", "mA", 1e-3, current},
    {"Volt", "V", 1.0, voltage},
    {"Millivolt", "mV", 1e-3, voltage},
    {"Watt", "W", 1.0, power},
    {"Milliwatt", "mW", 1e-3, power},
    {"Joule", "J", 1.0, energy},
    {"MeterPerSecond", "m/s", 1.0, velocity},
    {"MillimeterPerSecond", "mm/s", 1e-3, velocity},
    {"InverseMeter", "1/m", 1.0, perLength},
    {"InverseMillimeter", "1/mm", 1e3, perLength},
    {"Percent", "%", 0.01, none},
    {"", "", 1.0, none},
};

} // namespace Qor::Core::UnitTable
