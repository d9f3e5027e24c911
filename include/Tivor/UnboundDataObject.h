#pragma once

#include <Tivor/DataObject.h>

#include <optional>
#include <string>

namespace Qor::Tivor {

/// Keeps the data of a class that nobody here knows, as it was stored, with all that its header said: it can be held,
/// copied and written again, byte by byte the same. When the class has become known, the data can be bound: an object
/// of the class is filled from it.
///
/// The content of an XML element without "encoding" is kept as XML, and written so into XML. A binary block holds it
/// behind `sCUSTOM_XML_PREFIX`; whoever reads such a block and knows the class fills the object from that XML.
///
/// Thread rule: as its base; with locking enabled every operation here holds the object's lock.
class TIVOR_API UnboundData : public MutexLockableDataObject {
public:
    /// `flag` is bit 7 of the type code. `isArray` marks the data of an array of objects of the class.
    UnboundData(const std::string& typeName, const std::string& module, bool flag, bool isArray);
    /// Shares the kept data, which never changes.
    UnboundData(const UnboundData& other);
    ~UnboundData() override;

    using DataObject::Clone;
    using DataObject::GetTypeID;
    using DataObject::HoldsSameValueAs;
    using DataObject::ToString;

    /// `eNO_TYPE`, with bit 7 when the flag is set.
    ETypeID GetTypeID() override;
    /// The class name in the header.
    std::string GetTypeName() const override;
    /// False: nobody knows the type.
    bool HoldsType(const std::type_info& type) const override;
    /// Unbound data of the same kind with the same class name, version and module.
    bool HoldsSameTypeAs(const DataObject& other) const override;
    /// True for the same bytes; indeterminate for others, which may mean the same; false for another type.
    boost::logic::tribool HoldsSameValueAs(const DataObject& other) override;
    bool EnableSerialization(bool enable) override;
    std::shared_ptr<Serializer> GetSerializer() override;
    std::shared_ptr<DataObject> Clone() override;
    std::string ToString() override;

    /// 16 bytes that begin with ESC: kept XML follows. In front of anything else they are data like any.
    static const std::string sCUSTOM_XML_PREFIX;

    bool IsArray() const { return m_isArray; }
    const std::string& GetModule() const { return m_module; }
    const std::string& GetVersion() const { return m_version; }
    /// For whoever makes the object from a header.
    void SetVersion(const std::string& version) { m_version = version; }
    /// The bytes of kept data, as a binary data block would hold them.
    std::uint64_t GetDataCapacity() const;

    /// Fills an object of this data's class. Raises an error, and changes nothing, when the object is of another class
    /// or its data always has another size, when this is the data of an array, and when the data is not good for it.
    /// What the object's class does not read is left out, with the warning `SkippingData`.
    void BindType(DataObject& target) const;
    /// The same for the data of an array: the target is of this class, or a collection of objects of it.
    void BindArray(DataObject& target) const;

protected:
    UnboundData(ETypeID typeID, const std::string& typeName, const std::string& module, bool flag, bool isArray);

private:
    class UnboundDataSerializer;

    struct Kept {
        std::string bytes;
        bool isXML = false;
        std::optional<std::uint64_t> declaredSize; // by an XML element
    };

    void Keep(Kept kept);
    std::shared_ptr<const Kept> GetData() const;
    void BindData(DataObject& target, const char* category) const;
    void Replay(const Kept& data, Serializer& serializer, const char* category) const;

    ETypeID m_eTypeID;
    std::string m_typeName;
    std::string m_version;
    std::string m_module;
    bool m_flag;
    bool m_isArray;
    std::shared_ptr<const Kept> m_data;
};

/// A scalar array of an element type that is not known: code 64, name-carrying.
class TIVOR_API UnboundScalarArray final : public UnboundData {
public:
    UnboundScalarArray(const std::string& typeName, const std::string& module, bool flag);
    UnboundScalarArray(const UnboundScalarArray& other) = default;
    ~UnboundScalarArray() override;

    std::shared_ptr<DataObject> Clone() override;
};

/// A collection of numbers of a kind that is not known: code 65, name-carrying.
class TIVOR_API UnboundScalarContainer final : public UnboundData {
public:
    UnboundScalarContainer(const std::string& typeName, const std::string& module, bool flag);
    UnboundScalarContainer(const UnboundScalarContainer& other) = default;
    /// As the copy: what is kept is shared.
    UnboundScalarContainer(UnboundScalarContainer&& other);
    ~UnboundScalarContainer() override;

    std::shared_ptr<DataObject> Clone() override;
};

} // namespace Qor::Tivor
