#pragma once

#include <Tivor/BuiltInDataObjects.h>
#include <Tivor/Serializer.h>

namespace Qor::Tivor {

/// Base of the serializers of wrapped values: knows the object, and holds its lock where a value is touched.
template <class T>
class ValueSerializer : public BuiltInSerializerBase {
public:
    explicit ValueSerializer(DataOf<T>& object) : m_object(object) {}

    DataObject& GetDataObject() final { return m_object; }
    std::uint64_t GetDataSize_bytes() const final {
        const auto lock = m_object.GetDataLock();
        return GetStoredSize(m_object.GetValue());
    }
    bool DataSizeIsConstant() const override { return BuiltInTraits<T>::facts.header == EHeaderKind::fixedSize; }

protected:
    /// The bytes of the value's data block.
    virtual std::uint64_t GetStoredSize(const T& value) const = 0;

    DataOf<T>& m_object;
};

} // namespace Qor::Tivor
