#include "../serialization/ReadOperation.h"
#include "NamingFile.h"

#include <QorCore/Log.h>
#include <QorCore/MemoryStreams.h>
#include <QorCore/Message.h>
#include <QorCore/SafeFileWriter.h>
#include <Tivor/DataFile.h>

#include <utility>

namespace Qor::Tivor {

namespace {

std::string GetShownName(const std::string& fileName) { return fileName.empty() ? "(in memory)" : fileName; }

} // namespace

StreamedDataFile::StreamedDataFile(const char* category, EDiscard discard) : m_category(category), m_discard(discard) {
    ReceiveChanges();
}

StreamedDataFile::~StreamedDataFile() {
    if (m_isOpen && m_modified)
        Core::Log(m_category, "Closed with unsaved changes: " + GetShownName(m_fileName));
    StopChanges();
}

bool StreamedDataFile::Open(const std::string& fileName, EAccess access, EOpenBehavior behavior,
                            std::shared_ptr<DataContainer> container) {
    const auto lock = std::make_shared<Core::Lock>(BeginDataAccess());
    Close();
    const bool discardsLater = m_discard == EDiscard::whenSaved && behavior == eCREATE_ALWAYS && access != eREAD_ONLY;
    auto stream = std::make_unique<Core::BinaryFileStream>();
    if (!stream->Open(fileName, access == eREAD_ONLY, discardsLater ? eOPEN_ALWAYS : behavior))
        return false;
    m_stream = std::move(stream);
    Load(*m_stream, discardsLater || m_stream->GetSize() == 0, fileName, access, container);
    return true;
}

bool StreamedDataFile::OpenMemory(std::span<const std::byte> content, EAccess access,
                                  std::shared_ptr<DataContainer> container) {
    const auto lock = std::make_shared<Core::Lock>(BeginDataAccess());
    Close();
    m_content.assign(content.begin(), content.end());
    Core::MemoryInputStream stream(m_content);
    Load(stream, m_content.empty(), {}, access, container);
    return true;
}

void StreamedDataFile::Load(Core::BinaryInputStream& stream, bool isNew, const std::string& fileName, EAccess access,
                            const std::shared_ptr<DataContainer>& container) {
    try {
        NamingFile(GetShownName(fileName), [&] {
            DataContainer content(container && container->DefaultsToLockableData());
            ReadOperation reading(ReadOperation::eSTANDS_ALONE);
            if (!isNew)
                ReadContent(stream, GetShownName(fileName), content);
            m_isOpen = true;
            m_fileName = fileName;
            m_access = access;
            m_unreadEntries = reading.TakeUnread();
            if (container)
                BindTo(*container);
            if (!isNew)
                Assign(content);
            m_modified = isNew && access != eREAD_ONLY;
        });
    } catch (...) {
        Reset();
        throw;
    }
}

void StreamedDataFile::Reset() {
    Unbind();
    DataContainer::Clear();
    m_isOpen = false;
    m_stream.reset();
    m_content.clear();
    m_fileName.clear();
    m_modified = false;
    m_unreadEntries.clear();
}

void StreamedDataFile::Close() {
    const auto lock = std::make_shared<Core::Lock>(BeginDataAccess());
    if (!m_isOpen)
        return;
    if (m_modified)
        Core::Log(m_category, "Closed with unsaved changes: " + GetShownName(m_fileName));
    Reset();
}

void StreamedDataFile::Flush() {
    const auto lock = std::make_shared<Core::Lock>(BeginDataAccess());
    RequireOpen("Flush()");
    if (m_modified)
        NamingFile(GetShownName(m_fileName), [this] { Save(); });
}

void StreamedDataFile::Save() {
    if (m_access == eREAD_ONLY)
        Core::Error::RaiseError(
            ReadOnlyDataFileError(Core::FormatText("Flush() called on a read-only %1%", {GetFileType()})),
            QOR_CODE_CONTEXT("DataFile"), m_category);
    if (!m_unreadEntries.empty())
        Core::Warning::RaiseWarning(
            DroppingUnreadEntries(Core::FormatText("Saving %1% drops %2% entries that could not be read",
                                                   {GetShownName(m_fileName), m_unreadEntries.size()})),
            QOR_CODE_CONTEXT("DataFile"), m_category);
    // A change that another thread makes from now on is for the next save.
    m_modified = false;
    try {
        m_stream ? WriteToMedium() : WriteToMemory();
    } catch (...) {
        m_modified = true;
        throw;
    }
    m_unreadEntries.clear();
}

void StreamedDataFile::WriteToMedium() {
    // Where open files cannot be replaced, a failing save may have closed the file.
    if (!m_stream->IsOpen() && !m_stream->Open(m_stream->GetPath().ToString(), false, eOPEN_ALWAYS))
        Core::Error::RaiseError(DataFileError("The file could not be opened again after it was saved, or not saved"),
                                QOR_CODE_CONTEXT("DataFile"), m_category);
    Core::SafeFileWriter::Save(*m_stream, [this](Core::BinaryOutputStream& stream) { WriteContent(stream); });
}

void StreamedDataFile::WriteToMemory() {
    Core::MemoryOutputStream stream;
    WriteContent(stream);
    m_content.assign(stream.GetBytes().begin(), stream.GetBytes().end());
}

bool StreamedDataFile::IsOpen() const {
    const auto lock = std::make_shared<Core::Lock>(BeginDataAccess());
    return m_isOpen;
}

std::string StreamedDataFile::GetFileName() const {
    const auto lock = std::make_shared<Core::Lock>(BeginDataAccess());
    return m_fileName;
}

DataFile::EAccess StreamedDataFile::GetFileAccess() const {
    const auto lock = std::make_shared<Core::Lock>(BeginDataAccess());
    return m_access;
}

std::vector<std::byte> StreamedDataFile::GetContent() const {
    const auto lock = std::make_shared<Core::Lock>(BeginDataAccess());
    return m_content;
}

std::vector<UnreadEntry> StreamedDataFile::GetUnreadEntries() const {
    const auto lock = std::make_shared<Core::Lock>(BeginDataAccess());
    return m_unreadEntries;
}

void StreamedDataFile::RequireOpen(const char* operation) const {
    if (!m_isOpen)
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
