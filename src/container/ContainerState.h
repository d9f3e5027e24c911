#pragma once

#include "EntryTable.h"

#include <QorCore/Context.h>
#include <QorCore/Notification.h>

#include <mutex>
#include <unordered_map>
#include <utility>

namespace Qor::Tivor {

/// Hears of changes in one container, with the key and the object concerned (null when it was removed).
class ContainerListener : public Core::NotificationListener {
public:
    virtual void OnChange(const std::string& key, const std::shared_ptr<DataObject>& object, EDataChange change) = 0;
};

/// What containers, files and property data share: entries, index, mutex, and the ways up to the containers that hold
/// this one.
///
/// Locks, outermost first: the container's mutex, the process-wide mutex of the nesting graph, the leaf mutex. No
/// operation holds the mutexes of two states, except `ContainerAccess` (own, then delegate) and lock sets.
class ContainerState final : public ChangeParent {
public:
    /// What one or more operations changed: it is told, and what was taken out dies, after the locks are released.
    class Change {
    public:
        Change() = default;
        Change(const Change&) = delete;
        Change& operator=(const Change&) = delete;
        /// Tells listeners and parents.
        void Report();

    private:
        friend class ContainerState;
        /// To be filled before the next one is asked for.
        std::shared_ptr<const void>& PlaceForTakenOut() {
            return m_firstTakenOut ? m_moreTakenOut.emplace_back() : m_firstTakenOut;
        }

        std::shared_ptr<ContainerState> m_state; // empty: nobody wants to know
        std::vector<std::pair<std::string, std::shared_ptr<DataObject>>> m_changed;
        std::shared_ptr<const void> m_firstTakenOut; // mostly there are no others
        std::vector<std::shared_ptr<const void>> m_moreTakenOut;
    };

    /// What readers accept by default, writers and builders never exceed.
    static constexpr std::uint32_t mostLevels = Core::ReadLimits{}.nesting;

    static std::shared_ptr<ContainerState> Create(bool lockableByDefault, bool standsAlone = false);
    ContainerState(bool lockableByDefault, bool standsAlone);
    ~ContainerState();

    // Guarded by the mutex, which the caller holds.
    const EntryTable& GetTable() const { return m_table; }
    void Put(const std::string& key, std::shared_ptr<DataObject> object, Change& change);
    std::shared_ptr<DataObject> Remove(const std::string& key, Change& change);
    void Clear(Change& change);
    /// May be asked without the mutex.
    bool IsLockableByDefault() const { return m_lockableByDefault.load(std::memory_order_relaxed); }
    bool StandsAlone() const { return m_standsAlone; }
    void SetLockableByDefault(bool lockable) { m_lockableByDefault = lockable; }
    void EnableSizeTracking(bool enable);
    /// What the end marker and all entries that can be written take in a stream. To be asked within a framed write,
    /// which remembers it.
    std::uint64_t MeasureSize_bytes() const;
    /// The same without measuring what reported no change, where sizes are tracked.
    std::uint64_t GetTrackedSize_bytes();

    /// Adds every mutex in and below this container to the set that the thread collects.
    void CollectLocks(Core::LockSet& set);

    /// To be called with the mutex held, or before others know of the state.
    void AddListener(ContainerListener& listener);
    void NoteChildChange(std::uint64_t entry) override;
    void OnChildChanged(std::uint64_t entry, EDataChange change) override;

    std::shared_ptr<Core::Mutex> GetSharedMutex() { return {Share(), &mutex}; }

    static bool HoldsContainer(const MutexLockableDataObject* object) {
        return object != nullptr && object->m_holdsContainer;
    }
    static const std::shared_ptr<ContainerState>& Of(const DataContainer& container) { return container.m_state; }
    /// The state that a data object holds, or an empty pointer.
    static std::shared_ptr<ContainerState> HeldBy(const MutexLockableDataObject* object);
    /// Makes `holder`, wherever it stands, hold `next` instead of `former`, either of which may be empty; `exchange`
    /// carries it out. Raises `LogicError`, changing nothing, where `next` must not stand there.
    static void ExchangeHeld(const MutexLockableDataObject& holder, const std::shared_ptr<ContainerState>& former,
                             const std::shared_ptr<ContainerState>& next, const std::function<void()>& exchange);

    Core::Mutex mutex;
    /// While an operation consists of several: where their changes are gathered. Guarded by the mutex.
    Change* batch = nullptr;
    /// Where a file is bound to a caller's container, that container's state. Guarded by the mutex.
    std::shared_ptr<ContainerState> delegate;

private:
    std::shared_ptr<ContainerState> Share() const {
        return std::static_pointer_cast<ContainerState>(m_parentOfEntries.lock());
    }

    struct Nesting;
    struct Hearing;
    struct SizeTracking;

    std::unique_lock<std::mutex> LockStructure();
    void Link(std::uint64_t number, MutexLockableDataObject* object, bool unshared);
    void Unlink(std::uint64_t number, MutexLockableDataObject* object);
    void Detach(std::uint64_t number, DataObject& object);
    bool IsObserved() const { return m_isHeard || m_links.MayHaveAny(); }
    void Note(const std::string& key, const std::shared_ptr<DataObject>& object, Change& change);
    void MarkStale(std::uint64_t number) {
        if (m_tracksSize)
            AddStale(number);
    }
    void AddStale(std::uint64_t number);
    void MarkAboveStale() const;
    void HearOf(std::uint64_t number, EDataChange change);
    void Tell(const std::string& key, const std::shared_ptr<DataObject>& object, EDataChange change);
    void Propagate() const;
    template <class Visit>
    void VisitEntriesAbove(Visit visit) const;

    // The nesting graph, guarded by its process-wide mutex.
    static void RequireNestable(const ContainerState& parent, const ContainerState& child);
    void Nest(std::uint64_t number, ContainerState& child);
    void Unnest(std::uint64_t number, ContainerState& child);
    static void NestInAll(const std::vector<std::pair<std::shared_ptr<ContainerState>, std::uint64_t>>& places,
                          ContainerState& next, const std::shared_ptr<ContainerState>& former);
    std::vector<std::shared_ptr<ContainerState>> GetParents() const;
    std::uint32_t CountLevelsAbove(const ContainerState& forbidden,
                                   std::unordered_map<const ContainerState*, std::uint32_t>& known) const;
    std::uint32_t MeasureHeight(std::unordered_map<const ContainerState*, std::uint32_t>& known);

    std::weak_ptr<ChangeParent> m_parentOfEntries; // this state
    EntryTable m_table;
    ChangeLinks m_links; // the entries of other containers in which this one stands
    // What few containers have, made when it is needed.
    std::unique_ptr<Nesting> m_nesting;
    std::unique_ptr<Hearing> m_hearing;
    std::unique_ptr<SizeTracking> m_sizes;
    std::uint32_t m_height = 1;
    std::atomic<bool> m_lockableByDefault;
    bool m_standsAlone;
    std::atomic<bool> m_isHeard{false};
    std::atomic<bool> m_tracksSize{false};
};

/// Locks a container and gives its state: the container's own, or the one it is bound to.
class ContainerAccess {
public:
    explicit ContainerAccess(ContainerState& own) : m_own(own.mutex), m_state(&own) {
        if (own.delegate) {
            m_state = own.delegate.get();
            m_delegate.emplace(m_state->mutex);
        }
    }

    ContainerState* operator->() const { return m_state; }
    ContainerState& operator*() const { return *m_state; }

private:
    Core::MutexGuard m_own;
    std::optional<Core::MutexGuard> m_delegate;
    ContainerState* m_state;
};

} // namespace Qor::Tivor
