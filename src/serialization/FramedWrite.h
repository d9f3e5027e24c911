#pragma once

#include <QorCore/Context.h>
#include <Tivor/DataObject.h>

#include <optional>
#include <unordered_map>
#include <utility>

namespace Qor::Tivor {

/// The outermost framed write of a thread. It holds all locks below the object that is written, so blocks inside lock
/// nothing, and a container's size, asked for once, stays true until the end.
class FramedWrite {
public:
    explicit FramedWrite(std::vector<std::shared_ptr<Core::Lock>> locks)
        : m_locks(std::move(locks)), m_outer(std::exchange(Core::Context::Current().operation, this)) {}
    FramedWrite(const FramedWrite&) = delete;
    FramedWrite& operator=(const FramedWrite&) = delete;
    ~FramedWrite() { Core::Context::Current().operation = m_outer; }

    static FramedWrite* Current() { return static_cast<FramedWrite*>(Core::Context::Current().operation); }

    std::optional<std::uint64_t> FindSize(const void* container) const {
        const auto found = m_sizes.find(container);
        return found != m_sizes.end() ? std::optional(found->second.size) : std::nullopt;
    }
    void KeepSize(const std::shared_ptr<const void>& container, std::uint64_t size) {
        m_sizes.try_emplace(container.get(), Known{size, container});
    }

private:
    struct Known {
        std::uint64_t size;
        std::shared_ptr<const void> container; // so that no other one takes its address
    };

    std::vector<std::shared_ptr<Core::Lock>> m_locks;
    std::unordered_map<const void*, Known> m_sizes;
    void* m_outer;
};

/// Holds the locks below an object or a container while it is written, unless it is part of a framed write already.
class LockedWrite {
public:
    template <class Written>
    explicit LockedWrite(const Written& written, bool lock = true) {
        if (!lock || FramedWrite::Current() != nullptr)
            return;
        std::vector<std::shared_ptr<Core::Lock>> locks;
        written.AcquireLocks(locks);
        m_outermost.emplace(std::move(locks));
    }

private:
    std::optional<FramedWrite> m_outermost;
};

} // namespace Qor::Tivor
