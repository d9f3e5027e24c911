#include "../serialization/FramedWrite.h"
#include "../serialization/XMLAttributes.h"
#include "ContainerState.h"
#include "DataContainerXMLHandler.h"

#include <QorCore/LockSet.h>
#include <QorCore/Message.h>

#include <utility>

namespace Qor::Tivor {

/// Data block: the container's binary form (see `DataContainer`); in XML, the elements of its entries.
class DataContainerSerializer final : public BuiltInSerializerBase {
public:
    explicit DataContainerSerializer(Data<DataContainer>& object) : m_object(object) {}

    DataObject& GetDataObject() override { return m_object; }
    bool DataSizeIsConstant() const override { return false; }
    std::string GetXMLEncoding() override { return {}; }
    std::uint64_t GetDataSize_bytes() const override {
        if (FramedWrite::Current() == nullptr)
            return m_object.GetData()->GetDataSize_bytes();
        return ContainerAccess(*m_object.GetData()->m_state)->MeasureSize_bytes();
    }
    std::uint64_t DataFromBinary(std::uint64_t, Core::BinaryInputStream& stream) override {
        return m_object.GetData()->InputData(stream);
    }
    std::uint64_t DataToBinary(Core::BinaryOutputStream& stream) override {
        return m_object.GetData()->OutputData(stream, true);
    }
    std::shared_ptr<XMLContentHandler> GetXMLContentHandler(const XMLAttributes&) override {
        return std::make_shared<DataContainerXMLHandler>(m_object.GetData());
    }
    void DataToXML(std::ostream& stream, Core::XMLWriter& writer) override {
        m_object.GetData()->OutputData(stream, writer, true);
    }

private:
    Data<DataContainer>& m_object;
};

template class GenericWrapper<DataContainer>;
template class Data<DataContainer>;

std::string ValueTraits<DataContainer>::ToString(const DataContainer& value) {
    return Core::FormatText("DataContainer with %1% entries", {value.NumDataObjects()});
}

std::shared_ptr<Serializer> ValueTraits<DataContainer>::MakeSerializer(Data<DataContainer>& object) {
    return Details::MakePooled<eDATA_CONTAINER, EPooled::serializer, DataContainerSerializer>(object);
}

std::shared_ptr<Data<DataContainer>> ValueTraits<DataContainer>::MakeData(std::shared_ptr<DataContainer> container) {
    return Details::MakePooled<eDATA_CONTAINER, EPooled::object, DataContainerWrapper>(std::move(container));
}

std::shared_ptr<Data<DataContainer>> ValueTraits<DataContainer>::MakeData(const Data<DataContainer>& other) {
    return Details::MakePooled<eDATA_CONTAINER, EPooled::object, DataContainerWrapper>(other);
}

DataContainerWrapper::DataContainerWrapper(std::shared_ptr<DataContainer> container)
    : Data(container ? std::move(container) : DataContainer::Create()) {}

DataContainerWrapper::DataContainerWrapper(const Data<DataContainer>& other) : Data(other) {}

DataContainerWrapper::DataContainerWrapper(const DataContainerWrapper& other) : Data(other) {}

DataContainerWrapper::~DataContainerWrapper() = default;

bool DataContainerWrapper::IsLockable() const { return true; }

bool DataContainerWrapper::EnableDataLocking() { return true; }

void DataContainerWrapper::AcquireLocks(std::vector<std::shared_ptr<Core::Lock>>& locks) const {
    Core::LockSet::Acquire(locks, [&] {
        // Until the container is locked, the object may be given another one.
        std::shared_ptr<const DataContainer> locked;
        for (auto data = GetData(); data != locked; data = GetData()) {
            data->AcquireLocks(locks);
            locked = data;
        }
    });
}

std::shared_ptr<Core::Lock> DataContainerWrapper::GetDataLock() {
    for (;;) {
        const std::shared_ptr<ContainerState> state = GetState();
        auto lock = std::make_shared<Core::Lock>(state->GetSharedMutex());
        if (GetState() == state)
            return lock;
    }
}

std::shared_ptr<ContainerState> DataContainerWrapper::GetState() const { return GetData()->m_state; }

bool DataContainerWrapper::SetData(std::shared_ptr<DataContainer> container) {
    if (!container)
        Core::Error::RaiseError(
            Core::NullPointerError("A DataContainerWrapper needs a container; a null one was given"),
            QOR_CODE_CONTEXT("DataContainer"), "Qor.Tivor.DataContainerWrapper.SetData");
    {
        const auto lock = GetDataLock();
        const std::shared_ptr<ContainerState> next = container->m_state;
        ContainerState::ExchangeHeld(*this, GetState(), next, [&] { container = ExchangeData(std::move(container)); });
        NoteChange();
    }
    ReportChange(EDataChange::reference);
    return true;
}

} // namespace Qor::Tivor
