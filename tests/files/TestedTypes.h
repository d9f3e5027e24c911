#pragma once

#include "StoredBytes.h"

#include <Tivor/BinaryDataFile.h>
#include <Tivor/XMLDataFile.h>

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <string>

namespace Qor::Tivor::Testing {

/// A type of data file, for tests of what all have in common.
struct TestedType {
    const char* name;
    const char* fileType;
    const char* category;
    const char* extension;
    const char* empty;  ///< the file without entries, as `Bytes` takes it
    const char* behind; ///< what does not matter behind the end of a file
    std::shared_ptr<StreamedDataFile> (*make)();
    std::shared_ptr<StreamedDataFile> (*open)(const std::string& fileName, DataFile::EAccess access,
                                              DataFile::EOpenBehavior behavior,
                                              std::shared_ptr<DataContainer> container);
    bool (*recognizes)(const std::string& fileName);
    /// What the container is as a file.
    std::string (*fileOf)(const DataContainer& container);
};

template <class File>
std::shared_ptr<StreamedDataFile> MakeFile() {
    return std::make_shared<File>();
}
template <class File>
std::shared_ptr<StreamedDataFile> MakeOpenFile(const std::string& fileName, DataFile::EAccess access,
                                               DataFile::EOpenBehavior behavior,
                                               std::shared_ptr<DataContainer> container) {
    return std::make_shared<File>(fileName, access, behavior, std::move(container));
}

inline constexpr TestedType binaryType = {
    "Binary",
    "QOR Binary Data File",
    "Qor.Tivor.BinaryDataFile",
    "dataset",
    "'QOR DATA' 01 0000 'A' 00000000 7F FFFF",
    "trailing bytes",
    MakeFile<BinaryDataFile>,
    MakeOpenFile<BinaryDataFile>,
    [](const std::string& fileName) { return BinaryDataFile::IsBinaryDataFile(fileName); },
    [](const DataContainer& container) { return Bytes("'QOR DATA' 01 0000 'A'") + Stored(container); }};

inline constexpr TestedType xmlType = {
    "XML",
    "QOR XML Data File",
    "Qor.Tivor.XMLDataFile",
    "qordml",
    "'<?xml version=\"1.0\" encoding=\"UTF-8\"?>' 0A '<DataContainer typeid=\"125\"/>' 0A",
    "<!-- a comment -->",
    MakeFile<XMLDataFile>,
    MakeOpenFile<XMLDataFile>,
    [](const std::string& fileName) { return XMLDataFile::IsXMLDataFile(fileName); },
    [](const DataContainer& container) { return StoredXML(container); }};

inline constexpr TestedType testedTypes[] = {binaryType, xmlType};

inline void PrintTo(const TestedType& type, std::ostream* stream) { *stream << type.name; }

} // namespace Qor::Tivor::Testing
