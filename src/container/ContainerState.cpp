#include "ContainerState.h"

#include "../model/LeafMutex.h"
#include "ContainerStateParts.h"

#include <QorCore/LockSet.h>

#include <array>
#include <functional>
#include <typeinfo>
#include <utility>

namespace Qor::Tivor {

namespace {

// The object as one that reports its changes, or null. A type that derives from the reporting base at its very
// beginning, as nearly all do, is looked into only once.
MutexLockableDataObject* AsReporting(DataObject& object) {
    static std::array<std::atomic<const std::type_info*>, 64> reporting{};
    const std::type_info& type = typeid(object);
    auto& known = reporting[std::hash<const void*>()(&type) / alignof(std::type_info) % reporting.size()];
    if (known.load(std::memory_order_relaxed) == &type)
        return static_cast<MutexLockableDataObject*>(&object);
    auto* const found = dynamic_cast<MutexLockableDataObject*>(&object);
    if (found != nullptr && static_cast<void*>(found) == dynamic_cast<void*>(&object))
        known.store(&type, std::memory_order_relaxed);
    return found;
}

} // namespace

std::shared_ptr<ContainerState> ContainerState::Create(bool lockableByDefault, bool standsAlone) {
    auto state = std::make_shared<ContainerState>(lockableByDefault, standsAlone);
    state->m_parentOfEntries = state;
    return state;
}

ContainerState::ContainerState(bool lockableByDefault, bool standsAlone)
    : m_lockableByDefault(lockableByDefault), m_standsAlone(standsAlone) {}

// Links to a state that is gone count as none, so nothing is detached here.
ContainerState::~ContainerState() {
    if (m_tracksSize)
        ChangeLinks::AddSizeTracker(-1);
}

std::unique_lock<std::mutex> ContainerState::LockStructure() {
    return m_isHeard ? std::unique_lock(LeafMutexOf(this)) : std::unique_lock<std::mutex>();
}

// What the object was told of this entry is taken back; a container in it stands here no longer.
void ContainerState::Detach(std::uint64_t number, DataObject& object) {
    MutexLockableDataObject* const reporting = AsReporting(object);
    if (reporting == nullptr)
        return;
    if (!reporting->m_holdsContainer) {
        reporting->m_links.Remove(this, number);
        return;
    }
    const std::lock_guard graph(NestingMutex());
    reporting->m_links.Remove(this, number);
    if (const std::shared_ptr<ContainerState> held = HeldBy(reporting))
        Unnest(number, *held);
}

void ContainerState::Link(std::uint64_t number, MutexLockableDataObject* object, bool unshared) {
    if (object == nullptr)
        return;
    if (unshared)
        object->m_links.AddUnshared(m_parentOfEntries, number);
    else
        object->m_links.Add(m_parentOfEntries, number);
}

void ContainerState::Unlink(std::uint64_t number, MutexLockableDataObject* object) {
    if (object != nullptr)
        object->m_links.Remove(this, number);
}

void ContainerState::Put(const std::string& key, std::shared_ptr<DataObject> object, Change& change) {
    const std::uint32_t hash = HashOfKey(key);
    m_table.Expect(hash);
    MutexLockableDataObject* const reporting = AsReporting(*object);
    const std::uint32_t position = m_table.PositionOf(key, hash);
    const NumberedEntry* const former = position != KeyIndex::none ? &m_table[position] : nullptr;
    if (former != nullptr && former->object == object)
        return;
    MutexLockableDataObject* const formerReporting = former != nullptr ? AsReporting(*former->object) : nullptr;

    std::unique_lock<std::recursive_mutex> graph;
    std::shared_ptr<ContainerState> arriving;
    std::shared_ptr<ContainerState> leaving;
    if (HoldsContainer(reporting) || HoldsContainer(formerReporting)) {
        graph = std::unique_lock(NestingMutex());
        arriving = HeldBy(reporting);
        leaving = HeldBy(formerReporting);
        if (arriving == leaving) // in another wrapper
            arriving = leaving = nullptr;
        if (arriving)
            RequireNestable(*this, *arriving);
    }

    const std::uint64_t number = former != nullptr ? former->number : m_table.GetNextNumber();
    if (IsObserved())
        Note(key, object, change);
    MarkStale(number);
    // Made before anything changes.
    std::shared_ptr<const void>* const place = former != nullptr ? &change.PlaceForTakenOut() : nullptr;
    Link(number, reporting, object.use_count() == 1);
    try {
        if (arriving)
            Nest(number, *arriving);
        const auto structure = LockStructure();
        if (former == nullptr)
            m_table.Insert(key, hash, std::move(object));
        else
            *place = m_table.Replace(position, std::move(object));
    } catch (...) {
        Unlink(number, reporting);
        if (arriving)
            Unnest(number, *arriving);
        throw;
    }
    Unlink(number, formerReporting);
    if (leaving)
        Unnest(number, *leaving);
    MarkAboveStale();
}

std::shared_ptr<DataObject> ContainerState::Remove(const std::string& key, Change& change) {
    const std::uint32_t hash = HashOfKey(key);
    const NumberedEntry* const entry = m_table.Find(key, hash);
    if (entry == nullptr)
        return nullptr;
    if (IsObserved())
        Note(key, nullptr, change);
    const std::uint64_t number = entry->number;
    std::shared_ptr<DataObject> object;
    {
        const auto structure = LockStructure();
        object = m_table.Remove(key, hash);
    }
    Detach(number, *object);
    MarkStale(number);
    MarkAboveStale();
    return object;
}

void ContainerState::Clear(Change& change) {
    if (m_table.GetCount() == 0)
        return;
    for (const NumberedEntry& entry : m_table.GetBlock()->entries) {
        if (!entry.object)
            continue;
        if (IsObserved())
            Note(entry.key, nullptr, change);
        MarkStale(entry.number);
    }
    std::shared_ptr<const void>& place = change.PlaceForTakenOut();
    std::shared_ptr<EntryBlock> block;
    {
        const auto structure = LockStructure();
        block = m_table.TakeAll();
    }
    for (const NumberedEntry& entry : block->entries)
        if (entry.object)
            Detach(entry.number, *entry.object);
    place = std::move(block);
    MarkAboveStale();
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
