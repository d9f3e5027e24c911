#include "../serialization/CachingContentHandler.h"
#include "../serialization/DataBlock.h"
#include "../serialization/KeptXML.h"
#include "../serialization/ObjectCreation.h"
#include "../serialization/XMLAttributes.h"

#include <QorCore/BoundedStreams.h>
#include <QorCore/MemoryStreams.h>
#include <QorCore/Message.h>
#include <Tivor/UnboundDataObject.h>

namespace Qor::Tivor {

namespace {

const char* const bindTypeCategory = "Qor.Tivor.UnboundData.BindType";
const char* const bindArrayCategory = "Qor.Tivor.UnboundData.BindArray";

[[noreturn]] void RaiseCannotBind(std::string text, const char* category) {
    Core::Error::RaiseError(Core::LogicError(std::move(text)), QOR_CODE_CONTEXT("UnboundData"), category);
}

// The second placeholder of two of these texts is part of the text.
[[noreturn]] void RaiseOtherType(const std::string& typeName, const char* category) {
    RaiseCannotBind(Core::FormatText("Attempted to bind unbound data of type \"%1%\" as \"%%2\"", {typeName}),
                    category);
}

std::string BaseTypeName(const DataObject& object) {
    ETypeID id = eNO_TYPE;
    std::string name;
    object.GetBaseDataTypeInfo(id, name);
    return name;
}

[[noreturn]] void RaiseOtherKind(const DataObject& target, const char* category) {
    RaiseCannotBind(Core::FormatText("Attempted to bind unbound data to a %1% storing a %2%",
                                     {target.GetTypeName(), BaseTypeName(target)}),
                    category);
}

} // namespace

/// Data block: the bytes as they came, or, of data that came as XML, the prefix and its content.
class UnboundData::UnboundDataSerializer final : public Serializer, public KeptXML {
public:
    explicit UnboundDataSerializer(UnboundData& object) : m_object(object) {}

    DataObject& GetDataObject() override { return m_object; }
    std::string GetVersion() override { return m_object.m_version; }
    std::string GetModule() override { return m_object.m_module; }
    std::uint64_t GetDataSize_bytes() const override { return m_object.GetDataCapacity(); }
    bool DataSizeIsConstant() const override { return false; }
    std::string GetXMLEncoding() override {
        return m_object.GetData()->isXML ? std::string() : Serializer::GetXMLEncoding();
    }
    bool KeepsXML(std::optional<std::uint64_t>& declaredSize) const override {
        const std::shared_ptr<const Kept> data = m_object.GetData();
        declaredSize = data->declaredSize;
        return data->isXML;
    }

    std::uint64_t DataFromBinary(std::uint64_t size, Core::BinaryInputStream& stream) override {
        Kept kept;
        if (!Core::DataInputStream(stream).ReadBytes(kept.bytes, size))
            Core::Error::RaiseError(
                EndOfStreamOnInput(Core::FormatText("The stream ended after %1% of the %2% bytes of data of a %3%",
                                                    {kept.bytes.size(), size, m_object.m_typeName})),
                QOR_CODE_CONTEXT("UnboundData"), "Qor.Tivor.UnboundData");
        kept.isXML = IsKeptXML(kept.bytes);
        m_object.Keep(std::move(kept));
        return size;
    }

    std::uint64_t DataToBinary(Core::BinaryOutputStream& stream) override {
        const std::shared_ptr<const Kept> data = m_object.GetData();
        stream.Write(data->bytes.data(), data->bytes.size());
        return data->bytes.size();
    }

    std::shared_ptr<XMLContentHandler> GetXMLContentHandler(const XMLAttributes& attributes) override {
        if (FindXMLAttribute(attributes, "encoding") != nullptr)
            return Serializer::GetXMLContentHandler(attributes);
        const std::optional<std::uint64_t> size = GetXMLSize(attributes);
        return std::make_shared<CachingContentHandler>([this, size](const std::string& content) {
            m_object.Keep({std::string(keptXMLPrefix) + content, true, size});
        });
    }

    void DataToXML(std::ostream& stream, Core::XMLWriter& writer) override {
        const std::shared_ptr<const Kept> data = m_object.GetData();
        if (!data->isXML)
            Serializer::DataToXML(stream, writer);
        else if (data->bytes.size() > keptXMLPrefix.size())
            writer.Verbatim(stream, std::string_view(data->bytes).substr(keptXMLPrefix.size()));
    }

private:
    UnboundData& m_object;
};

const std::string UnboundData::sCUSTOM_XML_PREFIX(keptXMLPrefix);

UnboundData::UnboundData(const std::string& typeName, const std::string& module, bool flag, bool isArray)
    : UnboundData(eNO_TYPE, typeName, module, flag, isArray) {}

UnboundData::UnboundData(ETypeID typeID, const std::string& typeName, const std::string& module, bool flag,
                         bool isArray)
    : m_eTypeID(typeID), m_typeName(typeName), m_module(module), m_flag(flag), m_isArray(isArray),
      m_data(std::make_shared<const Kept>()) {}

UnboundData::UnboundData(const UnboundData& other)
    : MutexLockableDataObject(other), m_eTypeID(other.m_eTypeID), m_typeName(other.m_typeName),
      m_version(other.m_version), m_module(other.m_module), m_flag(other.m_flag), m_isArray(other.m_isArray),
      m_data(other.GetData()) {}

UnboundData::~UnboundData() = default;

ETypeID UnboundData::GetTypeID() { return static_cast<ETypeID>(m_eTypeID | (m_flag ? typeCodeFlag : 0)); }

std::string UnboundData::GetTypeName() const { return m_typeName; }

bool UnboundData::HoldsType(const std::type_info&) const { return false; }

bool UnboundData::HoldsSameTypeAs(const DataObject& other) const {
    const auto* const unbound = dynamic_cast<const UnboundData*>(&other);
    return unbound != nullptr && unbound->m_eTypeID == m_eTypeID && unbound->m_typeName == m_typeName &&
           unbound->m_version == m_version && unbound->m_module == m_module;
}

boost::logic::tribool UnboundData::HoldsSameValueAs(const DataObject& other) {
    if (!HoldsSameTypeAs(other))
        return false;
    if (GetData()->bytes == static_cast<const UnboundData&>(other).GetData()->bytes)
        return true;
    return boost::logic::indeterminate;
}

bool UnboundData::EnableSerialization(bool enable) {
    m_serializationEnabled = enable;
    NoteChange();
    ReportChange(EDataChange::value);
    return true;
}

std::shared_ptr<Serializer> UnboundData::GetSerializer() {
    return m_serializationEnabled ? std::make_shared<UnboundDataSerializer>(*this) : nullptr;
}

std::shared_ptr<DataObject> UnboundData::Clone() { return std::make_shared<UnboundData>(*this); }

std::string UnboundData::ToString() {
    return Core::FormatText("%1% bytes of unbound data of type %2%", {GetDataCapacity(), m_typeName});
}

std::uint64_t UnboundData::GetDataCapacity() const { return GetData()->bytes.size(); }

std::shared_ptr<const UnboundData::Kept> UnboundData::GetData() const {
    const auto lock = const_cast<UnboundData*>(this)->GetDataLock();
    return m_data;
}

void UnboundData::Keep(Kept kept) {
    {
        auto data = std::make_shared<const Kept>(std::move(kept));
        const auto lock = GetDataLock();
        m_data = std::move(data);
        NoteChange();
    }
    ReportChange(EDataChange::value);
}

void UnboundData::BindType(DataObject& target) const {
    if (target.GetTypeName() != m_typeName)
        RaiseOtherType(m_typeName, bindTypeCategory);
    if (m_isArray)
        RaiseOtherKind(target, bindTypeCategory);
    BindData(target, bindTypeCategory);
}

void UnboundData::BindArray(DataObject& target) const {
    const std::string element = BaseTypeName(target);
    const bool holdsElements = element != target.GetTypeName();
    if (target.GetTypeName() != m_typeName && !(holdsElements && element == m_typeName))
        RaiseOtherType(m_typeName, bindArrayCategory);
    if (!m_isArray || !holdsElements)
        RaiseOtherKind(target, bindArrayCategory);
    BindData(target, bindArrayCategory);
}

void UnboundData::BindData(DataObject& target, const char* category) const {
    const std::shared_ptr<const Kept> data = GetData();
    const std::shared_ptr<Serializer> serializer = target.GetSerializer();
    if (!serializer)
        RaiseNullSerializer(m_typeName, category);
    // A scalar has no width before its first value.
    if (const std::uint64_t size = serializer->DataSizeIsConstant() ? serializer->GetDataSize_bytes() : 0;
        size != 0 && size != data->bytes.size() && !data->isXML)
        RaiseCannotBind(
            Core::FormatText("Attempted to bind unbound data with size %1% to size %%2\n", {data->bytes.size()}),
            category);
    // What fails, fails on a copy: that a handler refuses a warning, or that a serializer leaves half a value.
    const std::shared_ptr<DataObject> copy = target.Clone();
    const std::shared_ptr<Serializer> trial = copy ? copy->GetSerializer() : nullptr;
    if (trial)
        Replay(*data, *trial, category);
    if (!trial || data->isXML)
        return Replay(*data, *serializer, category);
    Core::MemoryInputStream stream(data->bytes.data(), data->bytes.size());
    serializer->DataFromBinary(data->bytes.size(), stream);
}

void UnboundData::Replay(const Kept& data, Serializer& serializer, const char* category) const {
    DataObjectHeader header;
    header.typeCode = static_cast<std::uint16_t>(m_eTypeID);
    header.typeName = m_typeName;
    header.version = m_version;
    header.module = m_module;
    header.dataSize = data.bytes.size();
    Core::MemoryInputStream stream(data.bytes.data(), data.bytes.size());
    InputBounded(stream, serializer, header, category);
}

UnboundScalarArray::UnboundScalarArray(const std::string& typeName, const std::string& module, bool flag)
    : UnboundData(eSCALAR_ARRAY, typeName, module, flag, true) {}

UnboundScalarArray::~UnboundScalarArray() = default;

std::shared_ptr<DataObject> UnboundScalarArray::Clone() { return std::make_shared<UnboundScalarArray>(*this); }

UnboundScalarContainer::UnboundScalarContainer(const std::string& typeName, const std::string& module, bool flag)
    : UnboundData(eSCALAR_CONTAINER, typeName, module, flag, false) {}

UnboundScalarContainer::UnboundScalarContainer(UnboundScalarContainer&& other)
    : UnboundScalarContainer(static_cast<const UnboundScalarContainer&>(other)) {}

UnboundScalarContainer::~UnboundScalarContainer() = default;

std::shared_ptr<DataObject> UnboundScalarContainer::Clone() { return std::make_shared<UnboundScalarContainer>(*this); }

} // namespace Qor::Tivor
