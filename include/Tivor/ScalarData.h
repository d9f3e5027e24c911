#pragma once

#include <Tivor/DataObject.h>
#include <Tivor/XMLContentHandler.h>

#include <array>
#include <cstddef>
#include <optional>
#include <type_traits>

namespace Qor::Tivor {

QOR_DECLARE_ALERT(TIVOR_API, InvalidScalarSize, Core::Error);
QOR_DECLARE_ALERT(TIVOR_API, InvalidScalarTypeID, Core::Error);

/// One number whose kind (signed, unsigned, floating-point) and width are known only at run time: 1, 2, 4 or 8 bytes
/// for the integer kinds, 4 or 8 for the floating-point kind. A new object has no width yet; the first value, or the
/// data that it is read from, gives it one.
///
/// Thread rule: with locking enabled every operation holds the object's lock.
class TIVOR_API ScalarData : public MutexLockableDataObject {
public:
    class ScalarSerializer;

    /// `typeName` is the class name that headers carry, for example that of an enumeration. Raises
    /// `InvalidScalarTypeID` unless the identifier is one of the three scalar kinds.
    ScalarData(const std::string& typeName, ETypeID typeID);
    ScalarData(const ScalarData& other);
    ~ScalarData() override;

    using DataObject::Clone;
    using DataObject::GetTypeID;
    using DataObject::HoldsSameValueAs;
    using DataObject::ToString;

    ETypeID GetTypeID() override;
    std::string GetTypeName() const override;
    /// True for the native types of the object's kind and width, and for the type that is registered under the object's
    /// class name.
    bool HoldsType(const std::type_info& type) const override;
    /// Same class name and kind.
    bool HoldsSameTypeAs(const DataObject& other) const override;
    /// Compares the numbers of two objects of the same type, whatever their widths.
    boost::logic::tribool HoldsSameValueAs(const DataObject& other) override;
    bool EnableSerialization(bool enable) override;
    /// The object's one serializer. Reading works at once; writing needs a width.
    std::shared_ptr<Serializer> GetSerializer() override;
    std::shared_ptr<DataObject> Clone() override;
    /// A value of width 1 is written as a character, a wider integer as a decimal number, a floating-point value in the
    /// default format of streams (six digits).
    std::string ToString() override;

    /// The number as T: int, unsigned int, std::int64_t, std::uint64_t, float or double. Asserts that the object is of
    /// T's kind. Raises `OutOfRangeError` when the number is no T, and `InvalidScalarSize` when there is none yet.
    template <class T>
    T GetValue() const;

    /// Stores the number at the object's kind and width; a new object takes the width of T (8 bytes for an integer that
    /// goes into the floating-point kind). Raises `OutOfRangeError`, changing nothing, when it does not fit.
    template <class T>
    void SetValue(T value);

    /// Makes `className` the name of a type of numbers, in general an enumeration, so that its scalars are recognised
    /// after they were stored; names are the same on every platform, unlike those that compilers give. Raises
    /// `LogicError`, changing nothing, when the type has another name or the name another type.
    static void RegisterType(const std::type_info& type, const std::string& className);
    /// The registered name, or the empty string.
    static std::string GetRegisteredName(const std::type_info& type);

    /// The width in bytes; 0 while there is no value.
    std::uint64_t GetSize_bytes() const { return m_size; }

private:
    template <class Visitor>
    decltype(auto) VisitNumber(Visitor&& visitor) const;
    template <class Visitor>
    decltype(auto) VisitType(std::uint64_t size, Visitor&& visitor) const;

    ETypeID m_eTypeID;
    std::string m_typeName;
    std::array<std::byte, 8> m_bytes{};
    std::uint64_t m_size = 0;
    std::shared_ptr<ScalarSerializer> m_serializer; // made when it is asked for
};

namespace Details {
TIVOR_API std::shared_ptr<ScalarData> MakeEnumScalar(const std::type_info& type, bool isSigned, std::size_t width,
                                                     std::int64_t number);
TIVOR_API std::int64_t GetEnumNumber(const ScalarData& scalar, bool isSigned, std::size_t width);
} // namespace Details

/// Writes the raw little-endian bytes of the number, and into XML its decimal text, whatever the width. The width is
/// the declared data size.
class TIVOR_API ScalarData::ScalarSerializer : public Serializer,
                                               public XMLContentHandler,
                                               public std::enable_shared_from_this<ScalarData::ScalarSerializer> {
public:
    explicit ScalarSerializer(ScalarData& object);
    ~ScalarSerializer() override;

    DataObject& GetDataObject() override;
    std::string GetVersion() override;
    std::string GetModule() override;
    std::uint64_t GetDataSize_bytes() const override;
    bool DataSizeIsConstant() const override;
    std::string GetXMLEncoding() override;
    /// Raises `InvalidScalarSize` for a width that the kind does not have, and `EndOfStreamOnInput`; the object then
    /// keeps its value.
    std::uint64_t DataFromBinary(std::uint64_t size, Core::BinaryInputStream& stream) override;
    std::uint64_t DataToBinary(Core::BinaryOutputStream& stream) override;
    /// Itself. Raises `MissingXMLAttribute` without "typename" or "size", and `InvalidScalarSize` for a size that the
    /// kind does not have.
    std::shared_ptr<XMLContentHandler>
    GetXMLContentHandler(const std::unordered_map<std::string, std::string>& attributes) override;
    /// Raises `InvalidScalarSize` when there is no number yet.
    void DataToXML(std::ostream& stream, Core::XMLWriter& writer) override;

    void PrepareForNewContent() override;
    void OnTextContent(const std::string& text) override;
    void OnEntityReference(const std::string& entity) override;
    void OnCDataSection(Core::BinaryInputStream& section) override;
    /// Raises `IOError` for a text that is no number of the kind and width; the object then keeps its value.
    void OnEndContent() override;

private:
    ScalarData& m_object;
    std::uint64_t m_contentSize = 0;
    std::string m_content;
};

/// A scalar that holds a value of a registered enumeration, with the width and the sign of its underlying type. Raises
/// `LogicError` for an enumeration that is not registered (`ScalarData::RegisterType`).
template <class E>
requires std::is_enum_v<E> std::shared_ptr<ScalarData> MakeScalar(E value) {
    using Number = std::underlying_type_t<E>;
    return Details::MakeEnumScalar(typeid(E), std::is_signed_v<Number>, sizeof(Number),
                                   static_cast<std::int64_t>(value));
}

/// The value of a registered enumeration that a scalar holds, or empty when it holds another type. Raises
/// `OutOfRangeError` for a number that the underlying type does not have.
template <class E>
requires std::is_enum_v<E> std::optional<E> GetEnum(const ScalarData& scalar) {
    using Number = std::underlying_type_t<E>;
    if (!scalar.HoldsType(typeid(E)))
        return std::nullopt;
    return static_cast<E>(Details::GetEnumNumber(scalar, std::is_signed_v<Number>, sizeof(Number)));
}

} // namespace Qor::Tivor
