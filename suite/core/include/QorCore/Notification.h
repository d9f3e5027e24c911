#pragma once

#include <QorCore/Export.h>

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace Qor::Core {

class NotificationListener;

/// Keeps the listeners of an object without owning them: listener and object may die in any order.
///
/// When a listener was removed, by whichever side, it is not called any more: a removal waits until deliveries to that
/// listener on other threads have ended. A listener that removes itself, or is removed, in its own call does not wait
/// for that call. Whoever removes must therefore hold no lock that the listener may want.
///
/// Thread rule: all operations may be called by any number of threads at once, except the destructor.
class QOR_CORE_API NotificationSupport {
public:
    NotificationSupport();
    NotificationSupport(const NotificationSupport&) = delete;
    NotificationSupport& operator=(const NotificationSupport&) = delete;
    /// Removes all. May run during a delivery of this very object.
    ~NotificationSupport();

    /// No effect when the listener is registered here already.
    void AddListener(NotificationListener& listener);
    /// No effect when it is not.
    void RemoveListener(NotificationListener& listener);
    void RemoveAll();

    /// Cheap: for asking before a notification is made up.
    bool HasListeners() const;

    /// Calls `notify` with each listener, in the order of registration, holding no lock. A listener that is removed in
    /// the meantime and was not called yet is left out; one that is added waits for the next time. When a listener
    /// throws, the others are called all the same, and the first exception is raised again at the end.
    void Broadcast(const std::function<void(NotificationListener&)>& notify) const;

private:
    friend class NotificationListener;
    class Registration;
    struct State;

    State* GetState() const;
    const std::shared_ptr<State>& MakeState();

    // Made with the first listener: most objects never have one.
    std::atomic<std::shared_ptr<State>*> m_state{nullptr};
};

/// Base of whatever wants to be notified.
class QOR_CORE_API NotificationListener {
public:
    NotificationListener();
    NotificationListener(const NotificationListener&) = delete;
    NotificationListener& operator=(const NotificationListener&) = delete;
    /// Unregisters. That is too late for derived classes that are called on other threads: their destructors call
    /// `Unregister` first.
    virtual ~NotificationListener();

    /// Removes this listener from all supports.
    void Unregister();

private:
    friend class NotificationSupport;

    void Remember(const std::shared_ptr<NotificationSupport::Registration>& registration);

    std::mutex m_mutex;
    std::vector<std::weak_ptr<NotificationSupport::Registration>> m_registrations;
    std::size_t m_tidyAt = 8;
};

} // namespace Qor::Core
