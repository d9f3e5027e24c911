#pragma once

#include <Tivor/SerializationManager.h>

namespace Qor::Tivor {

/// The object that a header describes, within the limits that the running thread's reader sets for plug-ins; an empty
/// pointer, with the reason, when it is not to be had.
std::shared_ptr<DataObject> CreateObject(const DataObjectHeader& header, const std::string& dataName,
                                         std::string& reason);

/// The warning that such an object was not to be had.
void WarnOfCreationFailure(const DataObjectHeader& header, const std::string& dataName, const std::string& reason,
                           const char* category);

[[noreturn]] void RaiseNullSerializer(const std::string& typeName, const char* category);

} // namespace Qor::Tivor
