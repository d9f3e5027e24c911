#pragma once

#include <QorCore/UnitDictionary.h>

#include <string>

namespace Qor::Tivor::Tool {

/// A unit by its name or symbol, with any sign for micro; an empty pointer when there is none.
Core::QorConstPtr<Core::UnitDescriptor> FindUnit(std::string text);

} // namespace Qor::Tivor::Tool
