#pragma once

#include <QorCore/Alert.h>
#include <Tivor/Export.h>
#include <Tivor/Fwd.h>

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <unordered_map>

namespace Qor::Tivor {

QOR_DECLARE_ALERT(TIVOR_API, EndOfStreamOnInput, Core::IOError);
QOR_DECLARE_ALERT(TIVOR_API, NullSerializer, Core::LogicError);
/// A block was padded or partly skipped, because its serializer and its header do not agree.
QOR_DECLARE_ALERT(TIVOR_API, SkippingData, Core::Warning);
/// The attribute "encoding" of an element is none that its object's class reads.
QOR_DECLARE_ALERT(TIVOR_API, InvalidXMLEncoding, Core::IOError);
QOR_DECLARE_ALERT(TIVOR_API, MissingXMLAttribute, Core::IOError);

/// Knows one object's data: how many bytes its binary form takes, how to write and read that form, how to write it into
/// XML and who reads it back. The framing around the data (name, header, element) is the serialization manager's.
/// A serializer refers to its object, which must outlive it.
///
/// Thread rule: as its object; every operation that reads or changes the value holds the object's data lock.
class TIVOR_API Serializer {
public:
    virtual ~Serializer();

    virtual DataObject& GetDataObject() = 0;
    /// The serialization version that goes into the header.
    virtual std::string GetVersion() = 0;
    /// The module that can create the object again.
    virtual std::string GetModule() = 0;
    /// Exactly the number of bytes that `DataToBinary` will write.
    virtual std::uint64_t GetDataSize_bytes() const = 0;
    /// Whether every object of the class has the same data size; then headers leave it out.
    virtual bool DataSizeIsConstant() const = 0;
    /// The element's "encoding" attribute. The default: "def/hex64" for up to 8 bytes of data, else "def/base64".
    virtual std::string GetXMLEncoding();
    /// Fills the object from a data block of `size` bytes; returns the bytes consumed.
    virtual std::uint64_t DataFromBinary(std::uint64_t size, Core::BinaryInputStream& stream) = 0;
    /// Writes the object's data; returns the bytes written.
    virtual std::uint64_t DataToBinary(Core::BinaryOutputStream& stream) = 0;
    /// The handler that will receive the content of the object's element; the map holds the element's attributes. It
    /// may refer to the serializer, which must then outlive it. The default: the decoder for one of the default
    /// encodings; raises `MissingXMLAttribute` for an element without "encoding", and without "size" where sizes
    /// differ, and `InvalidXMLEncoding`. (Readers use the default for every "encoding" that begins with "def/".)
    virtual std::shared_ptr<XMLContentHandler>
    GetXMLContentHandler(const std::unordered_map<std::string, std::string>& attributes);
    /// Writes the content of the object's element. The default: the binary data in the encoding that the default of
    /// `GetXMLEncoding` names; from 4097 bytes on, `DataToBinary` is then called by another thread, which works in the
    /// name of this one.
    virtual void DataToXML(std::ostream& stream, Core::XMLWriter& writer);

    /// Writes the data as a block of exactly the announced size: what the serializer leaves out is padded with zeros,
    /// with the warning `SkippingData`. Writing more than was announced is an `IOError`. Returns the block's size.
    std::uint64_t ToBinary(Core::BinaryOutputStream& stream);
    /// Writes the content of the object's element.
    void ToXML(std::ostream& stream, Core::XMLWriter& writer) { DataToXML(stream, writer); }
    /// The bytes of header and data together; the name in front of them is the caller's.
    std::uint64_t GetSerializedDataObjectSize_bytes() const;

    /// True when the name begins with "def/".
    static bool IsDefaultEncoding(const std::string& encoding);

    static const std::string sDEFAULT_UINT64_ENCODING;
    static const std::string sDEFAULT_BASE64_ENCODING;
    static const std::string sDEFAULT_HEX64_ENCODING;

protected:
    Serializer() = default;
    Serializer(const Serializer&) = delete;
    Serializer& operator=(const Serializer&) = delete;
};

/// Base of the serializers of this library's own classes: an empty version and the module "*", which the compact binary
/// header implies.
class TIVOR_API BuiltInSerializerBase : public Serializer {
public:
    ~BuiltInSerializerBase() override;

    std::string GetVersion() override;
    std::string GetModule() override;
};

} // namespace Qor::Tivor
