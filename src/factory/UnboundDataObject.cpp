#include "../serialization/DataBlock.h"

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

class UnboundData::UnboundDataSerializer final : public Serializer {
public:
    explicit UnboundDataSerializer(UnboundData& object) : m_object(object) {}

    DataObject& GetDataObject() override { return m_object; }
    std::string GetVersion() override { return m_object.m_version; }
    std::string GetModule() override { return m_object.m_module; }
    std::uint64_t GetDataSize_bytes() const override { return m_object.GetDataCapacity(); }
    bool DataSizeIsConstant() const override { return false; }

    std::uint64_t DataFromBinary(std::uint64_t size, Core::BinaryInputStream& stream) override {
        auto data = std::make_shared<std::string>();
        if (!Core::DataInputStream(stream).ReadBytes(*data, size))
            Core::Error::RaiseError(
                EndOfStreamOnInput(Core::FormatText("The stream ended after %1% of the %2% bytes of data of a %3%",
                                                    {data->size(), size, m_object.m_typeName})),
                QOR_CODE_CONTEXT("UnboundData"), "Qor.Tivor.UnboundData");
        {
            const auto lock = m_object.GetDataLock();
            m_object.m_data = std::move(data);
            m_object.NoteChange();
        }
        m_object.ReportChange(EDataChange::value);
        return size;
    }

    std::uint64_t DataToBinary(Core::BinaryOutputStream& stream) override {
        const std::shared_ptr<const std::string> data = m_object.GetData();
        stream.Write(data->data(), data->size());
        return data->size();
    }

private:
    UnboundData& m_object;
};

UnboundData::UnboundData(const std::string& typeName, const std::string& module, bool flag, bool isArray)
    : UnboundData(eNO_TYPE, typeName, module, flag, isArray) {}

UnboundData::UnboundData(ETypeID typeID, const std::string& typeName, const std::string& module, bool flag,
                         bool isArray)
    : m_eTypeID(typeID), m_typeName(typeName), m_module(module), m_flag(flag), m_isArray(isArray),
      m_data(std::make_shared<const std::string>()) {}

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
    if (*GetData() == *static_cast<const UnboundData&>(other).GetData())
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

std::uint64_t UnboundData::GetDataCapacity() const { return GetData()->size(); }

std::shared_ptr<const std::string> UnboundData::GetData() const {
    const auto lock = const_cast<UnboundData*>(this)->GetDataLock();
    return m_data;
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
    const std::shared_ptr<const std::string> data = GetData();
    const std::shared_ptr<Serializer> serializer = target.GetSerializer();
    if (!serializer)
        Core::Error::RaiseError(
            NullSerializer(Core::FormatText("No serializer for data with class name = %1%", {m_typeName})),
            QOR_CODE_CONTEXT("UnboundData"), category);
    // A scalar has no width before its first value.
    if (const std::uint64_t size = serializer->DataSizeIsConstant() ? serializer->GetDataSize_bytes() : 0;
        size != 0 && size != data->size())
        RaiseCannotBind(Core::FormatText("Attempted to bind unbound data with size %1% to size %%2\n", {data->size()}),
                        category);
    // What fails, fails on a copy: that a handler refuses a warning, or that a serializer leaves half a value.
    const std::shared_ptr<DataObject> copy = target.Clone();
    if (const std::shared_ptr<Serializer> trial = copy ? copy->GetSerializer() : nullptr) {
        Replay(*data, *trial, category);
        Core::MemoryInputStream stream(data->data(), data->size());
        Core::BoundedInputStream block(stream, data->size());
        serializer->DataFromBinary(data->size(), block);
    } else {
        Replay(*data, *serializer, category);
    }
}

void UnboundData::Replay(const std::string& data, Serializer& serializer, const char* category) const {
    DataObjectHeader header;
    header.typeName = m_typeName;
    header.version = m_version;
    header.module = m_module;
    header.dataSize = data.size();
    Core::MemoryInputStream stream(data.data(), data.size());
    InputBounded(stream, serializer, header, category);
}

UnboundScalarArray::UnboundScalarArray(const std::string& typeName, const std::string& module, bool flag)
    : UnboundData(eSCALAR_ARRAY, typeName, module, flag, true) {}

UnboundScalarArray::~UnboundScalarArray() = default;

std::shared_ptr<DataObject> UnboundScalarArray::Clone() { return std::make_shared<UnboundScalarArray>(*this); }

UnboundScalarContainer::UnboundScalarContainer(const std::string& typeName, const std::string& module, bool flag)
    : UnboundData(eSCALAR_CONTAINER, typeName, module, flag, false) {}

UnboundScalarContainer::~UnboundScalarContainer() = default;

std::shared_ptr<DataObject> UnboundScalarContainer::Clone() { return std::make_shared<UnboundScalarContainer>(*this); }

} // namespace Qor::Tivor
