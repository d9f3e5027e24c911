#include "PropertyUpdate.h"

#include <QorCore/ObjectPool.h>

#include <algorithm>
#include <utility>

namespace Qor::Tivor {

namespace {

/// Runs all, and raises the first exception again at the end.
class FirstException {
public:
    template <class Work>
    void Catch(Work work) {
        try {
            work();
        } catch (...) {
            if (!m_first)
                m_first = std::current_exception();
        }
    }
    void Rethrow() const {
        if (m_first)
            std::rethrow_exception(m_first);
    }

private:
    std::exception_ptr m_first;
};

Core::ObjectPoolBase& EventPool() {
    static auto* const pool = new Core::ObjectPoolBase(64, 256);
    return *pool;
}

} // namespace

PropertyChangeListener::~PropertyChangeListener() = default;

PropertyChangeEvent::PropertyChangeEvent(PropertyContainer& changed, std::string name,
                                         Core::QorConstPtr<DataObject> newValue, Core::QorConstPtr<DataObject> oldValue)
    : m_changed(changed), m_life(changed.m_life), m_name(std::move(name)), m_newValue(std::move(newValue)),
      m_oldValue(std::move(oldValue)) {}

PropertyChangeDelegator::~PropertyChangeDelegator() = default;

void PropertyChangeDelegator::Add(const std::string& name, std::shared_ptr<Delegate> delegate) {
    if (!delegate)
        return;
    const std::lock_guard guard(m_mutex);
    m_delegates[name].push_back(std::move(delegate));
    ++m_count;
}

void PropertyChangeDelegator::Remove(const std::string& name, const Delegate& delegate) {
    const std::lock_guard guard(m_mutex);
    const auto found = m_delegates.find(name);
    if (found == m_delegates.end())
        return;
    m_count -= std::erase_if(found->second, [&](const auto& one) { return one->IsEqual(delegate); });
    if (found->second.empty())
        m_delegates.erase(found);
}

// A delegate may remove itself, and this object may end meanwhile.
void PropertyChangeDelegator::PropertyChanged(const PropertyChangeEvent& event) {
    Delegates delegates;
    {
        const std::lock_guard guard(m_mutex);
        if (const auto found = m_delegates.find(event.GetPropertyName()); found != m_delegates.end())
            delegates = found->second;
    }
    FirstException failures;
    for (const std::shared_ptr<Delegate>& delegate : delegates)
        failures.Catch([&] {
            if (!delegate->IsCallable())
                Core::Error::RaiseError(Core::NullPointerError("Invalid Delegate"),
                                        QOR_CODE_CONTEXT("PropertyContainer"), "Qor.Core.PropertyChangeDelegator");
            delegate->Execute(event);
        });
    failures.Rethrow();
}

bool PropertyContainer::HasPropertyChangeListeners() const {
    return m_listeners.HasListeners() || !m_delegator.IsEmpty();
}

void PropertyContainer::AddPropertyChangeListener(PropertyChangeListener& listener) {
    m_listeners.AddListener(listener);
}

// Without the container's lock: a removal waits for deliveries, whose listeners may want it.
void PropertyContainer::RemovePropertyChangeListener(PropertyChangeListener& listener) {
    m_listeners.RemoveListener(listener);
}

void PropertyContainer::RemoveAllPropertyChangeListeners() { m_listeners.RemoveAll(); }

void PropertyContainer::AddPropertyChangeDelegate(const std::string& name, std::shared_ptr<ChangeDelegate> delegate) {
    m_delegator.Add(name, std::move(delegate));
}

void PropertyContainer::RemovePropertyChangeDelegate(const std::string& name,
                                                     std::shared_ptr<ChangeDelegate> delegate) {
    if (delegate)
        m_delegator.Remove(name, *delegate);
}

std::shared_ptr<PropertyChangeEvent> PropertyContainer::CreateChangeEvent(const std::string& name,
                                                                          Core::QorConstPtr<DataObject> newValue,
                                                                          Core::QorConstPtr<DataObject> oldValue) {
    return std::allocate_shared<PropertyChangeEvent>(Core::PoolAllocator<PropertyChangeEvent, &EventPool>(), *this,
                                                     name, std::move(newValue), std::move(oldValue));
}

void PropertyContainer::Queue(std::shared_ptr<PropertyChangeEvent> event, std::size_t position) {
    if (position == 0)
        std::swap(event, m_pendingEvent);
    if (event)
        m_morePendingEvents.insert(m_morePendingEvents.begin() +
                                       static_cast<std::ptrdiff_t>(position == 0 ? 0 : position - 1),
                                   std::move(event));
}

void PropertyContainer::DropPendingEvents() {
    m_pendingEvent.reset();
    m_morePendingEvents.clear();
}

// Those of one property, from a place in the list on.
void PropertyContainer::DropPendingEvents(const std::string& name, std::size_t from) {
    std::vector<std::shared_ptr<PropertyChangeEvent>> events = TakePendingEvents();
    const auto first = events.begin() + static_cast<std::ptrdiff_t>(std::min(from, events.size()));
    events.erase(std::remove_if(first, events.end(), [&](const auto& one) { return one->GetPropertyName() == name; }),
                 events.end());
    for (auto& event : events)
        Queue(std::move(event));
}

std::vector<std::shared_ptr<PropertyChangeEvent>> PropertyContainer::TakePendingEvents() {
    auto events = std::exchange(m_morePendingEvents, {});
    if (auto first = std::exchange(m_pendingEvent, nullptr))
        events.insert(events.begin(), std::move(first));
    return events;
}

bool PropertyContainer::PerformingMultiPropertyUpdate() const {
    const Lock lock(m_mutex);
    return m_updateDepth != 0;
}

void PropertyContainer::BeginMultiPropertyUpdate() {
    const Lock lock(m_mutex);
    ++m_updateDepth;
}

void PropertyContainer::EndMultiPropertyUpdate() {
    const std::shared_ptr<PropertyContainer> kept = weak_from_this().lock();
    Lock lock(m_mutex);
    EndMultiPropertyUpdate(lock);
}

void PropertyContainer::EndMultiPropertyUpdate(Lock& lock) {
    if (--m_updateDepth != 0 || !m_pendingEvent)
        return;
    if (m_morePendingEvents.empty()) {
        const std::shared_ptr<PropertyChangeEvent> only = std::exchange(m_pendingEvent, nullptr);
        lock.Release();
        return Deliver({&only, 1});
    }
    const auto events = TakePendingEvents();
    lock.Release();
    Deliver(events);
}

// A listener may end the container, unless it is shared: then the update keeps it.
void PropertyContainer::Deliver(std::span<const std::shared_ptr<PropertyChangeEvent>> events) {
    const std::weak_ptr<const void> life = m_life;
    FirstException failures;
    for (const std::shared_ptr<PropertyChangeEvent>& event : events) {
        if (life.expired())
            break;
        if (event->ChangedObjectIsAlive())
            failures.Catch([&] { FirePropertyChange(event); });
    }
    failures.Rethrow();
}

void PropertyContainer::FirePropertyChange(std::shared_ptr<PropertyChangeEvent> event) {
    if (!HasPropertyChangeListeners())
        return;
    const std::weak_ptr<const void> life = m_life;
    const PropertyChangeEvent* const outer = GetActiveChangeEvent();
    SetActiveChangeEvent(event.get());
    FirstException failures;
    failures.Catch([&] {
        m_listeners.Broadcast([&](Core::NotificationListener& listener) {
            event->Notify(static_cast<PropertyChangeListener&>(listener));
        });
    });
    if (!life.expired() && !m_delegator.IsEmpty())
        failures.Catch([&] { m_delegator.PropertyChanged(*event); });
    if (!life.expired())
        SetActiveChangeEvent(outer);
    failures.Rethrow();
}

PropertyContainer::MultiPropertyUpdateSentry::MultiPropertyUpdateSentry(PropertyContainer& container)
    : m_container(&container), m_exceptions(std::uncaught_exceptions()) {
    container.BeginMultiPropertyUpdate();
}

PropertyContainer::MultiPropertyUpdateSentry::~MultiPropertyUpdateSentry() noexcept(false) {
    if (m_container != nullptr)
        CloseUpdate(m_exceptions, [this] { m_container->EndMultiPropertyUpdate(); });
}

} // namespace Qor::Tivor
