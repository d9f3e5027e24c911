// Data blocks and XML of times, durations, errors, units and unitized values: the forms that these types give
// themselves; in XML, times and durations are the text of the data element.

#include "BuiltInTraitsBodies.h"
#include "ElementBlock.h"
#include "XMLErrorReader.h"
#include "XMLTextHandler.h"
#include "XMLUnitReader.h"
#include "XMLValueSerializer.h"

#include <QorCore/BoundedStreams.h>
#include <QorCore/XMLWriter.h>

namespace Qor::Tivor {

namespace {

template <class T>
class XMLTimeReader : public XMLTextHandler {
protected:
    virtual void Take(T value) = 0;

    void OnText(std::string text) final { Take(Parse(text)); }

private:
    static T Parse(const std::string& text) {
        try {
            return T::FromString(Core::TrimBlanks(text));
        } catch (Core::Error& error) {
            error.SetOrigin(QOR_CODE_CONTEXT("Serializer"), "Qor.Tivor.Serializer", error.GetSeverity());
            throw;
        }
    }
};

template <class T>
struct ReaderOf {
    using Type = XMLTimeReader<T>;
};
template <>
struct ReaderOf<Core::Error> {
    using Type = XMLErrorReader;
};
template <>
struct ReaderOf<Core::UnitDescriptor> {
    using Type = XMLUnitReader;
};
template <>
struct ReaderOf<UnitizedDouble> {
    using Type = XMLUnitizedReader;
};

template <class T>
class StoredValueSerializer final : public XMLValueSerializer<T, typename ReaderOf<T>::Type> {
public:
    using XMLValueSerializer<T, typename ReaderOf<T>::Type>::XMLValueSerializer;

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

    void DataToXML(std::ostream& stream, Core::XMLWriter& writer) override {
        const auto lock = this->m_object.GetDataLock();
        const T& value = this->m_object.GetValue();
        if constexpr (requires { value.ToXML(stream, writer); })
            value.ToXML(stream, writer);
        else
            writer.Text(stream, value.ToString());
    }

protected:
    void Take(T value) override { this->m_object.SetValue(std::move(value)); }

private:
    std::uint64_t GetStoredSize(const T& value) const override { return value.GetSerializedSize(); }
};

static_assert(Core::Time::GetSerializedSize() == BuiltInTraits<Core::Time>::facts.constantSize);
static_assert(Core::Elapse::GetSerializedSize() == BuiltInTraits<Core::Elapse>::facts.constantSize);

} // namespace

template <class T>
std::shared_ptr<Serializer> BuiltInTraits<T>::MakeSerializer(DataOf<T>& object) {
    return Details::MakePooled<facts.id, EPooled::serializer, StoredValueSerializer<T>>(object);
}

#define TIVOR_VALUE TIVOR_DEFINE_VALUE
TIVOR_CORE_VALUES

} // namespace Qor::Tivor
