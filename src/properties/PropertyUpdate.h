#pragma once

#include "PropertyAttributes.h"

#include <QorCore/Log.h>

#include <exception>

namespace Qor::Tivor {

/// Ends an update at the end of a scope, as `end` does it. What that raises is raised, unless the scope is left by an
/// exception: then it is logged.
template <class End>
void CloseUpdate(int exceptionsBefore, End end) {
    if (std::uncaught_exceptions() == exceptionsBefore)
        return end();
    try {
        end();
    } catch (const std::exception& error) {
        Core::Log("Qor.Tivor.PropertyContainer", std::string("A listener failed: ") + error.what());
    } catch (...) {
        Core::Log("Qor.Tivor.PropertyContainer", "A listener failed");
    }
}

/// Those operations are const which change nothing themselves.
inline PropertyContainer& Unconst(const PropertyContainer& container) {
    return const_cast<PropertyContainer&>(container);
}

/// Raises `NullPointerError` for a null argument.
void RequireValue(const std::shared_ptr<DataObject>& value, const char* argument, const char* category);

/// An operation that changes properties, or asks handlers which may: holds the lock for its whole run, closes its
/// update in the end, and keeps a shared container alive until then.
class PropertyContainer::Update {
public:
    explicit Update(PropertyContainer& container)
        : m_container(container), m_kept(container.weak_from_this().lock()), m_lock(container.m_mutex),
          m_exceptions(std::uncaught_exceptions()) {
        ++container.m_updateDepth;
    }
    Update(const Update&) = delete;
    Update& operator=(const Update&) = delete;
    ~Update() noexcept(false) {
        CloseUpdate(m_exceptions, [this] { m_container.EndMultiPropertyUpdate(m_lock); });
    }

private:
    PropertyContainer& m_container;
    std::shared_ptr<PropertyContainer> m_kept; // until after the lock
    Lock m_lock;
    int m_exceptions;
};

} // namespace Qor::Tivor
