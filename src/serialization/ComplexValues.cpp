// Data block of a complex number: real part, imaginary part.

#include "BuiltInTraitsBodies.h"
#include "ElementBlock.h"
#include "ValueSerializer.h"

namespace Qor::Tivor {

InvalidComplexType::~InvalidComplexType() = default;

namespace {

template <class T>
class ComplexSerializer final : public ValueSerializer<T> {
public:
    using ValueSerializer<T>::ValueSerializer;

    bool DataSizeIsConstant() const override { return true; }

    std::uint64_t DataFromBinary(std::uint64_t size, Core::BinaryInputStream& stream) override {
        static_assert(sizeof(T) == 2 * sizeof(typename T::value_type));
        if (size != sizeof(T))
            Core::Error::RaiseError(
                InvalidComplexType(Core::FormatText("Built in complex type deserialization does not support %1%",
                                                    {this->m_object.GetTypeName()})),
                QOR_CODE_CONTEXT("Serializer"), "Qor.Tivor.ComplexSerializer");
        T value;
        if (const std::uint64_t got = stream.Read(&value, sizeof value); got < sizeof value)
            RaiseEndOfData(this->m_object, got, sizeof value);
        this->m_object.SetValue(std::move(value));
        return sizeof value;
    }

    std::uint64_t DataToBinary(Core::BinaryOutputStream& stream) override {
        const auto lock = this->m_object.GetDataLock();
        stream.Write(&this->m_object.GetValue(), sizeof(T));
        return sizeof(T);
    }

private:
    std::uint64_t GetStoredSize(const T&) const override { return sizeof(T); }
};

} // namespace

template <class T>
std::shared_ptr<Serializer> BuiltInTraits<T>::MakeSerializer(DataOf<T>& object) {
    return std::make_shared<ComplexSerializer<T>>(object);
}

#define TIVOR_VALUE TIVOR_DEFINE_VALUE
TIVOR_COMPLEX_VALUES

} // namespace Qor::Tivor
