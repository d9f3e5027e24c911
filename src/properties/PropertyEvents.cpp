#include "PropertyUpdate.h"

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
    return std::make_shared<PropertyChangeEvent>(*this, name, std::move(newValue), std::move(oldValue));
}

void PropertyContainer::Queue(std::shared_ptr<PropertyChangeEvent> event) {
    if (!m_pendingEvent)
        m_pendingEvent = std::move(event);
    else
        m_morePendingEvents.push_back(std::move(event));
}

void PropertyContainer::DropPendingEvents() {
    m_pendingEvent.reset();
    m_morePendingEvents.clear();
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
    Lock lock(m_mutex);
    EndMultiPropertyUpdate(lock);
}

void PropertyContainer::EndMultiPropertyUpdate(Lock& lock) {
    if (--m_updateDepth != 0 || !m_pendingEvent)
        return;
    const std::shared_ptr<PropertyChangeEvent> first = std::exchange(m_pendingEvent, nullptr);
    if (m_morePendingEvents.empty()) {
        lock.Release();
        return Deliver({&first, 1});
    }
    auto events = std::exchange(m_morePendingEvents, {});
    events.insert(events.begin(), first);
    lock.Release();
    Deliver(events);
}

// A listener may end the container, unless somebody shares it.
void PropertyContainer::Deliver(std::span<const std::shared_ptr<PropertyChangeEvent>> events) {
    const std::weak_ptr<const void> life = m_life;
    const std::shared_ptr<PropertyContainer> kept = weak_from_this().lock();
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
