#pragma once

#include "../serialization/BuiltInTraitsBodies.h"
#include "../serialization/FramedWrite.h"
#include "../serialization/XMLAttributes.h"
#include "ContainerState.h"
#include "DataContainerXMLHandler.h"

#include <functional>

namespace Qor::Tivor {

/// Reads the entries of a new container, and hands them over when all are read.
class ContentXMLHandler final : public DataContainerXMLHandler {
public:
    using TakeOver = std::function<void(DataContainer& read)>;

    explicit ContentXMLHandler(TakeOver takeOver)
        : DataContainerXMLHandler(DataContainer::Create()), m_takeOver(std::move(takeOver)) {}

    void OnEndContent() override {
        DataContainerXMLHandler::OnEndContent();
        m_takeOver(*GetContainer());
    }

private:
    const TakeOver m_takeOver;
};

/// Of the values that have their parts in a container. Data block: the container's; in XML, the elements of its
/// entries.
template <class T>
class ContentSerializer : public BuiltInSerializerBase {
public:
    explicit ContentSerializer(DataOf<T>& object) : m_object(object) {}

    DataObject& GetDataObject() final { return m_object; }
    bool DataSizeIsConstant() const final { return false; }
    std::string GetXMLEncoding() final { return {}; }

    std::uint64_t GetDataSize_bytes() const final {
        const auto content = m_object.GetValue().GetContent();
        if (FramedWrite::Current() == nullptr)
            return content->GetDataSize_bytes();
        return ContainerAccess(*ContainerState::Of(*content))->MeasureSize_bytes();
    }
    std::uint64_t DataFromBinary(std::uint64_t, Core::BinaryInputStream& stream) final {
        const auto read = DataContainer::Create();
        const std::uint64_t size = read->InputData(stream);
        TakeOver(*GetValue(), *read);
        return size;
    }
    std::uint64_t DataToBinary(Core::BinaryOutputStream& stream) final {
        const auto lock = m_object.GetDataLock();
        WarnOfOmissions(m_object.GetValue());
        return m_object.GetValue().GetContent()->OutputData(stream, true);
    }
    std::shared_ptr<XMLContentHandler> GetXMLContentHandler(const XMLAttributes&) final {
        return std::make_shared<ContentXMLHandler>(
            [value = GetValue(), this](DataContainer& read) { TakeOver(*value, read); });
    }
    void DataToXML(std::ostream& stream, Core::XMLWriter& writer) final {
        const auto lock = m_object.GetDataLock();
        WarnOfOmissions(m_object.GetValue());
        m_object.GetValue().GetContent()->OutputData(stream, writer, true);
    }

private:
    std::shared_ptr<T> GetValue() { return std::static_pointer_cast<T>(m_object.GetData()); }

    /// Makes what was read the content of the value.
    virtual void TakeOver(T& value, DataContainer& read) const = 0;
    virtual void WarnOfOmissions(const T&) const {}

    DataOf<T>& m_object;
};

} // namespace Qor::Tivor
