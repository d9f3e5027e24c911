#include "FaultyFileSystem.h"

#include <cerrno>
#include <numeric>

namespace Qor::Core::Testing {

namespace {

FileStatus StatusOf(EFault fault) {
    switch (fault) {
    case EFault::eIO:
        return {eFILE_IO, EIO};
    case EFault::eNO_SPACE:
        return {eFILE_NO_SPACE, ENOSPC};
    case EFault::eINTERRUPTED:
        return {eFILE_INTERRUPTED, EINTR};
    case EFault::eDENIED:
        return {eFILE_DENIED, EACCES};
    case EFault::eCANNOT_REPLACE:
        return {eFILE_CANNOT_REPLACE, EXDEV};
    case EFault::eSHORT_WRITE:
        break;
    }
    return {};
}

} // namespace

FaultyFileSystem::FaultyFileSystem()
    : m_next(Current()), m_replacesOpenFiles(m_next.ReplacesOpenFiles()), m_replacement(*this) {}

FaultyFileSystem::~FaultyFileSystem() = default;

void FaultyFileSystem::FailCall(int n, EFault fault, bool forEver, std::optional<ECall> only) {
    ResetCounts();
    m_callsUntilFault = n;
    m_fault = fault;
    m_forEver = forEver;
    m_only = only;
}

void FaultyFileSystem::ResetCounts() {
    m_callsMade = 0;
    m_callsByKind = {};
    m_faultsByKind = {};
}

int FaultyFileSystem::FaultsMade() const { return std::accumulate(m_faultsByKind.begin(), m_faultsByKind.end(), 0); }

std::optional<EFault> FaultyFileSystem::Meet(ECall call) {
    ++m_callsMade;
    ++m_callsByKind[static_cast<std::size_t>(call)];
    if (m_callsUntilFault == 0 || (m_only && *m_only != call))
        return std::nullopt;
    if (m_callsUntilFault > 1) {
        --m_callsUntilFault;
        return std::nullopt;
    }
    if (!m_forEver)
        m_callsUntilFault = 0;
    ++m_faultsByKind[static_cast<std::size_t>(call)];
    return m_fault;
}

std::optional<FileStatus> FaultyFileSystem::Failure(ECall call) {
    const std::optional<EFault> fault = Meet(call);
    return fault && *fault != EFault::eSHORT_WRITE ? std::optional(StatusOf(*fault)) : std::nullopt;
}

FileStatus FaultyFileSystem::Open(const PathName& path, const FileOpening& opening, FileHandle& handle) {
    const auto failure = Failure(ECall::eOPEN);
    return failure ? *failure : m_next.Open(path, opening, handle);
}

FileStatus FaultyFileSystem::Close(FileHandle handle) {
    const auto failure = Failure(ECall::eCLOSE);
    const FileStatus status = m_next.Close(handle);
    return failure ? *failure : status;
}

FileStatus FaultyFileSystem::Read(FileHandle handle, std::uint64_t position, void* destination, std::uint64_t size,
                                  std::uint64_t& done) {
    const auto failure = Failure(ECall::eREAD);
    return failure ? *failure : m_next.Read(handle, position, destination, size, done);
}

FileStatus FaultyFileSystem::Write(FileHandle handle, std::uint64_t position, const void* source, std::uint64_t size,
                                   std::uint64_t& done) {
    const auto fault = Meet(ECall::eWRITE);
    if (fault && *fault != EFault::eSHORT_WRITE)
        return StatusOf(*fault);
    return m_next.Write(handle, position, source, fault ? (size + 1) / 2 : size, done);
}

FileStatus FaultyFileSystem::SetSize(FileHandle handle, std::uint64_t size) {
    const auto failure = Failure(ECall::eSET_SIZE);
    return failure ? *failure : m_next.SetSize(handle, size);
}

FileStatus FaultyFileSystem::Reserve(FileHandle handle, std::uint64_t size) {
    const auto failure = Failure(ECall::eRESERVE);
    return failure ? *failure : m_next.Reserve(handle, size);
}

FileStatus FaultyFileSystem::Sync(FileHandle) { return Failure(ECall::eSYNC).value_or(FileStatus{}); }

FileStatus FaultyFileSystem::GetInfo(FileHandle handle, FileInfo& info) {
    const auto failure = Failure(ECall::eINFO);
    return failure ? *failure : m_next.GetInfo(handle, info);
}

FileStatus FaultyFileSystem::GetInfo(const PathName& path, FileInfo& info) {
    const auto failure = Failure(ECall::eINFO);
    return failure ? *failure : m_next.GetInfo(path, info);
}

FileStatus FaultyFileSystem::CopyAttributes(FileHandle from, FileHandle to) {
    const auto failure = Failure(ECall::eCOPY_ATTRIBUTES);
    return failure ? *failure : m_next.CopyAttributes(from, to);
}

FileStatus FaultyFileSystem::ResolveLinks(const PathName& path, PathName& target) {
    const auto failure = Failure(ECall::eRESOLVE);
    return failure ? *failure : m_next.ResolveLinks(path, target);
}

FileStatus FaultyFileSystem::Replace(const PathName& from, const PathName& to) {
    const auto failure = Failure(ECall::eREPLACE);
    return failure ? *failure : m_next.Replace(from, to);
}

FileStatus FaultyFileSystem::Remove(const PathName& path) {
    const auto failure = Failure(ECall::eREMOVE);
    return failure ? *failure : m_next.Remove(path);
}

FileStatus FaultyFileSystem::SyncDirectory(const PathName&) {
    return Failure(ECall::eSYNC_DIRECTORY).value_or(FileStatus{});
}

} // namespace Qor::Core::Testing
