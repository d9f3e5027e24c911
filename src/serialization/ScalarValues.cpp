// Data block of a number: its little-endian bytes at their own width; a bool is one byte, and whatever is not 0 reads
// as true.

#include "BuiltInTraitsBodies.h"
#include "ElementBlock.h"
#include "ValueSerializer.h"

namespace Qor::Tivor {

namespace {

template <class T>
class NumberSerializer final : public ValueSerializer<T> {
public:
    using ValueSerializer<T>::ValueSerializer;

    std::uint64_t DataFromBinary(std::uint64_t, Core::BinaryInputStream& stream) override {
        T value;
        if (const std::uint64_t got = ReadNumber(stream, value); got < sizeof(T))
            RaiseEndOfData(this->m_object, got, sizeof(T));
        this->m_object.SetValue(std::move(value));
        return sizeof(T);
    }

    std::uint64_t DataToBinary(Core::BinaryOutputStream& stream) override {
        const auto lock = this->m_object.GetDataLock();
        stream.Write(&this->m_object.GetValue(), sizeof(T));
        return sizeof(T);
    }

private:
    std::uint64_t GetStoredSize(const T&) const override { return sizeof(T); }

    static std::uint64_t ReadNumber(Core::BinaryInputStream& stream, T& value) {
        if constexpr (std::is_same_v<T, bool>) {
            std::uint8_t byte = 0;
            const std::uint64_t got = stream.Read(&byte, sizeof byte);
            value = byte != 0;
            return got;
        } else {
            return stream.Read(&value, sizeof value);
        }
    }
};

} // namespace

template <class T>
std::shared_ptr<Serializer> BuiltInTraits<T>::MakeSerializer(DataOf<T>& object) {
    static_assert(sizeof(T) == facts.constantSize);
    return Details::MakePooled<facts.id, EPooled::serializer, NumberSerializer<T>>(object);
}

#define TIVOR_VALUE TIVOR_DEFINE_VALUE
TIVOR_SCALAR_VALUES

} // namespace Qor::Tivor
