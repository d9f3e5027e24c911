#include <QorCore/LockSet.h>
#include <Tivor/GenericWrapper.h>

#include <utility>

namespace Qor::Tivor {

DataObject::~DataObject() = default;

ETypeID DataObject::GetTypeID() { return eNO_TYPE; }

void DataObject::GetBaseDataTypeInfo(ETypeID& typeID, std::string& typeName) const {
    typeID = eNO_TYPE;
    typeName.clear();
}

boost::logic::tribool DataObject::HoldsSameValueAs(const DataObject&) { return boost::logic::indeterminate; }

bool DataObject::EnableSerialization(bool enable) { return !enable; }

bool DataObject::SerializationIsEnabled() const { return Mutable().GetSerializer() != nullptr; }

std::shared_ptr<Serializer> DataObject::GetSerializer() { return nullptr; }

bool DataObject::IsLockable() const { return false; }

bool DataObject::EnableDataLocking() { return false; }

void DataObject::AcquireLocks(std::vector<std::shared_ptr<Core::Lock>>&) const {}

std::string DataObject::ToString() { return GetTypeName(); }

MutexLockableDataObject::MutexLockableDataObject() = default;

MutexLockableDataObject::MutexLockableDataObject(const MutexLockableDataObject& other)
    : DataObject(other), m_serializationEnabled(other.m_serializationEnabled),
      m_mutex(other.m_mutex ? std::make_shared<Core::Mutex>() : nullptr) {}

MutexLockableDataObject::~MutexLockableDataObject() = default;

bool MutexLockableDataObject::IsLockable() const { return m_mutex != nullptr; }

bool MutexLockableDataObject::EnableDataLocking() {
    if (!m_mutex)
        m_mutex = std::make_shared<Core::Mutex>();
    return true;
}

void MutexLockableDataObject::AcquireLocks(std::vector<std::shared_ptr<Core::Lock>>& locks) const {
    if (const auto* const holder = m_holdsContainer ? dynamic_cast<const Details::ContentHolder*>(this) : nullptr)
        return Core::LockSet::Acquire(locks, [&] {
            if (m_mutex)
                Core::LockSet::Collecting()->Add(m_mutex);
            holder->AcquireContentLocks(locks);
        });
    if (!m_mutex)
        return;
    if (Core::LockSet* const set = Core::LockSet::Collecting())
        set->Add(m_mutex);
    else
        Core::Lock::Append(locks, std::make_shared<Core::Lock>(m_mutex));
}

std::shared_ptr<Core::Lock> MutexLockableDataObject::GetDataLock() {
    return m_mutex ? std::make_shared<Core::Lock>(m_mutex) : nullptr;
}

std::shared_ptr<DataObject>* CreateDataObjectPtr(std::shared_ptr<DataObject> object) {
    return new std::shared_ptr<DataObject>(std::move(object));
}

std::shared_ptr<DataObject> WrapRawDataObject(DataObject* object) {
    return object != nullptr ? std::shared_ptr<DataObject>(object, [](DataObject*) {}) : nullptr;
}

} // namespace Qor::Tivor
