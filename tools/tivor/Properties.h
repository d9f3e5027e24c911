#pragma once

#include <Tivor/PropertyContainer.h>

#include <memory>
#include <optional>
#include <string>

namespace Qor::Tivor::Tool {

/// The properties of a measured array, or of whatever else has some; null for other objects.
std::shared_ptr<PropertyContainer> PropertiesOf(DataObject& object);

/// The text that names the value of a property, where it has one of values that have names.
std::optional<std::string> FindNameOfValue(const PropertyContainer& properties, const std::string& name);

/// Gives a property the value that the text tells: a name, where its values have some, or what `SetFromText` takes.
/// `path` is that of the property. Raises a `ToolError` that says what was expected, and then changes nothing.
void SetPropertyFromText(PropertyContainer& properties, const std::string& name, const std::string& text,
                         const std::string& path);

} // namespace Qor::Tivor::Tool
