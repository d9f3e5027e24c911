#include <QorCore/Context.h>

#include <atomic>
#include <utility>

namespace Qor::Core {

namespace {

std::uint64_t NextLockOwner() {
    static std::atomic<std::uint64_t> last{0};
    return ++last;
}

Context NewContext() {
    Context context{};
    context.lockOwner = NextLockOwner();
    return context;
}

} // namespace

Context& Context::Current() {
    static thread_local Context context = NewContext();
    return context;
}

Context::Loan::Loan(const Context& lender) : m_own(std::exchange(Context::Current(), lender)) {}

Context::Loan::~Loan() { Context::Current() = m_own; }

Context::ScopedLimits::ScopedLimits(const ReadLimits& limits)
    : m_former(std::exchange(Context::Current().limits, limits)) {}

Context::ScopedLimits::~ScopedLimits() { Context::Current().limits = m_former; }

} // namespace Qor::Core
