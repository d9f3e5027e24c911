#include "ValueOperations.h"

namespace Qor::Tivor::Details {

std::string ListText(std::size_t count, const std::vector<std::string>& firstTexts) {
    std::string list = "[";
    for (const std::string& text : firstTexts) {
        list += text;
        list += ", ";
    }
    if (count > firstTexts.size())
        list += "and " + std::to_string(count - firstTexts.size()) + " more";
    else if (count > 0)
        list.resize(list.size() - 2);
    return list + ']';
}

} // namespace Qor::Tivor::Details
