#pragma once

#include <Tivor/TypeFacts.h>

#include <array>
#include <memory>
#include <string>

namespace Qor::Tivor {

class DataObject;

using BuiltInCreator = std::shared_ptr<DataObject> (*)(ETypeID id, const std::string& className);

/// The creator of each row of `builtInTypeFacts`; null where the class is still to come.
const std::array<BuiltInCreator, builtInTypeFacts.size()>& GetBuiltInCreators();

} // namespace Qor::Tivor
