#include "BuiltInCreators.h"

#include <Tivor/DataObjectFactory.h>

#include <string_view>
#include <unordered_map>

namespace Qor::Tivor {

namespace {

// Rows of the classes whose headers carry the name, by name.
const std::unordered_multimap<std::string_view, std::size_t>& NamedRows() {
    static const auto* const rows = [] {
        auto* const byName = new std::unordered_multimap<std::string_view, std::size_t>;
        for (std::size_t i = 0; i < builtInTypeFacts.size(); ++i)
            if (builtInTypeFacts[i].header == EHeaderKind::nameCarrying)
                byName->emplace(builtInTypeFacts[i].className, i);
        return byName;
    }();
    return *rows;
}

constexpr std::size_t noRow = builtInTypeFacts.size();

std::size_t FindNamedRow(std::uint16_t code, std::string_view className) {
    const auto [first, last] = NamedRows().equal_range(className);
    for (auto candidate = first; candidate != last; ++candidate)
        if (builtInTypeFacts[candidate->second].id == code)
            return candidate->second;
    return noRow;
}

std::size_t FindRow(std::uint16_t code, const std::string& className) {
    if (const TypeFacts* const facts = FindTypeFacts(code))
        return static_cast<std::size_t>(facts - builtInTypeFacts.data());
    const std::size_t row = FindNamedRow(code, className);
    return row != noRow ? row : FindNamedRow(code, {}); // scalars, whose names are their own
}

} // namespace

DataObjectFactory::DataObjectFactory() = default;
DataObjectFactory::~DataObjectFactory() = default;

DataObjectFactory& DataObjectFactory::Instance() {
    static auto* const instance = new DataObjectFactory;
    return *instance;
}

std::shared_ptr<DataObject> DataObjectFactory::CreateBuiltInDataObject(ETypeID typeID, const std::string& className) {
    const auto code = WithoutFlag(static_cast<std::uint16_t>(typeID));
    if (typeID > 0xFF)
        return nullptr;
    const std::size_t row = FindRow(code, className);
    const BuiltInCreator create = row != noRow ? GetBuiltInCreators()[row] : nullptr;
    return create != nullptr ? create(builtInTypeFacts[row].id, className) : nullptr;
}

} // namespace Qor::Tivor
