#pragma once

#include "../container/ContainerState.h"
#include "../container/DataContainerXMLHandler.h"
#include "../serialization/BuiltInTraitsBodies.h"
#include "../serialization/FramedWrite.h"
#include "../serialization/XMLAttributes.h"

namespace Qor::Tivor {

/// Reads the properties of a T as entries of a container, and hands them over when all are read.
template <class T>
class MeasuredArrayXMLHandler final : public DataContainerXMLHandler {
public:
    explicit MeasuredArrayXMLHandler(std::shared_ptr<T> target)
        : DataContainerXMLHandler(DataContainer::Create()), m_target(std::move(target)) {}

    void OnEndContent() override {
        DataContainerXMLHandler::OnEndContent();
        m_target->InputProperties(*GetContainer());
    }

private:
    const std::shared_ptr<T> m_target;
};

/// Data block: the properties, in the form of a container; in XML, their elements.
template <class T>
class MeasuredArraySerializer final : public BuiltInSerializerBase {
public:
    explicit MeasuredArraySerializer(DataOf<T>& object) : m_object(object) {}

    DataObject& GetDataObject() override { return m_object; }
    bool DataSizeIsConstant() const override { return false; }
    std::string GetXMLEncoding() override { return {}; }

    std::uint64_t GetDataSize_bytes() const override {
        const auto content = m_object.GetValue().GetContent();
        if (FramedWrite::Current() == nullptr)
            return content->GetDataSize_bytes();
        return ContainerAccess(*ContainerState::Of(*content))->MeasureSize_bytes();
    }
    std::uint64_t DataFromBinary(std::uint64_t, Core::BinaryInputStream& stream) override {
        const auto values = DataContainer::Create();
        const std::uint64_t size = values->InputData(stream);
        m_object.GetData()->InputProperties(*values);
        return size;
    }
    std::uint64_t DataToBinary(Core::BinaryOutputStream& stream) override {
        const auto lock = m_object.GetDataLock();
        m_object.GetValue().WarnOfOmissions();
        return m_object.GetValue().GetContent()->OutputData(stream, true);
    }
    std::shared_ptr<XMLContentHandler> GetXMLContentHandler(const XMLAttributes&) override {
        return std::make_shared<MeasuredArrayXMLHandler<T>>(m_object.GetData());
    }
    void DataToXML(std::ostream& stream, Core::XMLWriter& writer) override {
        const auto lock = m_object.GetDataLock();
        m_object.GetValue().WarnOfOmissions();
        m_object.GetValue().GetContent()->OutputData(stream, writer, true);
    }

private:
    DataOf<T>& m_object;
};

template <class T>
std::shared_ptr<Serializer> BuiltInTraits<T>::MakeSerializer(DataOf<T>& object) {
    return std::make_shared<MeasuredArraySerializer<T>>(object);
}

} // namespace Qor::Tivor
