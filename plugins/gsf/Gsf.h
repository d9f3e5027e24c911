#pragma once

#include "../common/Report.h"

#include <QorCore/Stream.h>

namespace Qor::Tivor::Measurements {

/// Gwyddion Simple Field, version 1.0: one surface of 32-bit floats. A text header of lines "Name = value", the first
/// of them "Gwyddion Simple Field 1.0"; one to four zero bytes, so that the samples begin at a multiple of four; the
/// samples, little-endian, row by row.
///
/// A file becomes the surface "Surface", dimension 1 along y. XReal and YReal are the widths of all pixels; the unit of
/// the samples is the scale's. Missing points are NaN. Title is the name of the data set; other fields of the header
/// are texts in "GSF" of its metadata, under their names, and are written again.
struct Gsf {
    static constexpr const char* fileType = "Gwyddion Simple Field";
    static constexpr const char* description = "Stores one surface as Gwyddion Simple Field 1.0";
    static constexpr const char* category = "Qor.Tivor.GSFDataFile";
    static constexpr const char* extensions[] = {"gsf"};

    static std::string Refusal(Core::BinaryInputStream& stream, std::uint64_t size);
    static void Read(Core::BinaryInputStream& stream, const Report& report, DataContainer& content);
    static void Write(const DataContainer& container, const Report& report, Core::BinaryOutputStream& stream);
};

/// Where the metadata hold the fields of the header.
inline constexpr const char* gsfKey = "GSF";
inline constexpr std::string_view gsfMagic = "Gwyddion Simple Field 1.0\n";
inline constexpr std::size_t gsfAlignment = 4;

} // namespace Qor::Tivor::Measurements
