#include <QorCore/Notification.h>

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <thread>
#include <utility>

namespace Qor::Core {

// One listener at one support. It knows who is being called, so that its end can wait for that.
class NotificationSupport::Registration {
public:
    Registration(NotificationListener& listener, std::weak_ptr<State> state)
        : m_state(std::move(state)), m_listener(&listener) {}

    bool IsOf(const NotificationListener& listener) const { return m_listener == &listener; }
    std::shared_ptr<State> GetSupport() const { return m_state.lock(); }

    void Deliver(const std::function<void(NotificationListener&)>& notify) {
        {
            const std::lock_guard lock(m_mutex);
            if (m_isClosed)
                return;
            m_callers.push_back(std::this_thread::get_id());
        }
        const Leaving leaving{*this};
        notify(*m_listener);
    }

    void Close() {
        const auto isOther = [self = std::this_thread::get_id()](std::thread::id caller) { return caller != self; };
        std::unique_lock lock(m_mutex);
        m_isClosed = true;
        m_left.wait(lock, [&] { return std::none_of(m_callers.begin(), m_callers.end(), isOther); });
    }

private:
    struct Leaving {
        Registration& registration;
        ~Leaving() { registration.Leave(); }
    };

    void Leave() {
        const std::lock_guard lock(m_mutex);
        m_callers.erase(std::find(m_callers.begin(), m_callers.end(), std::this_thread::get_id()));
        if (m_isClosed)
            m_left.notify_all();
    }

    const std::weak_ptr<State> m_state;
    NotificationListener* const m_listener;
    std::mutex m_mutex;
    std::condition_variable m_left;
    std::vector<std::thread::id> m_callers;
    bool m_isClosed = false;
};

// The list is never changed once it stands here: a delivery walks the one that it found.
struct NotificationSupport::State {
    using Registrations = std::vector<std::shared_ptr<Registration>>;

    std::shared_ptr<const Registrations> Get() const {
        const std::lock_guard lock(mutex);
        return registrations;
    }

    template <class Change>
    void Replace(Change change) {
        const std::lock_guard lock(mutex);
        auto next = std::make_shared<Registrations>(*registrations);
        change(*next);
        count.store(next->size(), std::memory_order_relaxed);
        registrations = std::move(next);
    }

    // Takes out those that match, then ends them.
    template <class Matches>
    void Remove(Matches matches) {
        Registrations removed;
        Replace([&](Registrations& all) {
            const auto kept = std::stable_partition(all.begin(), all.end(),
                                                    [&](const auto& registration) { return !matches(*registration); });
            removed.assign(kept, all.end());
            all.erase(kept, all.end());
        });
        for (const auto& registration : removed)
            registration->Close();
    }

    std::atomic<std::size_t> count{0};
    mutable std::mutex mutex;
    std::shared_ptr<const Registrations> registrations = std::make_shared<Registrations>();
};

NotificationSupport::NotificationSupport() = default;

NotificationSupport::~NotificationSupport() {
    RemoveAll();
    delete m_state.load(std::memory_order_relaxed);
}

NotificationSupport::State* NotificationSupport::GetState() const {
    const std::shared_ptr<State>* const state = m_state.load(std::memory_order_acquire);
    return state != nullptr ? state->get() : nullptr;
}

const std::shared_ptr<NotificationSupport::State>& NotificationSupport::MakeState() {
    if (m_state.load(std::memory_order_acquire) == nullptr) {
        auto made = std::make_unique<std::shared_ptr<State>>(std::make_shared<State>());
        std::shared_ptr<State>* none = nullptr;
        if (m_state.compare_exchange_strong(none, made.get(), std::memory_order_acq_rel))
            made.release();
    }
    return *m_state.load(std::memory_order_acquire);
}

void NotificationSupport::AddListener(NotificationListener& listener) {
    const std::shared_ptr<State>& state = MakeState();
    const auto added = std::make_shared<Registration>(listener, state);
    listener.Remember(added);
    state->Replace([&](State::Registrations& all) {
        const auto isSame = [&](const auto& registration) { return registration->IsOf(listener); };
        if (std::none_of(all.begin(), all.end(), isSame))
            all.push_back(added);
    });
}

void NotificationSupport::RemoveListener(NotificationListener& listener) {
    if (State* const state = GetState())
        state->Remove([&](const Registration& registration) { return registration.IsOf(listener); });
}

void NotificationSupport::RemoveAll() {
    if (State* const state = GetState())
        state->Remove([](const Registration&) { return true; });
}

bool NotificationSupport::HasListeners() const {
    const State* const state = GetState();
    return state != nullptr && state->count.load(std::memory_order_relaxed) != 0;
}

void NotificationSupport::Broadcast(const std::function<void(NotificationListener&)>& notify) const {
    if (!HasListeners())
        return;
    std::exception_ptr first;
    // From here on this object may be destroyed by one whom it calls.
    const std::shared_ptr<const State::Registrations> registrations = GetState()->Get();
    for (const auto& registration : *registrations) {
        try {
            registration->Deliver(notify);
        } catch (...) {
            if (!first)
                first = std::current_exception();
        }
    }
    if (first)
        std::rethrow_exception(first);
}

NotificationListener::NotificationListener() = default;

NotificationListener::~NotificationListener() { Unregister(); }

void NotificationListener::Remember(const std::shared_ptr<NotificationSupport::Registration>& registration) {
    const std::lock_guard lock(m_mutex);
    // Rarely, so that a listener of many supports does not look at all of them for each.
    if (m_registrations.size() >= m_tidyAt) {
        std::erase_if(m_registrations, [](const auto& known) { return known.expired(); });
        m_tidyAt = std::max<std::size_t>(8, 2 * m_registrations.size());
    }
    m_registrations.push_back(registration);
}

void NotificationListener::Unregister() {
    std::vector<std::weak_ptr<NotificationSupport::Registration>> registrations;
    {
        const std::lock_guard lock(m_mutex);
        registrations.swap(m_registrations);
    }
    for (const auto& known : registrations)
        if (const auto registration = known.lock()) {
            if (const auto support = registration->GetSupport())
                support->Remove([&](const auto& other) { return &other == registration.get(); });
            registration->Close();
        }
}

} // namespace Qor::Core
