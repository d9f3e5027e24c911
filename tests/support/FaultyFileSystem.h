#pragma once

#include "FileSystemInFront.h"

#include <array>

namespace Qor::Core::Testing {

/// In the order of their statuses.
enum class EFault {
    eIO,
    eNO_SPACE,
    eINTERRUPTED,
    eSHORT_WRITE, ///< a write takes half of the bytes; other calls go on as usual
    eDENIED,
    eCANNOT_REPLACE
};

/// Stands in front of the native files while it lives, counts the calls and lets chosen ones fail. Failing calls do
/// nothing, except that `Close` always closes. The two calls that sync are counted but not carried out: no test takes
/// the power away, and sweeps make thousands of them.
class FaultyFileSystem final : public FileSystemInFront {
public:
    /// From now on the n-th call (1 is the next) fails, with `forEver` that one and all that follow. With `only`,
    /// calls of that kind alone count and fail. Forgets the fault before and all counts.
    void FailCall(int n, EFault fault, bool forEver = false, std::optional<ECall> only = std::nullopt);
    /// No more faults; the counts stay.
    void Heal() { m_callsUntilFault = 0; }
    void ResetCounts();

    int CallsMade() const { return m_callsMade; }
    int CallsMade(ECall call) const { return m_callsByKind[static_cast<std::size_t>(call)]; }
    /// How many calls, of that kind, were made to fail.
    int FaultsMade() const;
    int FaultsMade(ECall call) const { return m_faultsByKind[static_cast<std::size_t>(call)]; }
    /// Makes saving take the way of systems that cannot replace open files.
    void SetReplacesOpenFiles(bool replaces) { m_replacesOpenFiles = replaces; }

    bool ReplacesOpenFiles() const override { return m_replacesOpenFiles; }
    FileStatus Write(FileHandle handle, std::uint64_t position, const void* source, std::uint64_t size,
                     std::uint64_t& done) override;

protected:
    std::optional<FileStatus> Answer(ECall call) override;

private:
    static constexpr std::size_t NumCalls = static_cast<std::size_t>(ECall::eSYNC_DIRECTORY) + 1;

    /// Counts a call; the fault that it meets, if any.
    std::optional<EFault> Meet(ECall call);

    bool m_replacesOpenFiles = m_next.ReplacesOpenFiles();
    int m_callsMade = 0;
    std::array<int, NumCalls> m_callsByKind{};
    std::array<int, NumCalls> m_faultsByKind{};
    int m_callsUntilFault = 0; ///< 0: no fault is set
    EFault m_fault = EFault::eIO;
    bool m_forEver = false;
    std::optional<ECall> m_only;
};

} // namespace Qor::Core::Testing
