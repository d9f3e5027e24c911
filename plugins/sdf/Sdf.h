#pragma once

#include "../common/Report.h"

#include <QorCore/Stream.h>

namespace Qor::Tivor::Measurements {

/// Surface data files of ISO 25178-71, in ASCII: one surface or profile. The first line is a version, as "aISO-1.0";
/// lines "Name = value" follow, their names in upper or lower case, and a line "*"; then the samples as numbers, x
/// fastest, "BAD" for a point that was not measured, and a line "*"; then a trailer of any text, which another "*" in
/// the last line may close. The binary form is refused.
///
/// A file becomes the surface "Surface", dimension 1 along y, or for a single row the profile "Profile": heights of the
/// file's element type in Zscale metres. Missing points are NaN, and make samples of 8 and 16 bits floats, those of 32
/// bits doubles. Version, trailer and the fields of `sdfFields` that are texts stand as such in "SDF" of the metadata,
/// and are written again; what is written is always "aISO-1.0".
struct Sdf {
    static constexpr const char* fileType = "Surface Data File";
    static constexpr const char* description = "Stores one surface or profile as ASCII surface data file, ISO 25178-71";
    static constexpr const char* category = "Qor.Tivor.SDFDataFile";
    static constexpr const char* extensions[] = {"sdf"};

    static std::string Refusal(Core::BinaryInputStream& stream, std::uint64_t size);
    static void Read(Core::BinaryInputStream& stream, const Report& report, DataContainer& content);
    static void Write(const DataContainer& container, const Report& report, Core::BinaryOutputStream& stream);
};

/// Where the metadata hold the texts of a file.
inline constexpr const char* sdfKey = "SDF";

} // namespace Qor::Tivor::Measurements
