#pragma once

#include <Tivor/DataObject.h>

#include <memory>
#include <string>

namespace Qor::Tivor::Tool {

/// A new object of a class of numbers, texts or times with the value that the text tells. Raises a `ToolError` for
/// other classes, and for a text that is no such value, exactly.
std::shared_ptr<DataObject> MakeFromText(const std::string& className, const std::string& text);
/// Gives the object that value; raises likewise, changing nothing.
void SetFromText(DataObject& object, const std::string& text);

} // namespace Qor::Tivor::Tool
