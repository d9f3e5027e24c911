#include <QorCore/Log.h>
#include <QorCore/Message.h>
#include <QorCore/SafeFileWriter.h>
#include <Tivor/DataFile.h>

#include <utility>

namespace Qor::Tivor {

namespace {

/// Counts the entries that are skipped while it lives, at any depth.
class UnreadCounter final : public Core::AlertHandler {
public:
    void OnWarning(const Core::Warning& warning) override {
        if (dynamic_cast<const DataObjectCreationFailed*>(&warning) != nullptr)
            ++count;
    }

    std::uint64_t count = 0;
};

/// Runs `work`; what it raises says which file it was about.
template <class Work>
void NamingFile(const std::string& fileName, Work work) {
    try {
        work();
    } catch (Core::Error& error) {
        error.SetVariable("File", fileName); // whatever file it was written through
        throw;
    }
}

} // namespace

StreamedDataFile::StreamedDataFile(const char* category) : m_category(category) { ReceiveChanges(); }

StreamedDataFile::~StreamedDataFile() {
    if (m_stream && m_modified)
        Core::Log(m_category, "Closed with unsaved changes: " + m_fileName);
    StopChanges();
}

bool StreamedDataFile::Open(const std::string& fileName, EAccess access, EOpenBehavior behavior,
                            std::shared_ptr<DataContainer> container) {
    const auto lock = std::make_shared<Core::Lock>(BeginDataAccess());
    Close();
    auto stream = std::make_unique<Core::BinaryFileStream>();
    if (!stream->Open(fileName, access == eREAD_ONLY, behavior))
        return false;
    NamingFile(fileName, [&] {
        const bool isNew = stream->GetSize() == 0;
        DataContainer content(container && container->DefaultsToLockableData());
        UnreadCounter unread;
        if (!isNew)
            ReadContent(*stream, content);
        m_stream = std::move(stream);
        m_fileName = fileName;
        m_access = access;
        try {
            Fill(isNew ? nullptr : &content, container);
        } catch (...) {
            Reset();
            throw;
        }
        m_unreadEntries = unread.count;
        m_modified = isNew && access != eREAD_ONLY;
    });
    return true;
}

void StreamedDataFile::Fill(const DataContainer* content, const std::shared_ptr<DataContainer>& container) {
    if (container)
        BindTo(*container);
    if (content != nullptr)
        Assign(*content);
}

void StreamedDataFile::Reset() {
    Unbind();
    DataContainer::Clear();
    m_stream.reset();
    m_fileName.clear();
    m_modified = false;
    m_unreadEntries = 0;
}

void StreamedDataFile::Close() {
    const auto lock = std::make_shared<Core::Lock>(BeginDataAccess());
    if (!m_stream)
        return;
    if (m_modified)
        Core::Log(m_category, "Closed with unsaved changes: " + m_fileName);
    Reset();
}

void StreamedDataFile::Flush() {
    const auto lock = std::make_shared<Core::Lock>(BeginDataAccess());
    RequireOpen("Flush()");
    if (m_modified)
        NamingFile(m_fileName, [this] { Save(); });
}

void StreamedDataFile::Save() {
    if (m_access == eREAD_ONLY)
        Core::Error::RaiseError(
            ReadOnlyDataFileError(Core::FormatText("Flush() called on a read-only %1%", {GetFileType()})),
            QOR_CODE_CONTEXT("DataFile"), m_category);
    if (m_unreadEntries != 0) {
        Core::Warning::RaiseWarning(
            DroppingUnreadEntries(
                Core::FormatText("Saving %1% drops %2% entries that could not be read", {m_fileName, m_unreadEntries})),
            QOR_CODE_CONTEXT("DataFile"), m_category);
    }
    // Where open files cannot be replaced, a failing save may have closed the file.
    if (!m_stream->IsOpen() && !m_stream->Open(m_stream->GetPath().ToString(), false, eOPEN_ALWAYS))
        Core::Error::RaiseError(DataFileError("The file could not be opened again after it was saved, or not saved"),
                                QOR_CODE_CONTEXT("DataFile"), m_category);
    // A change that another thread makes from now on is for the next save.
    m_modified = false;
    try {
        Core::SafeFileWriter::Save(*m_stream, [this](Core::BinaryOutputStream& stream) { WriteContent(stream); });
    } catch (...) {
        m_modified = true;
        throw;
    }
    m_unreadEntries = 0;
}

bool StreamedDataFile::IsOpen() const {
    const auto lock = std::make_shared<Core::Lock>(BeginDataAccess());
    return m_stream != nullptr;
}

std::string StreamedDataFile::GetFileName() const {
    const auto lock = std::make_shared<Core::Lock>(BeginDataAccess());
    return m_fileName;
}

DataFile::EAccess StreamedDataFile::GetFileAccess() const {
    const auto lock = std::make_shared<Core::Lock>(BeginDataAccess());
    return m_access;
}

std::uint64_t StreamedDataFile::NumUnreadEntries() const {
    const auto lock = std::make_shared<Core::Lock>(BeginDataAccess());
    return m_unreadEntries;
}

void StreamedDataFile::RequireOpen(const char* operation) const {
    if (!m_stream)
        Core::Error::RaiseError(
            ClosedDataFileError(Core::FormatText("%1% called on an unopened %2%", {operation, GetFileType()})),
            QOR_CODE_CONTEXT("DataFile"), m_category);
}

void StreamedDataFile::Clear() {
    Atomically([this] {
        RequireOpen("Clear()");
        DataContainer::Clear();
        m_modified = true;
    });
}

std::shared_ptr<DataObject> StreamedDataFile::Remove(const std::string& key) {
    std::shared_ptr<DataObject> removed;
    Atomically([&] {
        RequireOpen("Remove()");
        removed = DataContainer::Remove(key);
        if (removed)
            m_modified = true;
    });
    return removed;
}

void StreamedDataFile::PutDataObject(const std::string& key, std::shared_ptr<DataObject> object) {
    Atomically([&] {
        RequireOpen("PutDataObject()");
        const bool marks = object != nullptr;
        DataContainer::PutDataObject(key, std::move(object));
        if (marks)
            m_modified = true;
    });
}

void StreamedDataFile::OnDataObjectChanged(const std::string&, std::shared_ptr<DataObject>) { m_modified = true; }

void StreamedDataFile::OnDataReferenceChanged(const std::string&, std::shared_ptr<DataObject>) { m_modified = true; }

void StreamedDataFile::OnDataValueChanged(const std::string&, std::shared_ptr<DataObject>) { m_modified = true; }

} // namespace Qor::Tivor
