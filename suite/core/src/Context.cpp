#include <QorCore/Context.h>

#include <atomic>
#include <utility>

namespace Qor::Core {

namespace {

std::uint64_t NextLockOwner() {
    static std::atomic<std::uint64_t> last{0};
    return ++last;
}

// Only the pointer lies where the loader has a place ready that is reached without a call.
constinit thread_local Context own{};
[[gnu::tls_model("initial-exec")]] constinit thread_local Context* current = nullptr;

Context& BeginThread() {
    own.lockOwner = NextLockOwner();
    current = &own;
    return own;
}

} // namespace

Context& Context::Current() { return current != nullptr ? *current : BeginThread(); }

Context::Loan::Loan(const Context& lender) : m_own(std::exchange(Context::Current(), lender)) {}

Context::Loan::~Loan() { Context::Current() = m_own; }

Context::ScopedLimits::ScopedLimits(const ReadLimits& limits)
    : m_former(std::exchange(Context::Current().limits, limits)) {}

Context::ScopedLimits::~ScopedLimits() { Context::Current().limits = m_former; }

} // namespace Qor::Core
