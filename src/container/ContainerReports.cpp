#include "../model/LeafMutex.h"
#include "../serialization/FramedWrite.h"
#include "ContainerStateParts.h"

#include <unordered_set>
#include <utility>

namespace Qor::Tivor {

void ContainerState::AddListener(ContainerListener& listener) {
    if (!m_isHeard) {
        const std::lock_guard leaf(LeafMutexOf(this));
        m_hearing = std::make_unique<Hearing>();
        m_isHeard = true;
    }
    m_hearing->listeners.AddListener(listener);
}

void ContainerState::Note(const std::string& key, const std::shared_ptr<DataObject>& object, Change& change) {
    if (m_isHeard)
        change.m_changed.emplace_back(key, object);
    if (!change.m_state)
        change.m_state = Share();
}

void ContainerState::Change::Report() {
    if (!m_state)
        return;
    for (const auto& [key, object] : m_changed)
        m_state->Tell(key, object, EDataChange::object);
    m_state->Propagate();
}

void ContainerState::Tell(const std::string& key, const std::shared_ptr<DataObject>& object, EDataChange change) {
    m_hearing->listeners.Broadcast([&](Core::NotificationListener& listener) {
        static_cast<ContainerListener&>(listener).OnChange(key, object, change);
    });
}

void ContainerState::OnChildChanged(std::uint64_t entry, EDataChange change) {
    HearOf(entry, change);
    Propagate();
}

void ContainerState::NoteChildChange(std::uint64_t entry) {
    MarkStale(entry);
    MarkAboveStale();
}

void ContainerState::HearOf(std::uint64_t number, EDataChange change) {
    if (!m_isHeard)
        return;
    std::string key;
    std::shared_ptr<DataObject> object;
    {
        const std::lock_guard leaf(LeafMutexOf(this));
        if (const NumberedEntry* const entry = m_table.FindNumber(number)) {
            key = entry->key;
            object = entry->object;
        }
    }
    if (object)
        Tell(key, object, change);
}

// Visits each entry above in which this container stands, directly or in others; a container that stands in many places
// passes it on once.
template <class Visit>
void ContainerState::VisitEntriesAbove(Visit visit) const {
    std::vector<ChangeLinks::Link> pending = m_links.GetAll();
    std::unordered_set<const ContainerState*> reached;
    while (!pending.empty()) {
        const ChangeLinks::Link link = std::move(pending.back());
        pending.pop_back();
        const auto parent = std::static_pointer_cast<ContainerState>(link.parent.lock());
        if (!parent)
            continue;
        visit(*parent, link.entry);
        if (reached.insert(parent.get()).second)
            for (ChangeLinks::Link& further : parent->m_links.GetAll())
                pending.push_back(std::move(further));
    }
}

void ContainerState::Propagate() const {
    VisitEntriesAbove([](ContainerState& parent, std::uint64_t entry) { parent.HearOf(entry, EDataChange::value); });
}

void ContainerState::MarkAboveStale() const {
    if (ChangeLinks::HasSizeTrackers() && m_links.MayHaveAny())
        VisitEntriesAbove([](ContainerState& parent, std::uint64_t entry) { parent.MarkStale(entry); });
}

void ContainerState::AddStale(std::uint64_t number) {
    const std::lock_guard leaf(LeafMutexOf(this));
    if (m_sizes)
        m_sizes->stale.insert(number);
}

void ContainerState::EnableSizeTracking(bool enable) {
    if (enable == m_tracksSize)
        return;
    auto sizes = enable ? std::make_unique<SizeTracking>() : nullptr;
    if (sizes && m_table.GetBlock())
        for (const NumberedEntry& entry : m_table.GetBlock()->entries)
            sizes->stale.insert(entry.number);
    ChangeLinks::AddSizeTracker(enable ? 1 : -1);
    const std::lock_guard leaf(LeafMutexOf(this));
    m_sizes = std::move(sizes);
    m_tracksSize = enable;
}

namespace {

constexpr std::uint64_t endMarkerSize = 7;

std::uint64_t Measure(const NumberedEntry* entry) {
    return entry != nullptr && entry->object ? SerializationManager::GetDataBlockSize_bytes(entry->key, *entry->object)
                                             : 0;
}

} // namespace

std::uint64_t ContainerState::MeasureSize_bytes() const {
    FramedWrite* const frame = FramedWrite::Current();
    if (const std::optional<std::uint64_t> known = frame->FindSize(this))
        return *known;
    std::uint64_t size = endMarkerSize;
    if (m_table.GetBlock())
        for (const NumberedEntry& entry : m_table.GetBlock()->entries)
            if (__builtin_add_overflow(size, Measure(&entry), &size))
                Core::Error::RaiseError(
                    Core::OutOfRangeError("The stored form of a container would have more than 2^64 bytes"),
                    QOR_CODE_CONTEXT("DataContainer"), "Qor.Tivor.DataContainer");
    frame->KeepSize(Share(), size);
    return size;
}

std::uint64_t ContainerState::GetTrackedSize_bytes() {
    if (!m_tracksSize)
        return MeasureSize_bytes();
    std::unordered_set<std::uint64_t> stale;
    {
        const std::lock_guard leaf(LeafMutexOf(this));
        stale.swap(m_sizes->stale);
    }
    try {
        for (const std::uint64_t number : stale) {
            const std::uint64_t size = Measure(m_table.FindNumber(number));
            std::uint64_t& known = m_sizes->sizes[number];
            m_sizes->total += size - known;
            known = size;
            if (size == 0)
                m_sizes->sizes.erase(number);
        }
    } catch (...) {
        for (const std::uint64_t number : stale)
            MarkStale(number);
        throw;
    }
    return m_sizes->total + endMarkerSize;
}

} // namespace Qor::Tivor
