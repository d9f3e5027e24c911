#include "LeafMutex.h"
#include "XMLText.h"

#include <QorCore/MemoryStreams.h>
#include <QorCore/Message.h>
#include <QorCore/NumberText.h>
#include <QorCore/XMLWriter.h>
#include <Tivor/GenericWrapper.h>
#include <Tivor/ScalarData.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <locale>
#include <sstream>
#include <utility>

namespace Qor::Tivor {

InvalidScalarSize::~InvalidScalarSize() = default;
InvalidScalarTypeID::~InvalidScalarTypeID() = default;

namespace {

const char* const category = "Qor.Tivor.ScalarSerializer";

const char* const source = "DataObject";

[[noreturn]] void RaiseInvalidSize(const Core::MessageArgument& size, const std::string& typeName) {
    Core::Error::RaiseError(InvalidScalarSize(Core::FormatText(
                                "Invalid size of %1% reported for scalar value of type %2%", {size, typeName})),
                            QOR_CODE_CONTEXT(source), category);
}

[[noreturn]] void RaiseOutOfRange(const std::string& typeName) {
    Core::Error::RaiseError(
        Core::OutOfRangeError(Core::FormatText("A scalar value of type %1% does not fit its new form", {typeName})),
        QOR_CODE_CONTEXT("DataObject"), "Qor.Tivor.ScalarData");
}

[[noreturn]] void RaiseNoNumber(ETypeID kind, std::uint64_t size, const std::string& typeName,
                                const std::string& text) {
    const char* const kindName = kind == eFLOATING_POINT_TYPE    ? "a floating-point number"
                                 : kind == eSIGNED_INTEGRAL_TYPE ? "a signed integer"
                                                                 : "an unsigned integer";
    Core::Error::RaiseError(
        Core::IOError(Core::FormatText("Expected %1% of %2% bytes for a scalar value of type %3%, found \"%4%\"",
                                       {kindName, size, typeName, text})),
        QOR_CODE_CONTEXT(source), category);
}

[[noreturn]] void RaiseMissingAttribute(const char* name, const std::string* key) {
    Core::Error::RaiseError(
        MissingXMLAttribute(Core::FormatText("Missing required %1% attribute for XML data %2%",
                                             {name, "with key = " + (key != nullptr ? *key : std::string())})),
        QOR_CODE_CONTEXT(source), category);
}

bool IsAllowedWidth(ETypeID kind, std::uint64_t size) {
    return size == 4 || size == 8 || (kind != eFLOATING_POINT_TYPE && (size == 1 || size == 2));
}

// The same number in another type, or an error: integers must be kept exactly, a floating-point number may be rounded
// to a narrower one, but neither become infinite nor lose its fraction to an integer.
template <class To, class From>
To Convert(From value, const std::string& typeName) {
    if constexpr (std::is_integral_v<To> && std::is_integral_v<From>) {
        if (!std::in_range<To>(value))
            RaiseOutOfRange(typeName);
    } else if constexpr (std::is_integral_v<To>) {
        // 2^digits is exact in every floating-point type, unlike the largest integer below it.
        const From limit = std::ldexp(From{1}, std::numeric_limits<To>::digits);
        if (!(value < limit && value >= (std::is_signed_v<To> ? -limit : From{0})) || std::trunc(value) != value)
            RaiseOutOfRange(typeName);
    } else if constexpr (std::is_floating_point_v<From>) {
        if (std::isfinite(value) && !std::isfinite(static_cast<To>(value)))
            RaiseOutOfRange(typeName);
    }
    return static_cast<To>(value);
}

} // namespace

ScalarData::ScalarData(const std::string& typeName, ETypeID typeID) : m_eTypeID(typeID), m_typeName(typeName) {
    if (typeID != eSIGNED_INTEGRAL_TYPE && typeID != eUNSIGNED_INTEGRAL_TYPE && typeID != eFLOATING_POINT_TYPE)
        Core::Error::RaiseError(InvalidScalarTypeID(Core::FormatText("Invalid scalar type ID of %1%",
                                                                     {static_cast<std::uint32_t>(typeID)})),
                                QOR_CODE_CONTEXT(source), category);
}

ScalarData::ScalarData(const ScalarData& other)
    : MutexLockableDataObject(other), m_eTypeID(other.m_eTypeID), m_typeName(other.m_typeName) {
    const auto lock = const_cast<ScalarData&>(other).GetDataLock();
    m_bytes = other.m_bytes;
    m_size = other.m_size;
}

ScalarData::~ScalarData() = default;

ETypeID ScalarData::GetTypeID() { return m_eTypeID; }

std::string ScalarData::GetTypeName() const { return m_typeName; }

// Shows the number to the visitor in its native type.
template <class Visitor>
decltype(auto) ScalarData::VisitNumber(Visitor&& visitor) const {
    return VisitType(m_size, [&]<class T>(std::type_identity<T>) {
        T number;
        std::memcpy(&number, m_bytes.data(), sizeof number);
        return visitor(number);
    });
}

// Shows the native type of the object's kind and a width to the visitor.
template <class Visitor>
decltype(auto) ScalarData::VisitType(std::uint64_t size, Visitor&& as) const {
    switch (m_eTypeID == eFLOATING_POINT_TYPE ? size + 16 : m_eTypeID == eSIGNED_INTEGRAL_TYPE ? size + 32 : size) {
    case 1:
        return as(std::type_identity<std::uint8_t>{});
    case 2:
        return as(std::type_identity<std::uint16_t>{});
    case 4:
        return as(std::type_identity<std::uint32_t>{});
    case 8:
        return as(std::type_identity<std::uint64_t>{});
    case 16 + 4:
        return as(std::type_identity<float>{});
    case 16 + 8:
        return as(std::type_identity<double>{});
    case 32 + 1:
        return as(std::type_identity<std::int8_t>{});
    case 32 + 2:
        return as(std::type_identity<std::int16_t>{});
    case 32 + 4:
        return as(std::type_identity<std::int32_t>{});
    case 32 + 8:
        return as(std::type_identity<std::int64_t>{});
    default:
        RaiseInvalidSize(size, m_typeName);
    }
}

bool ScalarData::HoldsType(const std::type_info& type) const {
    const auto isOne = [&]<class... T>(std::type_identity<T>...) {
        return ((type == typeid(T) && std::is_floating_point_v<T> == (m_eTypeID == eFLOATING_POINT_TYPE) &&
                 std::is_signed_v<T> != (m_eTypeID == eUNSIGNED_INTEGRAL_TYPE) && sizeof(T) == m_size) ||
                ...);
    };
    return isOne(std::type_identity<char>{}, std::type_identity<signed char>{}, std::type_identity<unsigned char>{},
                 std::type_identity<short>{}, std::type_identity<unsigned short>{}, std::type_identity<int>{},
                 std::type_identity<unsigned int>{}, std::type_identity<long>{}, std::type_identity<unsigned long>{},
                 std::type_identity<long long>{}, std::type_identity<unsigned long long>{}, std::type_identity<float>{},
                 std::type_identity<double>{}) ||
           (!m_typeName.empty() && GetRegisteredName(type) == m_typeName);
}

bool ScalarData::HoldsSameTypeAs(const DataObject& other) const {
    const auto* scalar = dynamic_cast<const ScalarData*>(&other);
    return scalar != nullptr && scalar->m_eTypeID == m_eTypeID && scalar->m_typeName == m_typeName;
}

boost::logic::tribool ScalarData::HoldsSameValueAs(const DataObject& other) {
    if (!HoldsSameTypeAs(other))
        return false;
    const auto& scalar = static_cast<const ScalarData&>(other);
    const auto locks = Details::LockBoth(*this, scalar);
    if (m_size == 0 || scalar.m_size == 0)
        return m_size == scalar.m_size;
    return VisitNumber([&](auto left) {
        return scalar.VisitNumber([&](auto right) {
            if constexpr (std::is_integral_v<decltype(left)> && std::is_integral_v<decltype(right)>)
                return std::cmp_equal(left, right);
            else
                return static_cast<double>(left) == static_cast<double>(right) || (left != left && right != right);
        });
    });
}

bool ScalarData::EnableSerialization(bool enable) {
    m_serializationEnabled = enable;
    NoteChange();
    ReportChange(EDataChange::value);
    return true;
}

std::shared_ptr<Serializer> ScalarData::GetSerializer() {
    if (!m_serializationEnabled)
        return nullptr;
    const std::lock_guard leaf(LeafMutexOf(this));
    if (!m_serializer)
        m_serializer = std::make_shared<ScalarSerializer>(*this);
    return m_serializer;
}

std::shared_ptr<DataObject> ScalarData::Clone() { return std::make_shared<ScalarData>(*this); }

std::string ScalarData::ToString() {
    const auto lock = GetDataLock();
    if (m_size == 0)
        return {};
    std::ostringstream text;
    text.imbue(std::locale::classic());
    VisitNumber([&](auto number) { text << number; });
    return text.str();
}

template <class T>
T ScalarData::GetValue() const {
    if constexpr (std::is_floating_point_v<T>)
        QOR_ASSERT(eFLOATING_POINT_TYPE == m_eTypeID, "DataObject");
    else if constexpr (std::is_signed_v<T>)
        QOR_ASSERT(eSIGNED_INTEGRAL_TYPE == m_eTypeID, "DataObject");
    else
        QOR_ASSERT(eUNSIGNED_INTEGRAL_TYPE == m_eTypeID, "DataObject");
    const auto lock = const_cast<ScalarData*>(this)->GetDataLock();
    return VisitNumber([&](auto number) { return Convert<T>(number, m_typeName); });
}

template <class T>
void ScalarData::SetValue(T value) {
    {
        const auto lock = GetDataLock();
        const bool isNew = m_size == 0;
        if (isNew)
            m_size = m_eTypeID == eFLOATING_POINT_TYPE && std::is_integral_v<T> ? 8 : sizeof(T);
        try {
            VisitNumber([&](auto former) {
                former = Convert<decltype(former)>(value, m_typeName);
                std::memcpy(m_bytes.data(), &former, sizeof former);
            });
        } catch (...) {
            if (isNew)
                m_size = 0;
            throw;
        }
        NoteChange();
    }
    ReportChange(EDataChange::value);
}

#define TIVOR_ROW(T)                                                                                                   \
    template TIVOR_API T ScalarData::GetValue<T>() const;                                                              \
    template TIVOR_API void ScalarData::SetValue<T>(T);
TIVOR_ROW(int)
TIVOR_ROW(unsigned int)
TIVOR_ROW(std::int64_t)
TIVOR_ROW(std::uint64_t)
TIVOR_ROW(float)
TIVOR_ROW(double)
#undef TIVOR_ROW

ScalarData::ScalarSerializer::ScalarSerializer(ScalarData& object) : m_object(object) {}

ScalarData::ScalarSerializer::~ScalarSerializer() = default;

DataObject& ScalarData::ScalarSerializer::GetDataObject() { return m_object; }

std::string ScalarData::ScalarSerializer::GetVersion() { return {}; }

std::string ScalarData::ScalarSerializer::GetModule() { return {}; }

std::uint64_t ScalarData::ScalarSerializer::GetDataSize_bytes() const {
    const auto lock = m_object.GetDataLock();
    return m_object.m_size;
}

bool ScalarData::ScalarSerializer::DataSizeIsConstant() const { return true; }

std::string ScalarData::ScalarSerializer::GetXMLEncoding() { return {}; }

std::uint64_t ScalarData::ScalarSerializer::DataFromBinary(std::uint64_t size, Core::BinaryInputStream& stream) {
    {
        const auto lock = m_object.GetDataLock();
        if (!IsAllowedWidth(m_object.m_eTypeID, size))
            RaiseInvalidSize(size, m_object.m_typeName);
        decltype(m_object.m_bytes) bytes{};
        if (const std::uint64_t got = stream.Read(bytes.data(), size); got < size)
            Core::Error::RaiseError(EndOfStreamOnInput(Core::FormatText(
                                        "The stream ended after %1% of the %2% bytes of a scalar of type %3%",
                                        {got, size, m_object.m_typeName})),
                                    QOR_CODE_CONTEXT(source), category);
        m_object.m_bytes = bytes;
        m_object.m_size = size;
        m_object.NoteChange();
    }
    m_object.ReportChange(EDataChange::value);
    return size;
}

std::uint64_t ScalarData::ScalarSerializer::DataToBinary(Core::BinaryOutputStream& stream) {
    const auto lock = m_object.GetDataLock();
    if (m_object.m_size == 0)
        RaiseInvalidSize(m_object.m_size, m_object.m_typeName);
    stream.Write(m_object.m_bytes.data(), m_object.m_size);
    return m_object.m_size;
}

std::shared_ptr<XMLContentHandler>
ScalarData::ScalarSerializer::GetXMLContentHandler(const std::unordered_map<std::string, std::string>& attributes) {
    const auto find = [&attributes](const char* name) {
        const auto found = attributes.find(name);
        return found != attributes.end() ? &found->second : nullptr;
    };
    if (const std::string* const encoding = find("encoding"); encoding != nullptr && !encoding->empty())
        return Serializer::GetXMLContentHandler(attributes);
    for (const char* const name : {"typename", "size"})
        if (find(name) == nullptr)
            RaiseMissingAttribute(name, find("key"));
    const std::string& text = *find("size");
    const auto size = Core::ParseNumber<std::uint64_t>(text);
    if (!size || !IsAllowedWidth(m_object.m_eTypeID, *size))
        RaiseInvalidSize(text, m_object.m_typeName);
    m_contentSize = *size;
    return shared_from_this();
}

void ScalarData::ScalarSerializer::DataToXML(std::ostream& stream, Core::XMLWriter& writer) {
    const auto lock = m_object.GetDataLock();
    m_object.VisitNumber([&](auto number) { writer.Text(stream, Core::GetNumberText(number)); });
}

void ScalarData::ScalarSerializer::PrepareForNewContent() { m_content.clear(); }

void ScalarData::ScalarSerializer::OnTextContent(const std::string& text) { m_content += text; }

void ScalarData::ScalarSerializer::OnEntityReference(const std::string& entity) {
    RaiseEntityReference(entity, source, category);
}

void ScalarData::ScalarSerializer::OnCDataSection(Core::BinaryInputStream& section) {
    AppendSection(m_content, section);
}

void ScalarData::ScalarSerializer::OnEndContent() {
    m_object.VisitType(m_contentSize, [this]<class T>(std::type_identity<T>) {
        const std::optional<T> number = Core::ParseNumber<T>(m_content);
        if (!number)
            RaiseNoNumber(m_object.m_eTypeID, m_contentSize, m_object.m_typeName, m_content);
        Core::MemoryInputStream bytes(&*number, sizeof *number);
        DataFromBinary(sizeof *number, bytes);
    });
}

} // namespace Qor::Tivor
