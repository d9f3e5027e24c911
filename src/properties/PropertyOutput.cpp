#include "PropertyUpdate.h"

#include <QorCore/Message.h>

#include <algorithm>

namespace Qor::Tivor {

OmittingSubProperties::~OmittingSubProperties() = default;
OmittingProperty::~OmittingProperty() = default;

template class GenericWrapper<PropertyContainer>;

namespace {

bool IsSubProperties(const std::shared_ptr<DataObject>& value) {
    return dynamic_cast<const GenericWrapper<PropertyContainer>*>(value.get()) != nullptr;
}

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

// Without the lock: who writes holds that of the property data, which comes after it.
void PropertyContainer::WarnOfOmissions() const {
    const auto warn = [](auto warning) {
        Core::Warning::RaiseWarning(std::move(warning), QOR_CODE_CONTEXT("PropertyContainer"),
                                    "Qor.Tivor.PropertyContainer.OutputProperties");
    };
    for (const auto& [name, value] : *m_propertyData)
        if (IsSubProperties(value))
            warn(OmittingSubProperties(Core::FormatText(
                "The property <%1%> stands for the properties of another object, and is left out", {name})));
        else if (!value->GetSerializer())
            warn(OmittingProperty(
                Core::FormatText("The value of the property <%1%>, of type <%2%>, cannot be stored, and is left out",
                                 {name, value->GetTypeName()})));
}

void PropertyContainer::OutputProperties(std::ostream& stream, Core::XMLWriter& writer) const {
    const Lock lock(m_mutex);
    WarnOfOmissions();
    GetPropertyData(Unconst(*this))->OutputData(stream, writer, true);
}

std::uint64_t PropertyContainer::OutputProperties(Core::BinaryOutputStream& stream) const {
    const Lock lock(m_mutex);
    if (m_propertyData->IsEmpty())
        return 0;
    WarnOfOmissions();
    return GetPropertyData(Unconst(*this))->OutputData(stream, true);
}

void PropertyContainer::Output(std::ostream& stream, Core::XMLWriter& writer, const std::string& name) const {
    const Lock lock(m_mutex);
    if (m_propertyData->IsEmpty())
        return;
    WarnOfOmissions();
    GetPropertyData(Unconst(*this))->Output(stream, writer, name);
}

bool PropertyContainer::IsSubPropertyContainer(const std::string& name) const {
    const Lock lock(m_mutex);
    return IsSubProperties(FindValue(name));
}

Core::QorConstPtr<PropertyContainer> PropertyContainer::GetSubProperties(const std::string& name) const {
    return Unconst(*this).GetSubProperties(name);
}

std::shared_ptr<PropertyContainer> PropertyContainer::GetSubProperties(const std::string& name) {
    const Lock lock(m_mutex);
    const auto wrapper = std::dynamic_pointer_cast<GenericWrapper<PropertyContainer>>(FindValue(name));
    return wrapper ? wrapper->GetData() : nullptr;
}

// All objects that are shown here, directly or by those that are shown.
void PropertyContainer::CollectShown(std::vector<std::shared_ptr<PropertyContainer>>& shown) const {
    std::vector<std::shared_ptr<PropertyContainer>> mine;
    {
        const Lock lock(m_mutex);
        for (const auto& entry : *m_propertyData)
            if (auto sub = Unconst(*this).GetSubProperties(entry.key))
                mine.push_back(std::move(sub));
    }
    for (auto& sub : mine) {
        if (sub.get() == this || std::find(shown.begin(), shown.end(), sub) != shown.end())
            continue;
        shown.push_back(sub);
        sub->CollectShown(shown);
    }
}

void PropertyContainer::RequireDistinct(const PropertyContainer* other, const std::string& name) const {
    const auto raise = [](auto error) {
        Core::Error::RaiseError(std::move(error), QOR_CODE_CONTEXT("PropertyContainer"),
                                "Qor.Tivor.PropertyContainer.Aggregate");
    };
    if (other == nullptr)
        raise(Core::NullPointerError("A container is needed; p_spSubContainer is null"));
    std::vector<std::shared_ptr<PropertyContainer>> shown;
    other->CollectShown(shown);
    const auto isThis = [this](const auto& one) { return one.get() == this; };
    if (other == this || std::any_of(shown.begin(), shown.end(), isThis))
        raise(LogicError(Core::FormatText(
            "Expected an object that does not show this one for the property <%1%>, found one that does", {name})));
}

void PropertyContainer::Aggregate(std::shared_ptr<PropertyContainer> subContainer, const std::string& name,
                                  const std::string& displayName, const std::string& category,
                                  const std::string& description) {
    const Update update(*this);
    RequireDistinct(subContainer.get(), name);
    AddProperty(name, GenericWrapper<PropertyContainer>::Create(std::move(subContainer)), eREADABLE);
    PropertyAttributes& attributes = *FindAttributes(name);
    attributes.PutValue(sPROPERTY_DISPLAY_NAME, displayName);
    attributes.PutValue(sPROPERTY_CATEGORY, category.empty() ? std::string("External") : category);
    attributes.PutValue(sPROPERTY_DESCRIPTION,
                        description.empty() ? std::string("Properties for an external object aggregated by this object")
                                            : description);
}

} // namespace Qor::Tivor
