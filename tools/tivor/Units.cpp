#include "Units.h"

#include <cstring>

namespace Qor::Tivor::Tool {

namespace {

const char* const microSigns[] = {"\xC2\xB5", "\xCE\xBC"}; // of its own, and the Greek letter

} // namespace

Core::QorConstPtr<Core::UnitDescriptor> FindUnit(std::string text) {
    for (const char* const sign : microSigns)
        if (text.starts_with(sign))
            text.replace(0, std::strlen(sign), "u");
    for (const auto& unit : Core::UnitDictionary::GetStandardUnits())
        if (unit->GetSymbol() == text)
            return unit;
    return Core::UnitDictionary::Instance().Find(text);
}

} // namespace Qor::Tivor::Tool
