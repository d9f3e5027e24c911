#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Qor::Tivor::Measurements {

using ElementPath = std::vector<std::string>;

/// What the text of an element must be.
enum class EText { token, string, dateTime, probing, uri, rotation };

/// An element of main.xml that describes the measurement, and becomes a text of the metadata.
struct Field {
    const char* path; ///< below the root
    EText text;
    bool isRequired; ///< in its parent
};

/// All of them, in the order of the schema.
inline constexpr std::array fields{
    Field{"Record1/Revision", EText::token, true},
    Field{"Record1/Axes/Rotation/r11", EText::rotation, true},
    Field{"Record1/Axes/Rotation/r12", EText::rotation, true},
    Field{"Record1/Axes/Rotation/r13", EText::rotation, true},
    Field{"Record1/Axes/Rotation/r21", EText::rotation, true},
    Field{"Record1/Axes/Rotation/r22", EText::rotation, true},
    Field{"Record1/Axes/Rotation/r23", EText::rotation, true},
    Field{"Record1/Axes/Rotation/r31", EText::rotation, true},
    Field{"Record1/Axes/Rotation/r32", EText::rotation, true},
    Field{"Record1/Axes/Rotation/r33", EText::rotation, true},
    Field{"Record2/Date", EText::dateTime, true},
    Field{"Record2/Creator", EText::token, false},
    Field{"Record2/Instrument/Manufacturer", EText::token, true},
    Field{"Record2/Instrument/Model", EText::token, true},
    Field{"Record2/Instrument/Serial", EText::token, true},
    Field{"Record2/Instrument/Version", EText::token, true},
    Field{"Record2/CalibrationDate", EText::dateTime, true},
    Field{"Record2/ProbingSystem/Type", EText::probing, true},
    Field{"Record2/ProbingSystem/Identification", EText::token, true},
    Field{"Record2/Comment", EText::string, false},
    Field{"VendorSpecificID", EText::uri, false},
};

/// The elements that tell of the points, and are no texts of the metadata.
inline constexpr std::array structure{
    "Record1/FeatureType",
    "Record1/Axes/CX/AxisType",
    "Record1/Axes/CX/DataType",
    "Record1/Axes/CX/Increment",
    "Record1/Axes/CX/Offset",
    "Record1/Axes/CY/AxisType",
    "Record1/Axes/CY/DataType",
    "Record1/Axes/CY/Increment",
    "Record1/Axes/CY/Offset",
    "Record1/Axes/CZ/AxisType",
    "Record1/Axes/CZ/DataType",
    "Record1/Axes/CZ/Increment",
    "Record1/Axes/CZ/Offset",
    "Record3/MatrixDimension/SizeX",
    "Record3/MatrixDimension/SizeY",
    "Record3/MatrixDimension/SizeZ",
    "Record3/ListDimension",
    "Record3/DataLink/PointDataLink",
    "Record3/DataLink/MD5ChecksumPointData",
    "Record3/DataLink/ValidPointsLink",
    "Record3/DataLink/MD5ChecksumValidPoints",
    "Record3/DataList",
    "Record4/ChecksumFile",
};

inline constexpr const char* x3pKey = "X3P";
inline constexpr const char* unknownElementsKey = "Unknown elements";
inline constexpr const char* filesKey = "Files";
inline constexpr const char* storageKey = "Storage";
inline constexpr const char* textStorage = "Text";
/// The type of the stored numbers, where the samples are of another one because points are missing.
inline constexpr const char* dataTypeKey = "DataType";

inline constexpr const char* xKind = "X Coordinate";
inline constexpr const char* yKind = "Y Coordinate";

inline constexpr const char* mainName = "main.xml";
inline constexpr const char* checksumName = "md5checksum.hex";
inline constexpr const char* pointsName = "bindata/data.bin";
inline constexpr const char* validName = "bindata/valid.bin";
inline constexpr const char* rootName = "ISO5436_2";
inline constexpr const char* rootNamespace = "http://www.opengps.eu/2008/ISO5436_2";
inline constexpr const char* revision = "ISO5436 - 2000";

ElementPath SplitPath(std::string_view path);
std::string JoinPath(const ElementPath& path);
/// What a text of that kind must be, as a report says it.
const char* Describe(EText kind);
bool IsValid(EText kind, std::string_view text);
/// What stands for a text that is not known where one is required.
const char* StandInFor(EText kind);

} // namespace Qor::Tivor::Measurements
