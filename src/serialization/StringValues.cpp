// Data block of a string: its bytes, without count and terminator; wide strings as UTF-8. In XML the same as the text
// of the data element, or, what XML cannot hold, in Base64.

#include "BuiltInTraitsBodies.h"
#include "DefaultXML.h"
#include "ElementBlock.h"
#include "XMLTextHandler.h"
#include "XMLValueSerializer.h"

#include <QorCore/XMLWriter.h>

#include <algorithm>
#include <optional>

namespace Qor::Tivor {

namespace {

std::uint64_t StoredSize(const std::string& value) { return value.size(); }
std::uint64_t StoredSize(const std::wstring& value) { return Core::GetUtf8Size(value); }
const std::string& Stored(const std::string& value) { return value; }
std::string Stored(const std::wstring& value) { return Core::Utf8FromWide(value); }

bool XMLCanHold(const std::string& value) { return Core::XMLWriter::CanHold(value); }
// As UTF-8, which has every character, or another one for what is none.
bool XMLCanHold(const std::wstring& value) {
    return std::none_of(value.begin(), value.end(), [](wchar_t unit) {
        return unit == 0xFFFE || unit == 0xFFFF || (unit < 0x20 && unit != L'\t' && unit != L'\n' && unit != L'\r');
    });
}

template <class T>
class StringSerializer : public XMLValueSerializer<T, XMLTextHandler> {
public:
    using XMLValueSerializer<T, XMLTextHandler>::XMLValueSerializer;

    std::string GetXMLEncoding() override {
        const auto lock = this->m_object.GetDataLock();
        m_isXMLText = XMLCanHold(this->m_object.GetValue());
        return *m_isXMLText ? std::string() : Serializer::sDEFAULT_BASE64_ENCODING;
    }

    std::uint64_t DataFromBinary(std::uint64_t size, Core::BinaryInputStream& stream) override {
        std::string bytes;
        if (!Core::DataInputStream(stream).ReadBytes(bytes, size))
            RaiseEndOfData(this->m_object, bytes.size(), size);
        OnText(std::move(bytes));
        return size;
    }

    std::uint64_t DataToBinary(Core::BinaryOutputStream& stream) override {
        const auto lock = this->m_object.GetDataLock();
        const auto& bytes = Stored(this->m_object.GetValue());
        stream.Write(bytes.data(), bytes.size());
        return bytes.size();
    }

    void DataToXML(std::ostream& stream, Core::XMLWriter& writer) override {
        const auto lock = this->m_object.GetDataLock();
        const T& value = this->m_object.GetValue();
        if (!m_isXMLText)
            m_isXMLText = XMLCanHold(value);
        if (!*m_isXMLText)
            OutputBase64(stream, writer, *this);
        else if (!value.empty())
            writer.Text(stream, Stored(value));
    }

protected:
    void OnText(std::string text) override {
        if constexpr (std::is_same_v<T, std::wstring>)
            this->m_object.SetValue(Core::WideFromUtf8(text));
        else
            this->m_object.SetValue(std::move(text));
    }

private:
    std::uint64_t GetStoredSize(const T& value) const override { return StoredSize(value); }

    std::optional<bool> m_isXMLText; // what the element's encoding says
};

} // namespace

template <class T>
std::shared_ptr<Serializer> BuiltInTraits<T>::MakeSerializer(DataOf<T>& object) {
    return Details::MakePooled<facts.id, EPooled::serializer, StringSerializer<T>>(object);
}

#define TIVOR_VALUE TIVOR_DEFINE_VALUE
TIVOR_STRING_VALUES

} // namespace Qor::Tivor
