#pragma once

#include "../common/Report.h"

#include <QorCore/Stream.h>

namespace Qor::Tivor::Measurements {

/// X3P, the XML format of ISO 25178-72 (before: ISO 5436-2): surfaces, profiles and clouds of points. A zip container
/// with
///
///     main.xml           what is measured: axes and feature (Record1), who measured (Record2), sizes and either the
///                        points as text or a link to them (Record3)
///     md5checksum.hex    the MD5 checksum of main.xml, as md5sum prints it
///     bindata/data.bin   points in binary, little-endian, x fastest, then y, then the layers: of each point one number
///                        for each axis that is absolute
///     bindata/valid.bin  one bit for each point, the lowest first, 1 for a valid one
///     ...                files of vendors
///
/// A coordinate is Offset + Increment * number, in metres; on incremental axes the number is the index.
///
/// A file becomes, layer by layer, surfaces "Surface", or "Surface 1", "Surface 2", ..., dimension 1 along y; profiles
/// "Profile", ... when the feature is PRF; of a list of points the three profiles "X", "Y" and "Z". Where x and y of a
/// matrix of points lie on no grid, they are surfaces, too. Samples are what is stored, and Increment is their scale;
/// with an Offset they are 64-bit floats in metres. Missing points, however they are told, are NaN, for which 16-bit
/// integers become 32-bit, and 32-bit integers 64-bit floats; both hold them exactly. Elements of main.xml become texts
/// in "X3P" of the metadata, under their names; elements that the standard does not know become texts of XML in
/// "Unknown elements" there, and files of vendors bytes in "Files".
///
/// What is written keeps to the standard's schema: binary, or text where "Storage" in the metadata is "Text". What
/// that has no place for is told before. The same content gives the same bytes.
struct X3p {
    static constexpr const char* fileType = "X3P";
    static constexpr const char* description = "Stores surfaces, profiles and points as X3P (ISO 25178-72)";
    static constexpr const char* category = "Qor.Tivor.X3PDataFile";
    static constexpr const char* extensions[] = {"x3p"};

    static std::string Refusal(Core::BinaryInputStream& stream, std::uint64_t size);
    static void Read(Core::BinaryInputStream& stream, const Report& report, DataContainer& content);
    static void Write(const DataContainer& container, const Report& report, Core::BinaryOutputStream& stream);
};

} // namespace Qor::Tivor::Measurements
