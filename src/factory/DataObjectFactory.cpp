#include "BuiltInCreators.h"
#include "PlugIns.h"

#include <QorCore/Message.h>
#include <QorCore/Modules.h>
#include <Tivor/DataObjectFactory.h>
#include <Tivor/UnboundDataObject.h>

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

// Where the code tells the kind, and only the element type is not known, the data is kept.
std::shared_ptr<DataObject> CreateUnboundCollection(std::uint16_t code, const std::string& className, bool flag) {
    if (code == eSCALAR_ARRAY)
        return std::make_shared<UnboundScalarArray>(className, "*", flag);
    if (code == eSCALAR_CONTAINER)
        return std::make_shared<UnboundScalarContainer>(className, "*", flag);
    return nullptr;
}

} // namespace

DataObjectFactory::DataObjectFactory() : m_plugIns(std::make_unique<PlugIns>()) {}
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
    if (row == noRow)
        return CreateUnboundCollection(code, className, code != typeID);
    const BuiltInCreator create = GetBuiltInCreators()[row];
    return create != nullptr ? create(builtInTypeFacts[row].id, className) : nullptr;
}

bool DataObjectFactory::NamesPlugIn(const std::string& module) { return module.ends_with(".dll"); }

std::shared_ptr<DataObject> DataObjectFactory::CreateExternalDataObject(const std::string& className,
                                                                        const std::string& version,
                                                                        const std::string& module, bool flag) {
    std::string failure;
    return CreateExternalDataObject(className, version, module, flag, failure);
}

std::shared_ptr<DataObject> DataObjectFactory::CreateExternalDataObject(const std::string& className,
                                                                        const std::string& version,
                                                                        const std::string& module, bool flag,
                                                                        std::string& failure) {
    return NamesPlugIn(module) ? CreateFromPlugIn(className, version, module, failure)
                               : CreateUnboundDataObject(className, version, module, flag);
}

std::shared_ptr<DataObject> DataObjectFactory::CreateUnboundDataObject(const std::string& className,
                                                                       const std::string& version,
                                                                       const std::string& module, bool flag) {
    auto object = std::make_shared<UnboundData>(className, module, flag, module == "?[]");
    object->SetVersion(version);
    return object;
}

bool DataObjectFactory::IsLoaded(const std::string& module) const { return m_plugIns->IsLoaded(module); }

std::string DataObjectFactory::GetLastError() { return m_plugIns->GetLastError(); }

std::shared_ptr<DataObject> DataObjectFactory::CreateFromDll(const std::string& className, const std::string& version,
                                                             const std::string& module) {
    std::string failure;
    return CreateFromPlugIn(className, version, module, failure);
}

std::string DataObjectFactory::GetWindowsError() { return Core::GetModuleError(); }

std::shared_ptr<DataObject> DataObjectFactory::CreateFromPlugIn(const std::string& className,
                                                                const std::string& version, const std::string& module,
                                                                std::string& failure) {
    const auto create = m_plugIns->Find(
        module, [this] { return GetWindowsError(); }, failure);
    if (create == nullptr)
        return nullptr;
    const auto wrap = [&module](const char* what) {
        return Core::FormatText("The data object factory of %1% failed with the error: %2%", {module, what});
    };
    try {
        if (std::shared_ptr<DataObject> object = create(className, version))
            return object;
        failure = Core::FormatText("The data object factory of %1% knows no class %2% of version %3%",
                                   {module, className, version});
    } catch (const std::exception& error) {
        failure = wrap(error.what());
    } catch (...) {
        failure = wrap("an exception of unknown type");
    }
    m_plugIns->KeepError(failure);
    return nullptr;
}

} // namespace Qor::Tivor
