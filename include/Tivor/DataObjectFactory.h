#pragma once

#include <Tivor/DataObject.h>

#include <memory>
#include <string>

namespace Qor::Tivor {

/// Turns the description in a header into a new, empty data object that a serializer can fill: one of this library's
/// classes, one that a plug-in library supplies, or, for a class that nobody here knows, an `UnboundData` that keeps
/// the data as it is.
///
/// A plug-in library exports the C function "DllDataObjectFactory" (`PlugIn.h`), which takes class name and version and
/// returns an object, or an empty pointer for a class that it does not know. A library is loaded when it is first
/// named, and never unloaded.
///
/// Thread rule: may be used by any number of threads. Plug-ins are called with no lock of the library held; while one
/// is loaded, which runs its initialisation, other threads that need plug-ins wait.
class TIVOR_API DataObjectFactory {
public:
    DataObjectFactory(const DataObjectFactory&) = delete;
    DataObjectFactory& operator=(const DataObjectFactory&) = delete;

    static DataObjectFactory& Instance();

    /// The built-in class that the identifier denotes, bit 7 aside; the class name decides for identifiers that stand
    /// for several classes, and names a scalar. Scalar arrays and containers of unknown class names are kept unbound
    /// (`UnboundScalarArray`, `UnboundScalarContainer`), with bit 7 as their flag. An empty pointer for what names no
    /// built-in class.
    std::shared_ptr<DataObject> CreateBuiltInDataObject(ETypeID typeID, const std::string& className);

    /// An object of a class from outside the library. The module decides: ".dll" at its end (in lower case) asks that
    /// plug-in library, and the pointer is empty when it fails, which `GetLastError` explains; any other module gives
    /// an `UnboundData` with that flag, which for "?[]" is marked as an array. Raises nothing that a plug-in raises.
    std::shared_ptr<DataObject> CreateExternalDataObject(const std::string& className, const std::string& version,
                                                         const std::string& module, bool flag);
    /// The same; says why the pointer is empty, whatever other threads do.
    std::shared_ptr<DataObject> CreateExternalDataObject(const std::string& className, const std::string& version,
                                                         const std::string& module, bool flag, std::string& failure);
    /// An object that keeps its data as it is, whatever the module.
    std::shared_ptr<DataObject> CreateUnboundDataObject(const std::string& className, const std::string& version,
                                                        const std::string& module, bool flag);

    /// Whether a module name asks for a plug-in library.
    static bool NamesPlugIn(const std::string& module);
    /// Whether the plug-in library was loaded under this name, and has the entry point.
    bool IsLoaded(const std::string& module) const;

    /// Why the last plug-in failed, on whatever thread.
    std::string GetLastError();

protected:
    std::shared_ptr<DataObject> CreateFromDll(const std::string& className, const std::string& version,
                                              const std::string& module);
    /// The system's text for the calling thread's last failure to load a library.
    std::string GetWindowsError();

private:
    class PlugIns;

    DataObjectFactory();
    ~DataObjectFactory();
    std::shared_ptr<DataObject> CreateFromPlugIn(const std::string& className, const std::string& version,
                                                 const std::string& module, std::string& failure);

    std::unique_ptr<PlugIns> m_plugIns;
};

} // namespace Qor::Tivor
