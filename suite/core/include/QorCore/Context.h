#pragma once

#include <QorCore/Export.h>

#include <cstdint>

namespace Qor::Core {

class AlertHandler;
class LockSet;

/// Which names of plug-in libraries readers take from stored data.
enum class EModuleNames : std::uint8_t {
    any,
    bare, ///< file names of up to 255 letters, digits, '.', '_' and '-': nothing that leads to another directory
    none
};

/// What readers accept. Too big is an error before anything is allocated.
struct ReadLimits {
    std::uint32_t nesting = 256;                  ///< levels of containers, the root being the first
    std::uint32_t nameBytes = 64 * 1024;          ///< class names, versions, module names
    std::uint32_t keyBytes = 1024 * 1024;         ///< keys of entries
    EModuleNames moduleNames = EModuleNames::any; ///< data of other modules is kept unread
    std::uint32_t failingModules = 64;            ///< plug-ins that one reading operation tries in vain to load
    bool keepsUnavailable = false; ///< whether data of plug-ins that fail is kept unread, instead of skipped
    std::uint64_t paddingBytes = 256u * 1024u * 1024u; ///< zero bytes that a writer adds to a block that fell short
};

/// The one record that a thread carries: in whose name it takes locks, who sees its warnings, how deep it reads, and
/// within which limits. A thread that works for another one, which waits for it, borrows that one's record.
struct QOR_CORE_API Context {
    /// The record of the calling thread.
    static Context& Current();

    /// In whose name locks are taken: never 0, never used twice in a process.
    std::uint64_t lockOwner = 0;
    AlertHandler* alertHandler = nullptr;
    std::uint32_t nestingDepth = 0;
    ReadLimits limits;
    LockSet* lockSet = nullptr;
    /// Belongs to the outermost operation that needs one (a framed write); inner ones find it here.
    void* operation = nullptr;
    /// The same for reading.
    void* reading = nullptr;

    class Loan;
    class ScopedLimits;
};

/// Lets the calling thread work with a copy of another thread's record, same lock owner included, as long as it lives.
/// The lender must wait for the borrower.
class QOR_CORE_API Context::Loan {
public:
    explicit Loan(const Context& lender);
    Loan(const Loan&) = delete;
    Loan& operator=(const Loan&) = delete;
    ~Loan();

private:
    Context m_own;
};

/// Sets the limits of the calling thread as long as it lives.
class QOR_CORE_API Context::ScopedLimits {
public:
    explicit ScopedLimits(const ReadLimits& limits);
    ScopedLimits(const ScopedLimits&) = delete;
    ScopedLimits& operator=(const ScopedLimits&) = delete;
    ~ScopedLimits();

private:
    ReadLimits m_former;
};

} // namespace Qor::Core
