#pragma once

#include <QorCore/Message.h>
#include <QorCore/Stream.h>
#include <Tivor/BuiltInDataObjects.h>
#include <Tivor/Serializer.h>

#include <limits>

namespace Qor::Tivor {

/// Base of the serializers of wrapped values: knows the object, and holds its lock where a value is touched.
template <class T>
class ValueSerializer : public BuiltInSerializerBase {
public:
    explicit ValueSerializer(Data<T>& object) : m_object(object) {}

    DataObject& GetDataObject() final { return m_object; }

protected:
    [[noreturn]] void RaiseEndOfStream(std::uint64_t got, std::uint64_t wanted) const {
        Core::Error::RaiseError(
            EndOfStreamOnInput(Core::FormatText("The stream ended after %1% of the %2% bytes of data of a %3%",
                                                {got, wanted, m_object.GetTypeName()})),
            QOR_CODE_CONTEXT("Serializer"), "Qor.Tivor.Serializer");
    }

    /// A block of the class must have a size that it has not.
    [[noreturn]] void RaiseInvalidSize(std::uint64_t size) const {
        Core::Error::RaiseError(Core::IOError(Core::FormatText("A block of %1% bytes holds no data of a %2%",
                                                               {size, m_object.GetTypeName()})),
                                QOR_CODE_CONTEXT("Serializer"), "Qor.Tivor.Serializer");
    }

    Data<T>& m_object;
};

} // namespace Qor::Tivor
