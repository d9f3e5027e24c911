#include "FaultyFileSystem.h"

#include <cerrno>
#include <numeric>

namespace Qor::Core::Testing {

namespace {

FileStatus StatusOf(EFault fault) {
    const FileStatus statuses[] = {{eFILE_IO, EIO},        {eFILE_NO_SPACE, ENOSPC},     {eFILE_INTERRUPTED, EINTR}, {},
                                   {eFILE_DENIED, EACCES}, {eFILE_CANNOT_REPLACE, EXDEV}};
    return statuses[static_cast<std::size_t>(fault)];
}

} // namespace

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

std::optional<FileStatus> FaultyFileSystem::Answer(ECall call) {
    const std::optional<EFault> fault = Meet(call);
    if (fault && *fault != EFault::eSHORT_WRITE)
        return StatusOf(*fault);
    return call == ECall::eSYNC || call == ECall::eSYNC_DIRECTORY ? std::optional<FileStatus>(FileStatus{})
                                                                  : std::nullopt;
}

FileStatus FaultyFileSystem::Write(FileHandle handle, std::uint64_t position, const void* source, std::uint64_t size,
                                   std::uint64_t& done) {
    const auto fault = Meet(ECall::eWRITE);
    if (fault && *fault != EFault::eSHORT_WRITE)
        return StatusOf(*fault);
    return m_next.Write(handle, position, source, fault ? (size + 1) / 2 : size, done);
}

} // namespace Qor::Core::Testing
