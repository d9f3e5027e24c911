#include <QorCore/LockSet.h>
#include <Tivor/GenericWrapper.h>

namespace Qor::Tivor::Details {

std::vector<std::shared_ptr<Core::Lock>> LockBoth(const DataObject& one, const DataObject& other) {
    std::vector<std::shared_ptr<Core::Lock>> locks;
    Core::LockSet::Acquire(locks, [&] {
        one.AcquireLocks(locks);
        other.AcquireLocks(locks);
    });
    return locks;
}

void RaiseNoValue(const DataObject& object) {
    Core::Error::RaiseError(
        Core::NullPointerError("GetValue() called on an empty object of type " + object.GetTypeName()),
        QOR_CODE_CONTEXT("DataObject"), "Qor.Tivor.Data.GetValue");
}

} // namespace Qor::Tivor::Details
