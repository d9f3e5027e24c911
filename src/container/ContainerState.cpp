#include "ContainerState.h"

#include "../model/LeafMutex.h"
#include "ContainerStateParts.h"

#include <QorCore/LockSet.h>

#include <utility>

namespace Qor::Tivor {

namespace {

// Reports its changes, or null.
MutexLockableDataObject* AsReporting(DataObject& object) { return dynamic_cast<MutexLockableDataObject*>(&object); }

} // namespace

std::shared_ptr<ContainerState> ContainerState::Create(bool lockableByDefault, bool standsAlone) {
    auto state = std::make_shared<ContainerState>(lockableByDefault, standsAlone);
    state->m_self = state;
    state->m_parentOfEntries = state;
    return state;
}

ContainerState::ContainerState(bool lockableByDefault, bool standsAlone)
    : m_lockableByDefault(lockableByDefault), m_standsAlone(standsAlone) {}

// Links to a state that is gone count as none, so nothing is detached here.
ContainerState::~ContainerState() = default;

std::unique_lock<std::mutex> ContainerState::LockStructure() {
    return m_isHeard ? std::unique_lock(LeafMutexOf(this)) : std::unique_lock<std::mutex>();
}

void ContainerState::Attach(std::uint64_t number, DataObject& object, bool unshared) {
    MutexLockableDataObject* const reporting = AsReporting(object);
    if (reporting == nullptr)
        return;
    if (unshared)
        reporting->m_links.AddUnshared(m_parentOfEntries, number);
    else
        reporting->m_links.Add(m_parentOfEntries, number);
}

void ContainerState::Detach(std::uint64_t number, DataObject& object) {
    MutexLockableDataObject* const reporting = AsReporting(object);
    if (reporting == nullptr)
        return;
    if (reporting->m_holdsContainer) {
        const std::lock_guard graph(NestingMutex());
        reporting->m_links.Remove(this, number);
        Unnest(number, *HeldBy(object));
    } else {
        reporting->m_links.Remove(this, number);
    }
}

std::uint64_t ContainerState::PlaceInTable(const std::string& key, std::shared_ptr<DataObject> object,
                                           Change& change) {
    const auto structure = LockStructure();
    const NumberedEntry* const former = m_table.Find(key);
    if (former == nullptr)
        return m_table.Insert(key, std::move(object)).number;
    change.m_takenOut.push_back(m_table.Replace(*former, std::move(object)));
    return m_table.Find(key)->number;
}

void ContainerState::Put(const std::string& key, std::shared_ptr<DataObject> object, Change& change) {
    if (const NumberedEntry* const former = m_table.Find(key); former != nullptr && former->object == object)
        return;
    std::unique_lock<std::recursive_mutex> graph;
    const std::shared_ptr<ContainerState> child = HeldBy(*object);
    if (child) {
        graph = std::unique_lock(NestingMutex());
        RequireNestable(*this, *child);
    }
    const bool unshared = object.use_count() == 1;
    DataObject& stored = *object;
    Note(key, object, change);
    const std::uint64_t number = PlaceInTable(key, std::move(object), change);
    if (!change.m_takenOut.empty())
        Detach(number, *change.m_takenOut.back());
    Attach(number, stored, unshared);
    if (child)
        Nest(number, *child);
    MarkStale(number);
}

std::shared_ptr<DataObject> ContainerState::Remove(const std::string& key, Change& change) {
    const NumberedEntry* const entry = m_table.Find(key);
    if (entry == nullptr)
        return nullptr;
    Note(key, nullptr, change);
    const std::uint64_t number = entry->number;
    std::shared_ptr<DataObject> object;
    {
        const auto structure = LockStructure();
        object = m_table.Remove(*entry);
    }
    Detach(number, *object);
    MarkStale(number);
    return object;
}

void ContainerState::Clear(Change& change) {
    if (m_table.GetCount() == 0)
        return;
    std::vector<std::pair<std::uint64_t, std::shared_ptr<DataObject>>> shared;
    for (const NumberedEntry& entry : m_table.GetBlock()->entries) {
        if (!entry.object)
            continue;
        Note(entry.key, nullptr, change);
        if (entry.object.use_count() > 1)
            shared.emplace_back(entry.number, entry.object);
        MarkStale(entry.number);
    }
    {
        const auto structure = LockStructure();
        change.m_block = m_table.TakeAll();
    }
    for (const auto& [number, object] : shared)
        Detach(number, *object);
}

void ContainerState::CollectLocks(Core::LockSet& set) {
    using EResult = Core::LockSet::EResult;
    if (set.Add(GetSharedMutex()) != EResult::added)
        return;
    if (delegate) {
        delegate->CollectLocks(set);
        return;
    }
    if (!m_table.GetBlock())
        return;
    // Classes of other libraries may lock whatever they like, and wait for it: theirs come last.
    std::vector<DataObject*> foreign;
    std::vector<std::shared_ptr<Core::Lock>> locks;
    for (const NumberedEntry& entry : m_table.GetBlock()->entries) {
        if (!entry.object)
            continue;
        if (entry.object->GetTypeID() == eNO_TYPE)
            foreign.push_back(entry.object.get());
        else
            entry.object->AcquireLocks(locks);
        if (set.IsBusy())
            return;
    }
    for (const DataObject* const object : foreign)
        object->AcquireLocks(locks);
    for (std::shared_ptr<Core::Lock>& lock : locks)
        set.Adopt(std::move(lock));
}

} // namespace Qor::Tivor
