#pragma once

#include <QorCore/BinaryFileStream.h>
#include <Tivor/DataContainer.h>

#include <atomic>
#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <typeinfo>
#include <unordered_map>
#include <vector>

namespace Qor::Tivor {

QOR_DECLARE_ALERT(TIVOR_API, DataFileError, Core::IOError);
/// The file must be open for what was asked.
QOR_DECLARE_ALERT(TIVOR_API, ClosedDataFileError, DataFileError);
/// A file that was opened for reading has changes to be saved.
QOR_DECLARE_ALERT(TIVOR_API, ReadOnlyDataFileError, DataFileError);
/// No registered file type accepts the file. For each there is a variable of its name, which says why.
QOR_DECLARE_ALERT(TIVOR_API, UnknownDataFileType, DataFileError);
/// No file type of that name is registered.
QOR_DECLARE_ALERT(TIVOR_API, InvalidDataFileType, DataFileError);
QOR_DECLARE_ALERT(TIVOR_API, NoRegisteredDataFileTypes, DataFileError);
/// Saving drops entries that could not be read, because their classes were not to be had.
QOR_DECLARE_ALERT(TIVOR_API, DroppingUnreadEntries, Core::Warning);

/// A container whose entries stand in a file: read when the file is opened, and written by `Flush`, never otherwise.
/// A closed file is empty, and nothing can be put into it.
///
/// A file may be bound to a container of the caller's: then both are one collection, with the same entries and the same
/// mutex, until the file is closed; the container keeps its entries.
///
/// Thread rule: as its container; every operation holds the file's lock.
class TIVOR_API DataFile : public DataContainer {
public:
    enum EAccess : int { eREAD_WRITE = 0, eREAD_ONLY = 1 };
    /// Any other value counts as `eCREATE_NEW`. For reading only the first two are of use; nothing is created then.
    enum EOpenBehavior : int {
        eOPEN_EXISTING = 0, ///< the file must exist
        eOPEN_ALWAYS = 1,   ///< the file is created when missing
        eCREATE_ALWAYS = 2, ///< the file is created; what it held is discarded
        eCREATE_NEW = 3     ///< the file is created and must not exist
    };

    class Factory;

    /// Opens a file of whatever registered type. The type is the one that is named. Without a name, it is that of an
    /// existing file (`DataFileTypeManager::FindFactoryFor`); for a new file it is the default type, whatever the
    /// extension, and `eCREATE_ALWAYS` counts each file as new. The rest as for the member `Open`, but for false there
    /// is an empty pointer, also where `eOPEN_EXISTING` finds no file.
    /// Raises `InvalidDataFileType`, `UnknownDataFileType`, `NoRegisteredDataFileTypes`, and what the type raises, with
    /// the variable "File".
    static std::shared_ptr<DataFile> Open(const std::string& fileName, EAccess access, EOpenBehavior behavior,
                                          const std::string& fileType, std::shared_ptr<DataContainer> container);
    /// The same for a file that stands in memory. Without a name the type is the first that accepts the content; for no
    /// content it is the default type.
    static std::shared_ptr<DataFile> OpenMemory(std::span<const std::byte> content, EAccess access,
                                                const std::string& fileType, std::shared_ptr<DataContainer> container);
    /// Visits the entries of a file as `DataContainer::ForEachHeader` does: formats that can do so read headers only,
    /// however large the file is. Returns the file's type. Raises as `Open`; a missing file is an `IOError`.
    static std::string ForEachHeader(const std::string& fileName, const std::string& fileType,
                                     const HeaderVisitor& visit);

    /// Adds the names of the registered file types, each with its description.
    static void EnumFileTypes(std::unordered_map<std::string, std::string>& fileTypes);
    /// The name of the default type; empty while none is set.
    static std::string GetDefaultFileType();
    /// Raises `InvalidDataFileType` for a type that is not registered, and nothing changes; "" unsets.
    static void SetDefaultFileType(const std::string& fileType);
    /// Loads the plug-in libraries in a directory: `DataFileTypeManager::LoadPlugIns`.
    static void LoadPlugIns(const std::string& directory);

    /// The same registry by the class of data file instead of the name of its type.
    template <class T>
    static void SetFactory(std::shared_ptr<Factory> factory) {
        SetFactory(&typeid(T), std::move(factory));
    }
    template <class T>
    static std::shared_ptr<Factory> GetFactory() {
        return GetFactory(&typeid(T));
    }
    template <class T>
    static void SetDefault() {
        SetDefault(&typeid(T));
    }

    DataFile(const DataFile&) = delete;
    DataFile& operator=(const DataFile&) = delete;
    ~DataFile() override;

    /// Opens a file, closing the one that is open. With a container the file is bound to it: its entries are replaced
    /// by those of the file, or, with a new or empty file, are what the first `Flush` saves. Returns false when the
    /// file cannot be opened this way. When it raises, or returns false, this object is closed and the container is as
    /// before.
    virtual bool Open(const std::string& fileName, EAccess access, EOpenBehavior behavior,
                      std::shared_ptr<DataContainer> container) = 0;
    /// The same for a file that stands in memory; the content is copied where it is needed longer. `Flush` then makes
    /// what `GetContent` returns. A format that does not offer this returns false.
    virtual bool OpenMemory(std::span<const std::byte> content, EAccess access,
                            std::shared_ptr<DataContainer> container);
    /// The content of a file in memory, as it was opened or last flushed; empty for other files.
    virtual std::vector<std::byte> GetContent() const;
    /// Closes without saving.
    virtual void Close() = 0;
    /// Saves the entries if anything changed since they were last saved or read.
    virtual void Flush() = 0;
    virtual bool IsOpen() const = 0;
    /// The name by which the file was opened; empty when it is closed.
    virtual std::string GetFileName() const = 0;
    virtual std::string GetFileType() const = 0;
    virtual EAccess GetFileAccess() const = 0;
    virtual std::string DescribeFileType() const = 0;
    /// The entries, nested ones included, that could not be read when the file was opened. Saving drops them, and then
    /// there are none.
    virtual std::vector<UnreadEntry> GetUnreadEntries() const;
    std::size_t NumUnreadEntries() const { return GetUnreadEntries().size(); }

    /// Whether `Flush` can save.
    bool IsWritable() const { return IsOpen() && GetFileAccess() != eREAD_ONLY; }
    /// The metadata container of that name, which stands below "MetaData" in the file; an empty pointer where there is
    /// none.
    std::shared_ptr<DataContainer> GetMetaData(const std::string& name);
    /// Stores it there; null removes it.
    void SetMetaData(const std::string& name, std::shared_ptr<DataContainer> metaData);

protected:
    DataFile();

private:
    static std::shared_ptr<Factory> GetFactory(const std::type_info* dataFileClass);
    static void SetFactory(const std::type_info* dataFileClass, std::shared_ptr<Factory> factory);
    static void SetDefault(const std::type_info* dataFileClass);
};

/// Makes the data files of one format, and tells which files those are.
///
/// Thread rule: may be used by any number of threads at once; called with no lock of the library held.
class TIVOR_API DataFile::Factory {
public:
    Factory();
    Factory(const Factory&) = delete;
    Factory& operator=(const Factory&) = delete;
    virtual ~Factory();

    /// Makes a data file and opens it; an empty pointer when it cannot be opened this way.
    virtual std::shared_ptr<DataFile> OpenFile(const std::string& fileName, EAccess access, EOpenBehavior behavior,
                                               std::shared_ptr<DataContainer> container) = 0;
    /// The name of the format, by which it is registered.
    virtual std::string GetFileType() const = 0;
    /// One line for people.
    virtual std::string DescribeFileType() const = 0;
    /// Adds the extensions that files of this format have, without the dot.
    virtual void EnumExtensions(std::vector<std::string>& extensions) const = 0;
    /// Whether an existing file is of this format.
    virtual bool IsOfThisType(const std::string& fileName) const = 0;

    // What a format need not offer.

    /// What the format misses in a file that is not its own.
    virtual std::string ExplainRefusal(const std::string& fileName) const;
    /// As `OpenFile` and `IsOfThisType`, for content in memory. The defaults: it is not of this format.
    virtual std::shared_ptr<DataFile> OpenContent(std::span<const std::byte> content, EAccess access,
                                                  std::shared_ptr<DataContainer> container);
    virtual bool HoldsThisType(std::span<const std::byte> content) const;
    /// `DataFile::ForEachHeader`; the default opens the file.
    virtual void VisitHeaders(const std::string& fileName, const HeaderVisitor& visit);
};

/// A data file of a format that is read as a whole when it is opened, and rewritten as a whole by `Flush`, so that the
/// file on disk always holds a complete old or a complete new content. Formats supply `ReadContent` and `WriteContent`.
class TIVOR_API StreamedDataFile : public DataFile {
public:
    ~StreamedDataFile() override;

    bool Open(const std::string& fileName, EAccess access, EOpenBehavior behavior,
              std::shared_ptr<DataContainer> container) override;
    bool OpenMemory(std::span<const std::byte> content, EAccess access,
                    std::shared_ptr<DataContainer> container) override;
    std::vector<std::byte> GetContent() const override;
    void Close() override;
    /// Raises `ClosedDataFileError`, `ReadOnlyDataFileError`, and what writing raises, with the variable "File": the
    /// file is then as before and still open, and the next `Flush` writes everything again. Raises the warning
    /// `DroppingUnreadEntries` before the first save that drops some.
    void Flush() override;
    bool IsOpen() const override;
    std::string GetFileName() const override;
    EAccess GetFileAccess() const override;

    /// These raise `ClosedDataFileError` on a closed file.
    void Clear() override;
    std::shared_ptr<DataObject> Remove(const std::string& key) override;

    /// Whether anything changed since the last save: in the file's entries, or in whatever is nested in them. Objects
    /// that were changed past their interface, by the elements of a matrix for example, are put again to be saved.
    bool IsModified() const { return m_modified; }
    std::vector<UnreadEntry> GetUnreadEntries() const override;

protected:
    /// When a file that is opened with `eCREATE_ALWAYS` loses what it held.
    enum class EDiscard { whenOpened, whenSaved };

    /// `category`: the dotted category of the alerts that the format raises; a text that outlives the file.
    explicit StreamedDataFile(const char* category, EDiscard discard = EDiscard::whenOpened);

    /// Reads the content of the file of that name, which is not empty, into an empty container.
    virtual void ReadContent(Core::BinaryInputStream& stream, const std::string& fileName, DataContainer& content) = 0;
    /// Writes the content of this container.
    virtual void WriteContent(Core::BinaryOutputStream& stream) const = 0;

    void PutDataObject(const std::string& key, std::shared_ptr<DataObject> object) override;
    void OnDataObjectChanged(const std::string& key, std::shared_ptr<DataObject> object) override;
    void OnDataReferenceChanged(const std::string& key, std::shared_ptr<DataObject> object) override;
    void OnDataValueChanged(const std::string& key, std::shared_ptr<DataObject> object) override;

private:
    void RequireOpen(const char* operation) const;
    void Load(Core::BinaryInputStream& stream, bool isNew, const std::string& fileName, EAccess access,
              const std::shared_ptr<DataContainer>& container);
    void Reset();
    void Save();
    void WriteToMedium();
    void WriteToMemory();

    const char* m_category;
    EDiscard m_discard;
    bool m_isOpen = false;
    std::unique_ptr<Core::BinaryFileStream> m_stream; // null for a file in memory
    std::vector<std::byte> m_content;
    std::string m_fileName;
    EAccess m_access = eREAD_WRITE;
    std::atomic<bool> m_modified{false};
    std::vector<UnreadEntry> m_unreadEntries;
};

} // namespace Qor::Tivor
