#include "PropertyUpdate.h"

#include <QorCore/Message.h>

namespace Qor::Tivor {

OmittingSubProperties::~OmittingSubProperties() = default;

template class GenericWrapper<PropertyContainer>;

namespace {

// Output only reads.
PropertyContainer& Unconst(const PropertyContainer& container) { return const_cast<PropertyContainer&>(container); }

} // namespace

boost::logic::tribool ValueTraits<PropertyContainer>::Equal(const PropertyContainer& left,
                                                            const PropertyContainer& right) {
    return left.HoldsSameProperties(right);
}

std::string ValueTraits<PropertyContainer>::ToString(const PropertyContainer& value) {
    return Core::FormatText("PropertyContainer with %1% properties", {value.NumProperties()});
}

bool PropertyContainer::HoldsSameProperties(const PropertyContainer& other) const {
    const std::shared_ptr<DataContainer> mine = GetPropertyData(Unconst(*this));
    const std::shared_ptr<DataContainer> theirs = GetPropertyData(Unconst(other));
    return mine == theirs || *mine == *theirs;
}

void PropertyContainer::WarnOfSubProperties() const {
    for (const auto& entry : *m_propertyData)
        if (IsSubPropertyContainer(entry.key))
            Core::Warning::RaiseWarning(
                OmittingSubProperties(Core::FormatText(
                    "The property <%1%> stands for the properties of another object, and is left out", {entry.key})),
                QOR_CODE_CONTEXT("PropertyContainer"), "Qor.Tivor.PropertyContainer.OutputProperties");
}

void PropertyContainer::OutputProperties(std::ostream& stream, Core::XMLWriter& writer) const {
    const Lock lock(m_mutex);
    WarnOfSubProperties();
    GetPropertyData(Unconst(*this))->OutputData(stream, writer, true);
}

std::uint64_t PropertyContainer::OutputProperties(Core::BinaryOutputStream& stream) const {
    const Lock lock(m_mutex);
    if (m_propertyData->IsEmpty())
        return 0;
    WarnOfSubProperties();
    return GetPropertyData(Unconst(*this))->OutputData(stream, true);
}

void PropertyContainer::Output(std::ostream& stream, Core::XMLWriter& writer, const std::string& name) const {
    const Lock lock(m_mutex);
    if (m_propertyData->IsEmpty())
        return;
    WarnOfSubProperties();
    GetPropertyData(Unconst(*this))->Output(stream, writer, name);
}

bool PropertyContainer::IsSubPropertyContainer(const std::string& name) const {
    const Lock lock(m_mutex);
    return std::dynamic_pointer_cast<GenericWrapper<PropertyContainer>>(FindValue(name)) != nullptr;
}

Core::QorConstPtr<PropertyContainer> PropertyContainer::GetSubProperties(const std::string& name) const {
    return Unconst(*this).GetSubProperties(name);
}

std::shared_ptr<PropertyContainer> PropertyContainer::GetSubProperties(const std::string& name) {
    const Lock lock(m_mutex);
    const auto wrapper = std::dynamic_pointer_cast<GenericWrapper<PropertyContainer>>(FindValue(name));
    return wrapper ? wrapper->GetData() : nullptr;
}

void PropertyContainer::Aggregate(std::shared_ptr<PropertyContainer> subContainer, const std::string& name,
                                  const std::string& displayName, const std::string& category,
                                  const std::string& description) {
    const Update update(*this);
    AddProperty(name, GenericWrapper<PropertyContainer>::Create(std::move(subContainer)), eREADABLE);
    PropertyAttributes& attributes = MakeAttributes(name);
    attributes.PutValue(sPROPERTY_DISPLAY_NAME, displayName);
    attributes.PutValue(sPROPERTY_CATEGORY, category.empty() ? std::string("External") : category);
    attributes.PutValue(sPROPERTY_DESCRIPTION,
                        description.empty() ? std::string("Properties for an external object aggregated by this object")
                                            : description);
}

} // namespace Qor::Tivor
