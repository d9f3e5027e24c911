#include <QorCore/MemoryStreams.h>
#include <QorCore/Message.h>
#include <Tivor/ScalarData.h>

#include <limits>
#include <map>
#include <mutex>
#include <typeindex>

namespace Qor::Tivor {

namespace {

struct Registry {
    std::mutex mutex;
    std::map<std::type_index, std::string> names;
    std::map<std::string, std::type_index> types;
};

Registry& GetRegistry() {
    static auto* const registry = new Registry;
    return *registry;
}

} // namespace

void ScalarData::RegisterType(const std::type_info& type, const std::string& className) {
    Registry& registry = GetRegistry();
    const std::lock_guard guard(registry.mutex);
    const auto name = registry.names.find(type);
    const auto owner = registry.types.find(className);
    const bool isKnown = name != registry.names.end() && name->second == className;
    if (isKnown)
        return;
    if (className.empty() || name != registry.names.end() || owner != registry.types.end())
        Core::Error::RaiseError(
            Core::LogicError(
                Core::FormatText("A type cannot be registered under the class name \"%1%\": %2%",
                                 {className, className.empty()              ? std::string("a name is needed")
                                             : name != registry.names.end() ? "it has the name \"" + name->second + '"'
                                                                            : "that is the name of another type"})),
            QOR_CODE_CONTEXT("DataObject"), "Qor.Tivor.ScalarData.RegisterType");
    const auto added = registry.names.emplace(type, className).first;
    try {
        registry.types.emplace(className, type);
    } catch (...) {
        registry.names.erase(added);
        throw;
    }
}

std::string ScalarData::GetRegisteredName(const std::type_info& type) {
    Registry& registry = GetRegistry();
    const std::lock_guard guard(registry.mutex);
    const auto name = registry.names.find(type);
    return name != registry.names.end() ? name->second : std::string();
}

namespace Details {

std::shared_ptr<ScalarData> MakeEnumScalar(const std::type_info& type, bool isSigned, std::size_t width,
                                           std::int64_t number) {
    const std::string className = ScalarData::GetRegisteredName(type);
    if (className.empty())
        Core::Error::RaiseError(
            Core::LogicError("An enumeration needs a class name before its values become data objects"),
            QOR_CODE_CONTEXT("DataObject"), "Qor.Tivor.ScalarData");
    auto scalar = std::make_shared<ScalarData>(className, isSigned ? eSIGNED_INTEGRAL_TYPE : eUNSIGNED_INTEGRAL_TYPE);
    Core::MemoryInputStream bytes(&number, width); // little-endian: the low bytes come first
    ScalarData::ScalarSerializer(*scalar).DataFromBinary(width, bytes);
    return scalar;
}

// Compilers differ in the sign that they give to an enumeration, so the stored kind decides how the number is read.
std::int64_t GetEnumNumber(const ScalarData& scalar, bool isSigned, std::size_t width) {
    const auto bits = static_cast<int>(8 * width) - (isSigned ? 1 : 0);
    const std::uint64_t highest = std::numeric_limits<std::uint64_t>::max() >> (64 - bits);
    const bool isStoredUnsigned = scalar.GetTypeID() == eUNSIGNED_INTEGRAL_TYPE;
    const std::int64_t number = isStoredUnsigned ? static_cast<std::int64_t>(scalar.GetValue<std::uint64_t>())
                                                 : scalar.GetValue<std::int64_t>();
    const bool isNegative = !isStoredUnsigned && number < 0;
    const bool fits = isNegative ? isSigned && static_cast<std::uint64_t>(-(number + 1)) <= highest
                                 : static_cast<std::uint64_t>(number) <= highest;
    if (!fits)
        Core::Error::RaiseError(
            Core::OutOfRangeError(Core::FormatText("%1% is no number of the enumeration %2%, which has %3% bytes",
                                                   {scalar.ToString(), scalar.GetTypeName(), width})),
            QOR_CODE_CONTEXT("DataObject"), "Qor.Tivor.ScalarData");
    return number;
}

} // namespace Details

} // namespace Qor::Tivor
