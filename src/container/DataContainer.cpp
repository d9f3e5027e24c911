#include "../serialization/FramedWrite.h"
#include "ContainerState.h"

#include <QorCore/LockSet.h>
#include <QorCore/Message.h>

#include <utility>

namespace Qor::Tivor {

PutNullDataPtr::~PutNullDataPtr() = default;

const std::string sMETA_DATA = "MetaData";

/// Turns the reports of a state into calls of the hooks.
class DataContainer::HookCaller final : public ContainerListener {
public:
    explicit HookCaller(DataContainer& container) : m_container(container) {}
    ~HookCaller() override { Unregister(); }

    void OnChange(const std::string& key, const std::shared_ptr<DataObject>& object, EDataChange change) override {
        switch (change) {
        case EDataChange::object:
            return m_container.OnDataObjectChanged(key, object);
        case EDataChange::reference:
            return m_container.OnDataReferenceChanged(key, object);
        case EDataChange::value:
            return m_container.OnDataValueChanged(key, object);
        }
    }

private:
    DataContainer& m_container;
};

DataContainer::DataContainer(bool lockableByDefault) : m_state(ContainerState::Create(lockableByDefault)) {}

DataContainer::DataContainer(StandAlone) : m_state(ContainerState::Create(false, true)) {}

DataContainer::DataContainer(const DataContainer& other) : DataContainer(other.DefaultsToLockableData()) {
    DataContainer::Append(other);
}

DataContainer& DataContainer::operator=(const DataContainer& other) {
    Assign(other);
    return *this;
}

DataContainer::~DataContainer() = default;

std::shared_ptr<DataContainer> DataContainer::Create(bool lockableByDefault) {
    return std::make_shared<DataContainer>(lockableByDefault);
}

std::shared_ptr<DataContainer> DataContainer::Create(const DataContainer& other) { return other.Clone(); }

std::shared_ptr<DataContainer> DataContainer::Create(Core::BinaryInputStream& stream, bool lockableByDefault) {
    auto container = Create(lockableByDefault);
    container->InputData(stream);
    return container;
}

std::shared_ptr<DataContainer> DataContainer::Clone() const {
    auto clone = Create(DefaultsToLockableData());
    clone->CloneContents(*this);
    return clone;
}

bool DataContainer::Exists(std::string key) const { return ContainerAccess(*m_state)->GetTable().Find(key) != nullptr; }

std::shared_ptr<DataObject> DataContainer::Get(const std::string& key) {
    const ContainerAccess state(*m_state);
    const NumberedEntry* const entry = state->GetTable().Find(key);
    return entry != nullptr ? entry->object : nullptr;
}

Core::QorConstPtr<DataObject> DataContainer::Get(const std::string& key) const {
    return const_cast<DataContainer&>(*this).Get(key);
}

std::shared_ptr<DataContainer> DataContainer::GetSubContainer(const std::string& key, bool create) {
    std::shared_ptr<DataContainer> container;
    Atomically([&] {
        if (const std::shared_ptr<DataObject> object = Get(key)) {
            const auto wrapper = std::dynamic_pointer_cast<DataContainerWrapper>(object);
            container = wrapper ? wrapper->GetData() : nullptr;
        } else if (create) {
            container = Create(false);
            Put(key, container);
        }
    });
    return container;
}

// Each step locks one container only.
std::shared_ptr<DataContainer> DataContainer::GetSubData(const std::vector<std::string>& path, bool create) {
    std::shared_ptr<DataContainer> reached;
    for (const std::string& key : path) {
        reached = (reached ? *reached : *this).GetSubContainer(key, create);
        if (!reached)
            break;
    }
    return reached;
}

std::shared_ptr<DataObject> DataContainer::Remove(const std::string& key) {
    ContainerState::Change change;
    std::shared_ptr<DataObject> removed;
    {
        const ContainerAccess state(*m_state);
        removed = state->Remove(key, state->batch != nullptr ? *state->batch : change);
    }
    change.Report();
    return removed;
}

std::uint64_t DataContainer::NumDataObjects() const { return ContainerAccess(*m_state)->GetTable().GetCount(); }

void DataContainer::EnumData(std::set<std::string>& keys) const {
    for (const Entry& entry : *this)
        keys.insert(entry.key);
}

void DataContainer::EnumData(std::vector<std::string>& keys) const {
    for (const Entry& entry : *this)
        keys.push_back(entry.key);
}

void DataContainer::Atomically(const std::function<void()>& work) {
    ContainerState::Change change;
    {
        const ContainerAccess state(*m_state);
        if (state->batch != nullptr) {
            work(); // part of a larger operation
            return;
        }
        state->batch = &change;
        try {
            work();
        } catch (...) {
            state->batch = nullptr;
            throw;
        }
        state->batch = nullptr;
    }
    change.Report();
}

// When an entry is refused, those before it are taken back, latest first.
void DataContainer::PutAll(Iterator entry) {
    std::vector<Entry> former;
    std::size_t stored = 0;
    try {
        for (; entry != end(); ++entry) {
            former.push_back({entry->key, Get(entry->key)});
            PutDataObject(entry->key, entry->object);
            ++stored;
        }
    } catch (...) {
        for (former.resize(stored); !former.empty(); former.pop_back())
            if (former.back().object)
                PutDataObject(former.back().key, former.back().object);
            else
                Remove(former.back().key);
        throw;
    }
}

void DataContainer::Append(const DataContainer& other) {
    if (&other != this)
        Atomically([this, entry = other.begin()] { PutAll(entry); });
}

void DataContainer::Assign(const DataContainer& other) {
    if (&other == this)
        return;
    Atomically([this, next = other.begin()] {
        const Iterator former = begin();
        Clear();
        try {
            PutAll(next);
        } catch (...) {
            PutAll(former);
            throw;
        }
    });
}

void DataContainer::Clear() {
    ContainerState::Change change;
    {
        const ContainerAccess state(*m_state);
        state->Clear(state->batch != nullptr ? *state->batch : change);
    }
    change.Report();
}

void DataContainer::CloneContents(const DataContainer& other) {
    const NestingLevel level;
    DataContainer clones(other.DefaultsToLockableData());
    for (const Entry& entry : other)
        clones.PutDataObject(entry.key, entry.object->Clone());
    Assign(clones);
}

void DataContainer::AcquireLocks(std::vector<std::shared_ptr<Core::Lock>>& locks) const {
    Core::LockSet::Acquire(locks, [&] { m_state->CollectLocks(*Core::LockSet::Collecting()); });
}

void DataContainer::Put(const std::string& key, Core::QorConstPtr<DataObject> object) {
    PutDataObject(key, std::const_pointer_cast<DataObject>(std::move(object)));
}

void DataContainer::Put(const std::string& key, std::shared_ptr<DataContainer> container) {
    PutDataObject(key, container ? ValueTraits<DataContainer>::MakeData(std::move(container)) : nullptr);
}

void DataContainer::Put(const std::string& key, const char* text, bool enableSerialization,
                        boost::logic::tribool lockable) {
    auto object = MakeData(std::string(text));
    object->EnableSerialization(enableSerialization);
    if (lockable)
        object->EnableDataLocking();
    boost::logic::indeterminate(lockable) ? PutMade(key, std::move(object)) : PutDataObject(key, std::move(object));
}

void DataContainer::Put(const std::string& key, const wchar_t* text, bool enableSerialization,
                        boost::logic::tribool lockable) {
    auto object = MakeData(std::wstring(text));
    object->EnableSerialization(enableSerialization);
    if (lockable)
        object->EnableDataLocking();
    boost::logic::indeterminate(lockable) ? PutMade(key, std::move(object)) : PutDataObject(key, std::move(object));
}

void DataContainer::PutMade(const std::string& key, std::shared_ptr<MutexLockableDataObject> object) {
    if (DefaultsToLockableData())
        object->EnableDataLocking();
    PutDataObject(key, std::move(object));
}

void DataContainer::PutDataObject(const std::string& key, std::shared_ptr<DataObject> object) {
    if (!object) {
        Core::Warning::RaiseWarning(
            PutNullDataPtr(Core::FormatText("Attempted to store a NULL shared ptr as data under key %1%", {key})),
            QOR_CODE_CONTEXT("DataContainer"), "Qor.Tivor.DataContainer.Put");
        return;
    }
    ContainerState::Change change;
    {
        const ContainerAccess state(*m_state);
        state->Put(key, std::move(object), state->batch != nullptr ? *state->batch : change);
    }
    change.Report();
}

DataContainer::Iterator DataContainer::begin() const {
    const ContainerAccess state(*m_state);
    return Iterator(state->GetTable().GetBlock());
}

void DataContainer::ForAllDataIn(
    const DataContainer& container,
    const std::function<void(const std::string&, const std::shared_ptr<DataObject>&)>& callback, bool lock) {
    const auto held = lock ? std::make_shared<Core::Lock>(container.BeginDataAccess()) : nullptr;
    for (const Entry& entry : container)
        callback(entry.key, entry.object);
}

DataContainer& DataContainer::operator+=(const DataContainer& other) {
    Append(other);
    return *this;
}

bool DataContainer::operator==(const DataContainer& other) const {
    if (&other == this)
        return true;
    const DataContainer theirs(other); // so that the two are never locked together
    std::uint64_t count = 0;
    for (const Entry& entry : *this) {
        const std::shared_ptr<const DataObject> match = theirs.Get(entry.key);
        if (!match)
            return false;
        if (match != entry.object &&
            !(entry.object->HoldsSameTypeAs(*match) && bool(entry.object->HoldsSameValueAs(*match))))
            return false;
        ++count;
    }
    return count == theirs.NumDataObjects();
}

void DataContainer::DefaultToLockableData(bool lockable) { ContainerAccess(*m_state)->SetLockableByDefault(lockable); }

bool DataContainer::DefaultsToLockableData() const {
    return m_state->StandsAlone() ? ContainerAccess(*m_state)->IsLockableByDefault() : m_state->IsLockableByDefault();
}

void DataContainer::EnableSizeTracking(bool enable) { ContainerAccess(*m_state)->EnableSizeTracking(enable); }

std::uint64_t DataContainer::GetDataSize_bytes() const {
    std::vector<std::shared_ptr<Core::Lock>> locks;
    AcquireLocks(locks);
    const FramedWrite frame(std::move(locks));
    return ContainerAccess(*m_state)->GetTrackedSize_bytes();
}

std::shared_ptr<Core::Mutex> DataContainer::BeginDataAccess() const { return m_state->GetSharedMutex(); }

void DataContainer::OnDataObjectChanged(const std::string&, std::shared_ptr<DataObject>) {}

void DataContainer::OnDataReferenceChanged(const std::string&, std::shared_ptr<DataObject>) {}

void DataContainer::OnDataValueChanged(const std::string&, std::shared_ptr<DataObject>) {}

void DataContainer::ReceiveChanges() {
    const ContainerAccess state(*m_state);
    auto hooks = std::make_unique<HookCaller>(*this);
    state->AddListener(*hooks);
    m_hooks = std::move(hooks);
}

void DataContainer::StopChanges() { m_hooks.reset(); }

void DataContainer::BindTo(const DataContainer& other) {
    if (other.m_state->StandsAlone())
        Core::Error::RaiseError(Core::LogicError("A data file cannot be bound to the entries of another data file"),
                                QOR_CODE_CONTEXT("DataContainer"), "Qor.Tivor.DataContainer");
    const bool receives = m_hooks != nullptr;
    StopChanges();
    {
        const Core::MutexGuard guard(m_state->mutex);
        m_state->delegate = other.m_state;
    }
    if (receives)
        ReceiveChanges();
}

void DataContainer::Unbind() {
    const bool receives = m_hooks != nullptr;
    StopChanges();
    {
        const Core::MutexGuard guard(m_state->mutex);
        m_state->delegate.reset();
    }
    if (receives)
        ReceiveChanges();
}

} // namespace Qor::Tivor
