#pragma once

#include <Tivor/DataObject.h>
#include <Tivor/Export.h>

#include <memory>
#include <string>

// What a plug-in library exports. Put one of these into a source of the library, in the global namespace.

#if defined(__clang__)
// A C++ type in a function with C linkage: both sides are C++, only the name is C.
#define TIVOR_C_LINKAGE_BEGIN                                                                                          \
    _Pragma("clang diagnostic push") _Pragma("clang diagnostic ignored \"-Wreturn-type-c-linkage\"")
#define TIVOR_C_LINKAGE_END _Pragma("clang diagnostic pop")
#else
#define TIVOR_C_LINKAGE_BEGIN
#define TIVOR_C_LINKAGE_END
#endif

/// Begins the function that makes the data objects of a plug-in library; its body follows:
///
///     TIVOR_DATA_OBJECT_FACTORY(className, version) {
///         if (className == "Vendor.Spectrum")
///             return std::make_shared<Qor::Tivor::Data<Spectrum>>(Spectrum()); // one without a value cannot be read
///         return nullptr; // not one of ours
///     }
///
/// Both parameters are `const std::string&` as the header of the stored object had them; the object's serializer is not
/// told the version, so an object that reads several knows its own. What the function raises counts as a class that it
/// does not know, with that reason. It may be called by any number of threads at once.
#define TIVOR_DATA_OBJECT_FACTORY(className, version)                                                                  \
    static std::shared_ptr<::Qor::Tivor::DataObject> TivorCreateDataObject(const std::string&, const std::string&);    \
    TIVOR_C_LINKAGE_BEGIN                                                                                              \
    extern "C" TIVOR_PLUG_IN_EXPORT std::shared_ptr<::Qor::Tivor::DataObject> DllDataObjectFactory(                    \
        const std::string& tivorClassName, const std::string& tivorVersion) {                                          \
        return TivorCreateDataObject(tivorClassName, tivorVersion);                                                    \
    }                                                                                                                  \
    TIVOR_C_LINKAGE_END                                                                                                \
    static std::shared_ptr<::Qor::Tivor::DataObject> TivorCreateDataObject(                                            \
        [[maybe_unused]] const std::string& className, [[maybe_unused]] const std::string& version)

namespace Qor::Tivor {
class DataFileTypeManager;
}

/// Begins the function that registers the data-file types of a plug-in library; its body follows:
///
///     TIVOR_REGISTER_DATA_FILE_TYPES(manager) {
///         manager.SetFactory(std::make_shared<ScanDataFileFactory>());
///     }
///
/// The parameter is a `DataFileTypeManager&`. The function is called once, by the thread that loads the library.
#define TIVOR_REGISTER_DATA_FILE_TYPES(manager)                                                                        \
    static void TivorRegisterDataFileTypes(::Qor::Tivor::DataFileTypeManager&);                                        \
    extern "C" TIVOR_PLUG_IN_EXPORT void RegisterDataFileTypes(::Qor::Tivor::DataFileTypeManager& tivorManager) {      \
        TivorRegisterDataFileTypes(tivorManager);                                                                      \
    }                                                                                                                  \
    static void TivorRegisterDataFileTypes([[maybe_unused]] ::Qor::Tivor::DataFileTypeManager& manager)
