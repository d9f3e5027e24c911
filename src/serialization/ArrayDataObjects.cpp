#include "ElementBlock.h"
#include "StoredElement.h"

#include <Tivor/ArrayDataObjects.h>

namespace Qor::Tivor {

namespace {

constexpr std::uint64_t prefixSize = sizeof(std::uint32_t) + sizeof(std::uint64_t);

template <class T>
struct ElementFacts;
#define TIVOR_ROW(T, STEM, code, position, name)                                                                       \
    template <>                                                                                                        \
    struct ElementFacts<T> {                                                                                           \
        static constexpr ETypeID id = e##STEM;                                                                         \
        static constexpr const char* elementName = name;                                                               \
        static constexpr const char* className = "Array_" name;                                                        \
    };
TIVOR_ARRAY_ELEMENT_TYPES(TIVOR_ROW)
#undef TIVOR_ROW

template <class T>
boost::shared_array<T> CopyOf(std::span<const T> elements) {
    auto copy = AllocateArray<T>(elements.size());
    std::copy(elements.begin(), elements.end(), copy.get());
    return copy;
}

template <class T>
boost::shared_array<T> RequireElementsFor(boost::shared_array<T> elements, std::size_t count) {
    if (!elements && count != 0)
        Core::Error::RaiseError(Core::NullPointerError("An array of " + std::to_string(count) + " elements of type " +
                                                       ElementFacts<T>::elementName + " was given none"),
                                QOR_CODE_CONTEXT("ArrayDataObjects"), "Qor.Tivor.Array");
    return elements;
}

// What `InputWhole` fills.
template <class T>
struct FreshElements {
    explicit FreshElements(std::size_t count) : elements(AllocateArray<T>(count)) {}
    T* data() { return elements.get(); }
    boost::shared_array<T> elements;
};

} // namespace

template <class T>
class Array<T>::ArraySerializer final : public BuiltInSerializerBase {
public:
    explicit ArraySerializer(Array& object) : m_object(object) {}

    DataObject& GetDataObject() override { return m_object; }
    std::uint64_t GetDataSize_bytes() const override { return prefixSize + m_object.GetCount() * sizeof(T); }
    bool DataSizeIsConstant() const override { return false; }

    std::uint64_t DataFromBinary(std::uint64_t size, Core::BinaryInputStream& binaryStream) override {
        Core::DataInputStream stream(binaryStream);
        std::uint32_t ui32ElementSize = 0;
        if (size < prefixSize)
            RaiseInvalidSize(m_object, size);
        if (!stream.Read(ui32ElementSize))
            RaiseEndOfData(m_object, 0, size);
        if (sizeof(T) != ui32ElementSize)
            Core::AssertFailed("sizeof(element_type) == ui32ElementSize", QOR_CODE_CONTEXT("ArrayDataObjects"));
        const std::uint64_t count = ReadCount(m_object, stream, size - sizeof ui32ElementSize, sizeof(T));
        m_object.SetData(InputElements(stream, count), static_cast<std::size_t>(count));
        return prefixSize + count * sizeof(T);
    }

    std::uint64_t DataToBinary(Core::BinaryOutputStream& binaryStream) override {
        const auto lock = m_object.GetDataLock();
        const std::span<const T> elements = std::as_const(m_object).GetElements();
        Core::DataOutputStream stream(binaryStream);
        stream.Write(static_cast<std::uint32_t>(sizeof(T)));
        stream.Write(std::uint64_t{elements.size()});
        binaryStream.Write(elements.data(), elements.size_bytes());
        return prefixSize + elements.size_bytes();
    }

private:
    boost::shared_array<T> InputElements(Core::DataInputStream& stream, std::uint64_t count) const {
        using Stored = std::conditional_t<std::is_same_v<T, bool>, std::uint8_t, T>;
        auto stored = InputWhole(m_object, stream.GetStream(), count * sizeof(T),
                                 [&] { return FreshElements<Stored>(static_cast<std::size_t>(count)); });
        if constexpr (std::is_same_v<T, Stored>) {
            return stored.elements;
        } else {
            auto elements = AllocateArray<T>(static_cast<std::size_t>(count));
            std::transform(stored.data(), stored.data() + count, elements.get(), [](Stored byte) { return byte != 0; });
            return elements;
        }
    }

    Array& m_object;
};

template <class T>
Array<T>::Array(std::size_t count) : m_elements(AllocateArray<T>(count)), m_count(count) {
    std::fill_n(m_elements.get(), count, T{});
}

template <class T>
Array<T>::Array(boost::shared_array<T> elements, std::size_t count)
    : m_elements(RequireElementsFor(std::move(elements), count)), m_count(count) {}

template <class T>
Array<T>::Array(std::span<const T> elements) : m_elements(CopyOf(elements)), m_count(elements.size()) {}

template <class T>
Array<T>::Array(const Array& other) : MutexLockableDataObject(other), m_count(0) {
    const auto lock = const_cast<Array&>(other).GetDataLock();
    m_elements = CopyOf(other.GetElements());
    m_count = other.m_count;
}

template <class T>
Array<T>::~Array() = default;

template <class T>
ETypeID Array<T>::GetTypeID() {
    return eSCALAR_ARRAY;
}

template <class T>
void Array<T>::GetBaseDataTypeInfo(ETypeID& typeID, std::string& typeName) const {
    typeID = ElementFacts<T>::id;
    typeName = ElementFacts<T>::elementName;
}

template <class T>
std::string Array<T>::GetTypeName() const {
    return ElementFacts<T>::className;
}

template <class T>
bool Array<T>::HoldsType(const std::type_info& type) const {
    return type == typeid(boost::shared_array<T>);
}

template <class T>
bool Array<T>::HoldsSameTypeAs(const DataObject& other) const {
    return dynamic_cast<const Array*>(&other) != nullptr;
}

template <class T>
boost::logic::tribool Array<T>::HoldsSameValueAs(const DataObject& other) {
    const auto* const same = dynamic_cast<const Array*>(&other);
    if (same == nullptr)
        return false;
    const auto locks = Details::LockBoth(*this, *same);
    return m_count == same->m_count && Details::SameElements(m_elements.get(), same->m_elements.get(), m_count);
}

template <class T>
bool Array<T>::EnableSerialization(bool enable) {
    m_serializationEnabled = enable;
    NoteChange();
    ReportChange(EDataChange::value);
    return true;
}

template <class T>
std::shared_ptr<Serializer> Array<T>::GetSerializer() {
    return m_serializationEnabled ? std::make_shared<ArraySerializer>(*this) : nullptr;
}

template <class T>
std::shared_ptr<DataObject> Array<T>::Clone() {
    return std::make_shared<Array>(*this);
}

template <class T>
std::string Array<T>::ToString() {
    const auto lock = GetDataLock();
    return Details::ListText<T>(m_elements.get(), m_count);
}

template <class T>
bool Array<T>::SetData(boost::shared_array<T> elements, std::size_t count) {
    elements = RequireElementsFor(std::move(elements), count);
    {
        const auto lock = GetDataLock();
        m_elements.swap(elements);
        m_count = count;
        NoteChange();
    }
    ReportChange(EDataChange::reference);
    return true;
}

template <class T>
void Array<T>::SetValue(std::span<const T> elements) {
    {
        const auto lock = GetDataLock();
        if (elements.size() == m_count) {
            std::copy(elements.begin(), elements.end(), m_elements.get());
        } else {
            m_elements = CopyOf(elements);
            m_count = elements.size();
        }
        NoteChange();
    }
    ReportChange(EDataChange::value);
}

template <class T>
std::size_t Array<T>::GetCount() const {
    const auto lock = const_cast<Array*>(this)->GetDataLock();
    return m_count;
}

template <class T>
boost::shared_array<T> Array<T>::GetData() {
    const auto lock = GetDataLock();
    return m_elements;
}

template <class T>
Core::QorConstArray<T> Array<T>::GetData() const {
    const auto lock = const_cast<Array*>(this)->GetDataLock();
    return {m_elements, m_count};
}

template <class T>
std::span<T> Array<T>::GetElements() {
    const auto lock = GetDataLock();
    return {m_elements.get(), m_count};
}

template <class T>
std::span<const T> Array<T>::GetElements() const {
    const auto lock = const_cast<Array*>(this)->GetDataLock();
    return {m_elements.get(), m_count};
}

bool IsScalarArrayData(const DataObject& object) {
    return WithoutFlag(static_cast<std::uint16_t>(object.GetTypeID())) == eSCALAR_ARRAY;
}

bool IsMatrixData(const DataObject& object) {
    const TypeFacts* const facts = FindTypeFacts(object.GetTypeID());
    return facts != nullptr && (facts->className == "Matrix" || facts->className == "FortranMatrix");
}

#define TIVOR_ROW(T, STEM, code, position, name) template class Array<T>;
TIVOR_ARRAY_ELEMENT_TYPES(TIVOR_ROW)
#undef TIVOR_ROW

} // namespace Qor::Tivor
