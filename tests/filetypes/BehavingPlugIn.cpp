// A plug-in whose file name says what it does: "<any>-<behaviour>.dll" registers a type named as the file without the
// ending, and then behaves. Copies of the file are libraries of their own.

#include "MarkedFile.h"

#include <QorCore/Log.h>
#include <QorCore/PathName.h>
#include <QorCore/Utf8.h>
#include <Tivor/DataFileTypeManager.h>
#include <Tivor/PlugIn.h>

#include <map>
#include <stdexcept>

#if __has_include(<dlfcn.h>)
#include <dlfcn.h>
#else
#include <windows.h>
#endif

using namespace Qor;
using namespace Qor::Tivor;

namespace {

Core::PathName OwnFile() {
#if __has_include(<dlfcn.h>)
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&OwnFile), &info) != 0)
        return Core::PathName(info.dli_fname);
    return Core::PathName("unknown");
#else
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, reinterpret_cast<const wchar_t*>(&OwnFile), &module);
    std::wstring name(1000, L'\0');
    name.resize(GetModuleFileNameW(module, name.data(), 1000));
    return Core::PathName(Core::Utf8FromWide(name));
#endif
}

void Require(bool condition, const char* text) {
    if (!condition)
        throw std::logic_error(text);
}

void Register(DataFileTypeManager& manager, const std::string& fileType) {
    manager.SetFactory(std::make_shared<Testing::MarkedFileFactory>(fileType, fileType, std::vector{fileType}));
}

void OpenAFile() {
    const std::string fileName = OwnFile().ToString() + ".opened";
    DataFile::Open(fileName, DataFile::eREAD_WRITE, DataFile::eCREATE_ALWAYS, "QOR Binary Data File", nullptr)->Flush();
    const auto file = DataFile::Open(fileName, DataFile::eREAD_ONLY, DataFile::eOPEN_EXISTING, "", nullptr);
    Require(file && file->GetFileType() == "QOR Binary Data File", "nothing was opened");
}

void FindOneself(DataFileTypeManager& manager, const std::string& fileType) {
    std::unordered_map<std::string, std::string> fileTypes;
    DataFile::EnumFileTypes(fileTypes);
    Require(fileTypes.count(fileType) == 1, "the own type is missing");
    Require(&DataFileTypeManager::Instance() == &manager, "there is another manager");
}

void Behave(DataFileTypeManager& manager, const std::string& fileType, const std::string& behaviour) {
    const std::map<std::string, std::function<void()>> behaviours = {
        {"plain", [] {}},
        {"error",
         [] { Core::Error::RaiseError(Core::LogicError("raised"), QOR_CODE_CONTEXT("PlugIn"), "Test.PlugIn"); }},
        {"exception", [] { throw std::runtime_error("thrown"); }},
        {"int", [] { throw 7; }},
        {"null", [&] { manager.SetFactory(nullptr); }},
        {"twice", [&] { Register(manager, fileType); }},
        {"open", OpenAFile},
        {"enumerate", [&] { FindOneself(manager, fileType); }},
        {"load", [] { DataFile::LoadPlugIns(OwnFile().GetDirectory().ToString()); }},
        {"configure", [&] { manager.ReadConfiguration((OwnFile().GetDirectory() / "own.xml").ToString()); }},
    };
    behaviours.at(behaviour)();
}

} // namespace

TIVOR_REGISTER_DATA_FILE_TYPES(manager) {
    const std::string fileName = OwnFile().GetFileName();
    const std::string fileType = fileName.substr(0, fileName.rfind('.'));
    Core::Log("Test.PlugIn", "entered " + fileType);
    Register(manager, fileType);
    Behave(manager, fileType, fileType.substr(fileType.find('-') + 1));
}
