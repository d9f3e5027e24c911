#pragma once

#include <Tivor/PropertyHandlers.h>

#include <functional>
#include <thread>

namespace Qor::Tivor::Testing {

enum class EMode : int { slow = 0, fast = 1, odd = 7 };

/// A container whose protected operations are open.
class Instrument : public PropertyContainer {
public:
    explicit Instrument(bool allowsNew = false) : PropertyContainer(allowsNew) {}

    using PropertyContainer::AddProperties;
    using PropertyContainer::AddProperty;
    using PropertyContainer::AddValidator;
    using PropertyContainer::Aggregate;
    using PropertyContainer::AllowSetOfNonExistingProperties;
    using PropertyContainer::Clear;
    using PropertyContainer::CloneContents;
    using PropertyContainer::CloneProperty;
    using PropertyContainer::Description;
    using PropertyContainer::GetActiveChangeEvent;
    using PropertyContainer::GetAttributes;
    using PropertyContainer::GetChangeHandler;
    using PropertyContainer::GetPropertyData;
    using PropertyContainer::GetReadHandler;
    using PropertyContainer::GetValidators;
    using PropertyContainer::PerformingMultiPropertyUpdate;
    using PropertyContainer::RemoveAllPropertyChangeListeners;
    using PropertyContainer::RemoveProperty;
    using PropertyContainer::RemoveValidator;
    using PropertyContainer::SetAttribute;
    using PropertyContainer::SetAttributes;
    using PropertyContainer::SetChangeHandler;
    using PropertyContainer::SetPermissions;
    using PropertyContainer::SetPropertyDefault;
    using PropertyContainer::SetReadHandler;
    using PropertyContainer::SetTexts;
    using PropertyContainer::Texts;
    using PropertyContainer::UpdateProperty;

    /// Adds a property that can be read and written.
    template <class T>
    void Add(const std::string& name, const T& value, std::shared_ptr<Validator> validator = nullptr,
             std::shared_ptr<ChangeHandler> handler = nullptr) {
        AddProperty(name, MakePropertyValue(value), eREADABLE_WRITABLE, nullptr, std::move(validator),
                    std::move(handler));
    }

    std::function<EPropertyChangeResult(const PropertyChangeEvent&)> onExternal;

protected:
    EPropertyChangeResult OnExternalPropertyAdded(const PropertyChangeEvent& event) override {
        return onExternal ? onExternal(event) : PropertyContainer::OnExternalPropertyAdded(event);
    }
};

/// Any function as a callback.
template <class R, class A>
class Calling final : public Core::CallbackRetArg<R, A> {
public:
    explicit Calling(std::function<R(A)> work) : m_work(std::move(work)) {}
    R Execute(A argument) override { return m_work(std::forward<A>(argument)); }

private:
    std::function<R(A)> m_work;
};

inline std::shared_ptr<PropertyContainer::Validator>
Validating(std::function<void(PropertyContainer::OfferedValue&)> work) {
    return std::make_shared<Calling<void, PropertyContainer::OfferedValue&>>(std::move(work));
}
inline std::shared_ptr<PropertyContainer::ChangeHandler>
Handling(std::function<EPropertyChangeResult(const PropertyChangeEvent&)> work) {
    return std::make_shared<Calling<EPropertyChangeResult, const PropertyChangeEvent&>>(std::move(work));
}
inline std::shared_ptr<PropertyContainer::ReadHandler> Reading(std::function<bool(const std::string&)> work) {
    return std::make_shared<Calling<bool, const std::string&>>(std::move(work));
}
inline std::shared_ptr<PropertyContainer::ChangeDelegate>
Delegating(std::function<void(const PropertyChangeEvent&)> work) {
    return std::make_shared<Calling<void, const PropertyChangeEvent&>>(std::move(work));
}

/// Writes down "name: old -> new" of each event, and then runs an action.
class EventLog final : public PropertyChangeListener {
public:
    EventLog() = default;
    explicit EventLog(PropertyContainer& container) { container.AddPropertyChangeListener(*this); }
    ~EventLog() override { Unregister(); }

    void PropertyChanged(const PropertyChangeEvent& event) override {
        const auto text = [](const auto& object) { return object ? object->ToString() : std::string("none"); };
        events.push_back(event.GetPropertyName() + ": " + text(event.GetOldValue()) + " -> " +
                         text(event.GetNewValue()));
        if (action)
            action(event);
    }

    std::vector<std::string> Take() { return std::exchange(events, {}); }

    std::vector<std::string> events;
    std::function<void(const PropertyChangeEvent&)> action;
};

/// Waits for the container's lock on another thread: for ever if it was not released.
inline void NeedTheLock(const PropertyContainer& container) {
    std::thread([&] { container.NumProperties(); }).join();
}

using Events = std::vector<std::string>;

} // namespace Qor::Tivor::Testing
