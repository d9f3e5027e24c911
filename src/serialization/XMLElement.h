#pragma once

#include <Tivor/SerializationManager.h>

namespace Qor::Tivor {

/// `SerializationManager::OutputXMLHeader` for an object whose serializer is at hand.
void OutputXMLHeader(std::ostream& stream, Core::XMLWriter& writer, DataObject& object, Serializer& serializer,
                     const std::string& dataName);

/// `SerializationManager::OutputXML`, but an object without a serializer writes nothing, and the answer is false.
bool OutputXMLIfSerializable(std::ostream& stream, Core::XMLWriter& writer, const std::string& dataName,
                             DataObject& object);

} // namespace Qor::Tivor
