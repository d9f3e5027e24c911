// Data blocks of times, durations, errors, units and unitized values: the forms that these types give themselves.

#include "BuiltInTraitsBodies.h"
#include "ElementBlock.h"
#include "ValueSerializer.h"

#include <QorCore/BoundedStreams.h>

namespace Qor::Tivor {

namespace {

template <class T>
class StoredValueSerializer final : public ValueSerializer<T> {
public:
    using ValueSerializer<T>::ValueSerializer;

    std::uint64_t GetDataSize_bytes() const override {
        const auto lock = this->m_object.GetDataLock();
        return this->m_object.GetValue().GetSerializedSize();
    }
    bool DataSizeIsConstant() const override { return BuiltInTraits<T>::facts.header == EHeaderKind::fixedSize; }
    std::string GetXMLEncoding() override { return {}; }

    std::uint64_t DataFromBinary(std::uint64_t size, Core::BinaryInputStream& binaryStream) override {
        Core::BoundedInputStream block(binaryStream, size); // no length inside may lead out of it
        Core::DataInputStream stream(block);
        T value;
        if (!stream.Read(value))
            RaiseEndOfData(this->m_object, size - block.Remaining(), size);
        this->m_object.SetValue(std::move(value));
        return size - block.Remaining();
    }

    std::uint64_t DataToBinary(Core::BinaryOutputStream& stream) override {
        const auto lock = this->m_object.GetDataLock();
        const T& value = this->m_object.GetValue();
        Core::DataOutputStream(stream).Write(value);
        return value.GetSerializedSize();
    }
};

static_assert(Core::Time::GetSerializedSize() == BuiltInTraits<Core::Time>::facts.constantSize);
static_assert(Core::Elapse::GetSerializedSize() == BuiltInTraits<Core::Elapse>::facts.constantSize);

} // namespace

template <class T>
std::shared_ptr<Serializer> BuiltInTraits<T>::MakeSerializer(Data<T>& object) {
    return Details::MakePooled<facts.id, EPooled::serializer, StoredValueSerializer<T>>(object);
}

#define TIVOR_VALUE TIVOR_DEFINE_VALUE
TIVOR_CORE_VALUES

} // namespace Qor::Tivor
