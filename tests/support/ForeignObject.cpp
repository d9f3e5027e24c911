#include "ForeignObject.h"

#include <QorCore/Stream.h>
#include <Tivor/Serializer.h>
#include <Tivor/XMLContentHandler.h>

namespace Qor::Tivor::Testing {

namespace {

class ForeignSerializer final : public Serializer {
public:
    explicit ForeignSerializer(ForeignObject& object) : m_object(object) {}

    DataObject& GetDataObject() override { return m_object; }
    std::string GetVersion() override { return "1.2"; }
    std::string GetModule() override { return "absent.dll"; }
    std::uint64_t GetDataSize_bytes() const override {
        if (m_object.onSize)
            m_object.onSize();
        return m_object.announced;
    }
    bool DataSizeIsConstant() const override { return false; }
    std::uint64_t DataFromBinary(std::uint64_t, Core::BinaryInputStream&) override { return 0; }
    std::uint64_t DataToBinary(Core::BinaryOutputStream& stream) override {
        stream.Write(m_object.written.data(), m_object.written.size());
        if (m_object.onWrite)
            m_object.onWrite();
        return m_object.returned;
    }
    std::string GetXMLEncoding() override { return m_object.onWriteXML ? "" : Serializer::GetXMLEncoding(); }
    std::shared_ptr<XMLContentHandler>
    GetXMLContentHandler(const std::unordered_map<std::string, std::string>& attributes) override {
        return m_object.onReadXML ? m_object.onReadXML() : Serializer::GetXMLContentHandler(attributes);
    }
    void DataToXML(std::ostream& stream, Core::XMLWriter& writer) override {
        m_object.onWriteXML ? m_object.onWriteXML(stream, writer) : Serializer::DataToXML(stream, writer);
    }

private:
    ForeignObject& m_object;
};

} // namespace

bool ForeignObject::HoldsSameTypeAs(const DataObject& other) const {
    return dynamic_cast<const ForeignObject*>(&other) != nullptr;
}

std::shared_ptr<Serializer> ForeignObject::GetSerializer() {
    return isSerializable ? std::make_shared<ForeignSerializer>(*this) : nullptr;
}

} // namespace Qor::Tivor::Testing
