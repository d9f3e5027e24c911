#include "Properties.h"

#include "Display.h"
#include "ScalarText.h"

#include <QorCore/Message.h>
#include <Tivor/Data1D.h>
#include <Tivor/Data2D.h>

namespace Qor::Tivor::Tool {

namespace {

template <class T>
std::shared_ptr<PropertyContainer> PropertiesIn(DataObject& object) {
    auto* const wrapper = dynamic_cast<GenericWrapper<T>*>(&object);
    return wrapper != nullptr ? wrapper->GetData() : nullptr;
}

/// Null when the values have no names.
std::shared_ptr<DataContainer> NamedValues(const PropertyContainer& properties, const std::string& name) {
    const auto attribute = std::dynamic_pointer_cast<GenericWrapper<DataContainer>>(
        properties.GetAttributeByPropertyName(name, sSELECTABLE_PROPERTY_VALUES));
    return attribute ? attribute->GetData() : nullptr;
}

std::string ListNames(const DataContainer& values) {
    std::string list;
    for (const auto& [text, value] : values)
        list += (list.empty() ? "" : ", ") + Show(text);
    return list;
}

/// The text itself where it names a value.
std::shared_ptr<DataObject> MakeOffered(const DataObject& current, const DataContainer* named,
                                        const std::string& text) {
    if (named != nullptr && named->Exists(text))
        return MakeData(text);
    auto value = const_cast<DataObject&>(current).Clone(); // which changes nothing
    SetFromText(*value, text);
    return value;
}

} // namespace

std::shared_ptr<PropertyContainer> PropertiesOf(DataObject& object) {
    if (auto surface = PropertiesIn<Data2D>(object))
        return surface;
    if (auto profile = PropertiesIn<Data1D>(object))
        return profile;
    return PropertiesIn<PropertyContainer>(object);
}

std::optional<std::string> FindNameOfValue(const PropertyContainer& properties, const std::string& name) {
    const auto values = NamedValues(properties, name);
    if (!values)
        return std::nullopt;
    const std::string text = properties.GetPropertyText(name);
    return values->Exists(text) ? std::optional(text) : std::nullopt;
}

void SetPropertyFromText(PropertyContainer& properties, const std::string& name, const std::string& text,
                         const std::string& path) {
    const auto current = properties.GetPropertyByName(name);
    if (!properties.IsWritable(name) || !current)
        Fail(path + ": expected a property that can be set, found one that can only be read");
    const auto named = NamedValues(properties, name);
    bool isTaken = false;
    try {
        isTaken = properties.SetProperty(name, MakeOffered(*current, named.get(), text));
    } catch (const Core::Error& error) {
        if (named)
            Fail(Core::FormatText("%1%: expected one of %2%, or the number of one, found %3%",
                                  {path, ListNames(*named), Show(text)}));
        Fail(path + ": " + error.GetText());
    }
    if (!isTaken)
        Fail(Core::FormatText("%1%: expected a value that the measurement allows, found %2%", {path, Show(text)}));
}

} // namespace Qor::Tivor::Tool
