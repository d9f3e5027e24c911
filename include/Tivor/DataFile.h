#pragma once

#include <QorCore/BinaryFileStream.h>
#include <Tivor/DataContainer.h>

#include <atomic>
#include <memory>
#include <string>

namespace Qor::Tivor {

QOR_DECLARE_ALERT(TIVOR_API, DataFileError, Core::IOError);
/// The file must be open for what was asked.
QOR_DECLARE_ALERT(TIVOR_API, ClosedDataFileError, DataFileError);
/// A file that was opened for reading has changes to be saved.
QOR_DECLARE_ALERT(TIVOR_API, ReadOnlyDataFileError, DataFileError);
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

    DataFile(const DataFile&) = delete;
    DataFile& operator=(const DataFile&) = delete;
    ~DataFile() override;

    /// Opens a file, closing the one that is open. With a container the file is bound to it: its entries are replaced
    /// by those of the file, or, with a new or empty file, are what the first `Flush` saves. Returns false when the
    /// file cannot be opened this way. When it raises, or returns false, this object is closed and the container is as
    /// before.
    virtual bool Open(const std::string& fileName, EAccess access, EOpenBehavior behavior,
                      std::shared_ptr<DataContainer> container) = 0;
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

    /// Whether `Flush` can save.
    bool IsWritable() const { return IsOpen() && GetFileAccess() != eREAD_ONLY; }
    /// The metadata container of that name, which stands below "MetaData" in the file; an empty pointer where there is
    /// none.
    std::shared_ptr<DataContainer> GetMetaData(const std::string& name);
    /// Stores it there; null removes it.
    void SetMetaData(const std::string& name, std::shared_ptr<DataContainer> metaData);

protected:
    DataFile();
};

/// A data file of a format that is read as a whole when it is opened, and rewritten as a whole by `Flush`, so that the
/// file on disk always holds a complete old or a complete new content. Formats supply `ReadContent` and `WriteContent`.
class TIVOR_API StreamedDataFile : public DataFile {
public:
    ~StreamedDataFile() override;

    bool Open(const std::string& fileName, EAccess access, EOpenBehavior behavior,
              std::shared_ptr<DataContainer> container) override;
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
    /// How many entries of the file, nested ones included, could not be read; saving drops them.
    std::uint64_t NumUnreadEntries() const;

protected:
    /// `category`: the dotted category of the alerts that the format raises; a text that outlives the file.
    explicit StreamedDataFile(const char* category);

    /// Reads the file's content, which is not empty, into an empty container.
    virtual void ReadContent(Core::BinaryFileStream& stream, DataContainer& content) = 0;
    /// Writes the content of this container.
    virtual void WriteContent(Core::BinaryOutputStream& stream) const = 0;

    void PutDataObject(const std::string& key, std::shared_ptr<DataObject> object) override;
    void OnDataObjectChanged(const std::string& key, std::shared_ptr<DataObject> object) override;
    void OnDataReferenceChanged(const std::string& key, std::shared_ptr<DataObject> object) override;
    void OnDataValueChanged(const std::string& key, std::shared_ptr<DataObject> object) override;

private:
    void RequireOpen(const char* operation) const;
    void Fill(const DataContainer* content, const std::shared_ptr<DataContainer>& container);
    void Reset();
    void Save();

    const char* m_category;
    std::unique_ptr<Core::BinaryFileStream> m_stream;
    std::string m_fileName;
    EAccess m_access = eREAD_WRITE;
    std::atomic<bool> m_modified{false};
    std::uint64_t m_unreadEntries = 0;
};

} // namespace Qor::Tivor
