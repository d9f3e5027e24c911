#pragma once

#include <QorCore/DataStreams.h>
#include <Tivor/DataObject.h>
#include <Tivor/Serializer.h>

#include <string>
#include <vector>

namespace Qor::Tivor {

/// The escape code carries a value that means nothing.
QOR_DECLARE_ALERT(TIVOR_API, InputInvalidTypeID, Core::IOError);
/// Data is nested deeper than `ReadLimits::nesting`, or a name is longer than its limit.
QOR_DECLARE_ALERT(TIVOR_API, LimitExceeded, Core::IOError);

/// The class of stored data is not to be had; the data was skipped.
QOR_DECLARE_ALERT(TIVOR_API, DataObjectCreationFailed, Core::Warning);

/// The class of stored data is not available or not wanted here, and its data is kept as `UnboundData`.
QOR_DECLARE_ALERT(TIVOR_API, KeepingUnread, Core::Warning);

/// What stands in front of an object's data: what the object is, and how many bytes of data follow.
///
/// In a stream (integers little-endian, strings as `DataOutputStream` writes them):
///
///     type code       1 byte; bit 7 is a flag that comparisons ignore
///     code 0          class name, version, module, data size
///     name-carrying   class name, data size
///     127             a 16-bit code; 0xFFFF says that there is no object, others are invalid
///     sized           data size
///     fixed size      nothing
///     data size       1 byte n, then the size in n bytes; n is 0 (size zero, never written), 1, 2, 4 or 8, and any
///                     other n is read as 8; the smallest of 1, 2, 4 and 8 is written
struct TIVOR_API DataObjectHeader {
    std::uint16_t typeCode = eNO_TYPE;
    std::string typeName;
    std::string version;
    std::string module;
    std::uint64_t dataSize = 0;
    bool sizeIsConstant = false;

    DataObjectHeader() = default;
    /// Filled from an object; without a serializer it has no version, module and size.
    explicit DataObjectHeader(DataObject& object);
    DataObjectHeader(DataObject& object, Serializer* serializer);

    /// Whether the header says that there is no object (the escape code with 0xFFFF).
    bool IsEnd() const { return typeCode == endCode; }
    bool HasSizeField() const;

    /// Reads a header and returns its byte count. Raises `EndOfStreamOnInput`, `InputInvalidTypeID`, `LimitExceeded`.
    std::uint64_t Input(Core::BinaryInputStream& stream);
    /// Reads the data-size field and returns its byte count. Raises `EndOfStreamOnInput`.
    std::uint64_t InputDataSize(Core::DataInputStream& stream);
    /// Fills class name, version, module and constant size from the type code.
    void InitBuiltInHeaderInfo();
    /// Writes the header and returns its byte count.
    std::uint64_t Output(Core::BinaryOutputStream& stream) const;
    /// The byte count that `Output` will return.
    std::uint64_t GetSize_bytes() const;

    static constexpr std::uint16_t endCode = 0xFFFF;
};

/// An entry that was skipped on reading, because its class was not to be had.
struct UnreadEntry {
    std::vector<std::string> path; ///< the keys from the outermost container on
    std::string typeName;
    std::string version;
    std::string module;
    std::string reason;
    std::uint16_t typeCode = eNO_TYPE;
    std::uint64_t dataSize = 0; ///< as the header says

    bool operator==(const UnreadEntry&) const = default;
};

/// Frames data objects: name, header, data block, so that whoever reads knows the object before its data, and can step
/// over what it does not know.
class TIVOR_API SerializationManager {
public:
    SerializationManager() = delete;

    /// Writes the object's name, header and data; returns the bytes written. The object's locks are held from header to
    /// data. A serializer that writes less than it announced is padded with zeros, with the warning `SkippingData`;
    /// more is an `IOError`. Raises `NullSerializer` for an object that has none, before anything is written;
    /// exceptions that are no `Core::Error` arrive as `Core::UnknownError` with the variables "Data Type Name" and
    /// "Module".
    static std::uint64_t OutputDataBlock(Core::BinaryOutputStream& stream, const std::string& dataName,
                                         DataObject& object);

    /// Reads name and header; returns their byte count. Raises as `DataObjectHeader::Input`.
    static std::uint64_t InputDataHeader(Core::BinaryInputStream& stream, std::string& dataName,
                                         DataObjectHeader& header);

    /// Reads a whole block as `OutputDataBlock` wrote it: like `DataObject::FromBinary`, with the name in front.
    static std::shared_ptr<DataObject> InputDataObject(Core::BinaryInputStream& stream, std::string& dataName);

    /// Creates the object that a header describes, fills it from the data block behind the header, and leaves the
    /// stream behind the block: what the serializer does not consume is skipped, with the warning `SkippingData`. An
    /// object that cannot be created is an empty pointer, with the warning `DataObjectCreationFailed` under `category`.
    /// Raises `NullSerializer`, `EndOfStreamOnInput` when the stream ends within the block, and what the serializer
    /// raises; errors carry the name as variable "Key".
    static std::shared_ptr<DataObject> InputDataBlock(Core::BinaryInputStream& stream, const std::string& dataName,
                                                      const DataObjectHeader& header, const char* category);

    /// The bytes that `OutputDataBlock` will write; 0 for an object without a serializer.
    static std::uint64_t GetDataBlockSize_bytes(const std::string& dataName, DataObject& object);

    /// Writes the object as an XML element, as `OutputDataBlock` writes it as a block: the same locks, and it raises
    /// the same.
    static void OutputXML(std::ostream& stream, Core::XMLWriter& writer, const std::string& dataName,
                          DataObject& object);

    /// Writes the start tag of the object's element, "Data", with the attributes "key" (unless the name is empty),
    /// "typeid", "typename" (where binary headers carry it), "module" and "version" (of classes outside this library,
    /// unless empty), "size" (where binary headers carry it, and for data whose size is not constant) and "encoding"
    /// (unless empty); for a container that of `OutputDataContainerXMLHeader`. A value that XML cannot hold is written
    /// by `XMLWriter::AnyAttribute`. Raises `NullSerializer`.
    static void OutputXMLHeader(std::ostream& stream, Core::XMLWriter& writer, const DataObject& object,
                                const std::string& dataName);
    /// Writes the start tag of a container's element, "DataContainer", with "key" (unless the name is empty) and
    /// "typeid".
    static void OutputDataContainerXMLHeader(std::ostream& stream, Core::XMLWriter& writer,
                                             const std::string& dataName);
};

/// Counts a level of nested containers on the running thread. Raises `LimitExceeded` when there are more than
/// `ReadLimits::nesting`.
class TIVOR_API NestingLevel {
public:
    NestingLevel();
    NestingLevel(const NestingLevel&) = delete;
    NestingLevel& operator=(const NestingLevel&) = delete;
    ~NestingLevel();
};

} // namespace Qor::Tivor
