#include "ObjectCreation.h"

#include "ReadOperation.h"

#include <QorCore/Message.h>
#include <Tivor/DataObjectFactory.h>

#include <algorithm>

namespace Qor::Tivor {

DataObjectCreationFailed::~DataObjectCreationFailed() = default;
KeepingUnread::~KeepingUnread() = default;
NullSerializer::~NullSerializer() = default;

namespace {

bool IsBareName(const std::string& module) {
    static constexpr std::size_t longest = 255;
    return module.size() <= longest && std::all_of(module.begin(), module.end(), [](char c) {
               return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' ||
                      c == '_' || c == '-';
           });
}

bool MayBeLoaded(const std::string& module) {
    const Core::EModuleNames allowed = Core::Context::Current().limits.moduleNames;
    return allowed == Core::EModuleNames::any || (allowed == Core::EModuleNames::bare && IsBareName(module));
}

std::shared_ptr<DataObject> KeepUnread(const DataObjectHeader& header, const std::string& dataName,
                                       const std::string& reason) {
    Core::Warning::RaiseWarning(
        KeepingUnread(Core::FormatText("The data named %1% of class %2% from module %3% is kept unread: %4%",
                                       {dataName, header.typeName, header.module, reason})),
        QOR_CODE_CONTEXT("SerializationManager"), "Qor.Tivor.SerializationManager");
    return DataObjectFactory::Instance().CreateUnboundDataObject(header.typeName, header.version, header.module,
                                                                 header.typeCode != WithoutFlag(header.typeCode));
}

// False, with the reason, when this read has tried the module in vain, or so many that it tries no more.
bool MayTry(const std::string& module, std::string& reason) {
    const ReadOperation& reading = ReadOperation::Current();
    if (const std::string* const former = reading.FindFailure(module)) {
        reason = *former;
        return false;
    }
    const std::uint32_t limit = Core::Context::Current().limits.failingModules;
    if (reading.CountFailures() < limit)
        return true;
    reason = Core::FormatText("%1% modules could not be loaded, and no more are tried", {limit});
    return false;
}

std::shared_ptr<DataObject> CreateFromPlugIn(const DataObjectHeader& header, std::string& reason) {
    DataObjectFactory& factory = DataObjectFactory::Instance();
    if (!factory.IsLoaded(header.module) && !MayTry(header.module, reason))
        return nullptr;
    auto object = factory.CreateExternalDataObject(header.typeName, header.version, header.module, false, reason);
    if (!object && !factory.IsLoaded(header.module))
        ReadOperation::Current().KeepFailure(header.module, reason);
    return object;
}

} // namespace

std::shared_ptr<DataObject> CreateObject(const DataObjectHeader& header, const std::string& dataName,
                                         std::string& reason) {
    DataObjectFactory& factory = DataObjectFactory::Instance();
    const std::uint16_t code = WithoutFlag(header.typeCode);
    if (code != eNO_TYPE) {
        auto object = factory.CreateBuiltInDataObject(static_cast<ETypeID>(header.typeCode), header.typeName);
        if (!object)
            reason = Core::FormatText("type identifier %1% names no built-in class", {code});
        return object;
    }
    if (!DataObjectFactory::NamesPlugIn(header.module))
        return factory.CreateUnboundDataObject(header.typeName, header.version, header.module, header.typeCode != code);
    if (!MayBeLoaded(header.module))
        return KeepUnread(header, dataName, "the reader does not load such a module");
    auto object = CreateFromPlugIn(header, reason);
    return object || !Core::Context::Current().limits.keepsUnavailable ? object : KeepUnread(header, dataName, reason);
}

void WarnOfCreationFailure(const DataObjectHeader& header, const std::string& dataName, const std::string& reason,
                           const char* category) {
    Core::Warning::RaiseWarning(
        DataObjectCreationFailed(Core::FormatText(
            "Attempt to deserialize data %1% failed to create the needed DataObject ( %2%, version %3%, from "
            "module %4%) for the following reason: \r\n%5%",
            {"named " + dataName, header.typeName, header.version, header.module, reason})),
        QOR_CODE_CONTEXT("SerializationManager"), category);
}

void RaiseNullSerializer(const std::string& typeName, const char* category) {
    Core::Error::RaiseError(
        NullSerializer(Core::FormatText("No serializer for data with class name = %1%", {typeName})),
        QOR_CODE_CONTEXT("SerializationManager"), category);
}

} // namespace Qor::Tivor
