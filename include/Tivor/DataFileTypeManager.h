#pragma once

#include <QorCore/ReadersWriterMutex.h>
#include <Tivor/DataFile.h>

#include <array>
#include <memory>
#include <string>
#include <vector>

namespace Qor::Core {
class SystemLibrary;
} // namespace Qor::Core

namespace Qor::Tivor {

QOR_DECLARE_ALERT(TIVOR_API, DataFileConfigParseError, DataFileError);
/// A file type was registered that was registered before.
QOR_DECLARE_ALERT(TIVOR_API, ReplacingDataFileFactory, Core::Warning);
/// A default file type was asked for before one was set, so one was chosen.
QOR_DECLARE_ALERT(TIVOR_API, NoDefaultDataFile, Core::Warning);

/// What became of a library that was to be a plug-in.
struct DataFilePlugIn {
    enum EOutcome {
        eLOADED,         ///< its entry point was called
        eNOT_LOADED,     ///< the system could not load it
        eNO_ENTRY_POINT, ///< it has no function "RegisterDataFileTypes", and was released
        eFAILED          ///< its entry point raised something; what it registered before stays
    };

    std::string fileName;
    EOutcome outcome;
    std::string reason; ///< empty for `eLOADED`
};

/// The types of data files: those of this library, and those of plug-ins.
///
/// A plug-in is a library with the C function "RegisterDataFileTypes" (`PlugIn.h`), which is called once, and registers
/// factories by `SetFactory`. When the manager is first needed, it loads the plug-ins that stand in the directory
/// "Plugins/DataFiles" beside the executable, then reads "Config/DataFileConfig.xml" there, if there is one:
///
///     <DataFileConfig>
///       <PlugIn>ScanDataFile.dll</PlugIn>
///       <DefaultFileType>QOR Binary Data File</DefaultFileType>
///     </DataFileConfig>
///
/// Whatever goes wrong with a plug-in then is logged, and `GetPlugIns` tells of it; it stops neither the others nor the
/// program. Loaded plug-ins are never unloaded.
///
/// Thread rule: may be used by any number of threads. Factories and plug-ins are called with no lock held, except that
/// other threads wait for the manager while it is being made.
class TIVOR_API DataFileTypeManager {
public:
    DataFileTypeManager(const DataFileTypeManager&) = delete;
    DataFileTypeManager& operator=(const DataFileTypeManager&) = delete;

    static DataFileTypeManager& Instance();
    /// The names of the suite's own plug-in libraries.
    static const std::array<std::string, 5>& GetKnownPlugIns();

    /// Raises `InvalidDataFileType` when there is none of that name.
    std::shared_ptr<DataFile::Factory> GetFactory(const std::string& fileType) const;
    std::shared_ptr<DataFile::Factory> GetFactory(const std::type_info& dataFileClass) const;
    /// The factory of the default type. While none is set, makes one the default, the binary type if it is registered,
    /// with the warning `NoDefaultDataFile`. Raises `NoRegisteredDataFileTypes`.
    std::shared_ptr<DataFile::Factory> GetDefaultFactory();
    /// The factory for an existing file: of those that have its extension, then of the others, each in the order of
    /// registration, the first that accepts the file. An empty file gets the first that has its extension. A factory
    /// that raises something does not accept. Raises `UnknownDataFileType`.
    std::shared_ptr<DataFile::Factory> FindFactoryFor(const std::string& fileName) const;
    /// The first factory that has the extension of the file, which need not exist; an empty pointer when there is none.
    std::shared_ptr<DataFile::Factory> FindFactoryByExtension(const std::string& fileName) const;
    /// The factory for content in memory: the first that accepts it. Raises `UnknownDataFileType`.
    std::shared_ptr<DataFile::Factory> FindFactoryFor(std::span<const std::byte> content) const;

    /// Registers a factory under the name of its type, in place of the one that has it, with the warning
    /// `ReplacingDataFileFactory`; a handler that throws keeps the old one.
    /// Raises `LogicError` for no factory, and for a type without a name.
    void SetFactory(std::shared_ptr<DataFile::Factory> factory);
    /// The same; the factory is then that of the class, too, in place of the one that was.
    void SetFactory(const std::type_info& dataFileClass, std::shared_ptr<DataFile::Factory> factory);
    /// Raises `InvalidDataFileType`, and the default stays; "" unsets it.
    void SetDefault(const std::string& fileType);
    void SetDefault(const std::type_info& dataFileClass);
    std::string GetDefaultFileType() const;
    void EnumFileTypes(std::unordered_map<std::string, std::string>& fileTypes) const;
    /// The factories in the order of registration.
    std::vector<std::shared_ptr<DataFile::Factory>> GetFactories() const;

    /// Loads each "*.dll" of a directory (in whatever case, and so called on every system), in the order of their
    /// names. Raises nothing: what became of each is told by `GetPlugIns`.
    void LoadPlugIns(const std::string& directory);
    /// Loads a library and calls its entry point, unless that was done before, or another thread is at it.
    void LoadPlugIn(const std::string& fileName);
    /// Reads a configuration: loads the plug-ins that it names, then sets the default type. A relative name is looked
    /// for in the plug-in directory, in the directory of the executable, and by the system. Raises
    /// `DataFileConfigParseError`, before anything is loaded, and `InvalidDataFileType`.
    void ReadConfiguration(const std::string& fileName);
    /// The libraries that were to be plug-ins, each with what became of it last.
    std::vector<DataFilePlugIn> GetPlugIns() const;

private:
    class Creation;
    struct Registration {
        std::string fileType;
        std::shared_ptr<DataFile::Factory> factory;
        std::vector<std::string> extensions; // in lower case
        const std::type_info* dataFileClass;
    };

    struct Candidates {
        std::vector<std::shared_ptr<DataFile::Factory>> withExtension;
        std::vector<std::shared_ptr<DataFile::Factory>> others;
    };

    DataFileTypeManager();
    ~DataFileTypeManager();

    void Register(const std::type_info* dataFileClass, std::shared_ptr<DataFile::Factory> factory);
    const Registration* Find(const std::string& fileType) const;
    std::string GetFileType(const std::type_info& dataFileClass) const;
    Candidates GetCandidates(const std::string& fileName) const;
    bool Add(Registration& made, bool replaces);
    /// Whether the library was not among those that were loaded before; it then stays loaded.
    bool Keep(const std::shared_ptr<Core::SystemLibrary>& library);
    void Report(const std::string& fileName, DataFilePlugIn::EOutcome outcome, const std::string& reason);

    mutable Core::ReadersWriterMutex m_mutex;
    std::vector<Registration> m_registrations;
    std::string m_defaultFileType;
    std::vector<std::shared_ptr<Core::SystemLibrary>> m_libraries;
    std::vector<DataFilePlugIn> m_plugIns;
};

} // namespace Qor::Tivor
