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

protected:
    DataOf<T>& m_object;
};

} // namespace Qor::Tivor
