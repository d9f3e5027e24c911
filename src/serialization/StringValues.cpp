// Data block of a string: its bytes, without count and terminator; wide strings as UTF-8.

#include "BuiltInTraitsBodies.h"
#include "ElementBlock.h"
#include "ValueSerializer.h"

namespace Qor::Tivor {

namespace {

std::uint64_t StoredSize(const std::string& value) { return value.size(); }
std::uint64_t StoredSize(const std::wstring& value) { return Core::GetUtf8Size(value); }
const std::string& Stored(const std::string& value) { return value; }
std::string Stored(const std::wstring& value) { return Core::Utf8FromWide(value); }

template <class T>
class StringSerializer : public ValueSerializer<T> {
public:
    using ValueSerializer<T>::ValueSerializer;

    std::uint64_t GetDataSize_bytes() const override {
        const auto lock = this->m_object.GetDataLock();
        return StoredSize(this->m_object.GetValue());
    }
    bool DataSizeIsConstant() const override { return false; }
    std::string GetXMLEncoding() override { return {}; }

    std::uint64_t DataFromBinary(std::uint64_t size, Core::BinaryInputStream& stream) override {
        std::string bytes;
        if (!Core::DataInputStream(stream).ReadBytes(bytes, size))
            RaiseEndOfData(this->m_object, bytes.size(), size);
        if constexpr (std::is_same_v<T, std::wstring>)
            this->m_object.SetValue(Core::WideFromUtf8(bytes));
        else
            this->m_object.SetValue(std::move(bytes));
        return size;
    }

    std::uint64_t DataToBinary(Core::BinaryOutputStream& stream) override {
        const auto lock = this->m_object.GetDataLock();
        const auto& bytes = Stored(this->m_object.GetValue());
        stream.Write(bytes.data(), bytes.size());
        return bytes.size();
    }
};

} // namespace

template <class T>
std::shared_ptr<Serializer> BuiltInTraits<T>::MakeSerializer(Data<T>& object) {
    return Details::MakePooled<facts.id, EPooled::serializer, StringSerializer<T>>(object);
}

#define TIVOR_VALUE TIVOR_DEFINE_VALUE
TIVOR_STRING_VALUES

} // namespace Qor::Tivor
