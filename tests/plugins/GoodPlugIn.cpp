#include "PlugInValues.h"

#include <QorCore/MemoryStreams.h>
#include <Tivor/PlugIn.h>
#include <Tivor/Serializer.h>

namespace Qor::Tivor::Testing {

namespace {

template <class T>
class PlugInSerializer final : public Serializer {
public:
    explicit PlugInSerializer(Data<T>& object) : m_object(object) {}

    DataObject& GetDataObject() override { return m_object; }
    std::string GetVersion() override { return "2.1"; }
    std::string GetModule() override { return "GoodPlugIn.dll"; }
    std::uint64_t GetDataSize_bytes() const override {
        Core::MemoryOutputStream stream;
        Core::DataOutputStream(stream).Write(*m_object.GetData());
        return stream.GetSize();
    }
    bool DataSizeIsConstant() const override { return T::constantSize != 0; }
    // Careless: what fails leaves half a value.
    std::uint64_t DataFromBinary(std::uint64_t size, Core::BinaryInputStream& stream) override {
        Core::DataInputStream input(stream);
        if (!input.Read(*m_object.GetData()))
            Core::Error::RaiseError(EndOfStreamOnInput("short"), QOR_CODE_CONTEXT("PlugIn"), "Test.PlugIn");
        return size;
    }
    std::uint64_t DataToBinary(Core::BinaryOutputStream& stream) override {
        Core::DataOutputStream(stream).Write(*m_object.GetData());
        return GetDataSize_bytes();
    }

private:
    Data<T>& m_object;
};

} // namespace

template <class T>
std::shared_ptr<Serializer> PlugInTraits<T>::MakeSerializer(Data<T>& object) {
    return std::make_shared<PlugInSerializer<T>>(object);
}

} // namespace Qor::Tivor::Testing

TIVOR_DATA_OBJECT_FACTORY(className, version) {
    using namespace Qor::Tivor;
    if (className == Testing::Spectrum::className)
        return ValueTraits<Testing::Spectrum>::MakeData(Testing::Spectrum());
    if (className == Testing::Band::className)
        return ValueTraits<Testing::Band>::MakeData(Testing::Band());
    return nullptr;
}
