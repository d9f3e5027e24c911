#include "LeafMutex.h"

#include <Tivor/DataObject.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <mutex>

namespace Qor::Tivor {

std::mutex& LeafMutexOf(const void* address) {
    static std::array<std::mutex, 64> mutexes;
    return mutexes[std::hash<const void*>()(address) / alignof(std::max_align_t) % mutexes.size()];
}

namespace {

bool Denotes(const ChangeLinks::Link& link, const ChangeParent* parent, std::uint64_t entry) {
    return link.entry == entry && link.parent.lock().get() == parent;
}

} // namespace

ChangeLinks::~ChangeLinks() = default;

void ChangeLinks::Append(const std::weak_ptr<ChangeParent>& parent, std::uint64_t entry) {
    if (m_firstParent.expired()) {
        m_firstParent = parent;
        m_firstEntry.store(entry, std::memory_order_relaxed);
    } else {
        if (!m_more)
            m_more = std::make_unique<std::vector<Link>>();
        if (m_more->size() == m_more->capacity())
            std::erase_if(*m_more, [](const Link& link) { return link.parent.expired(); });
        m_more->push_back({parent, entry});
    }
}

void ChangeLinks::Add(const std::weak_ptr<ChangeParent>& parent, std::uint64_t entry) {
    const std::lock_guard leaf(LeafMutexOf(this));
    Append(parent, entry);
}

void ChangeLinks::AddUnshared(const std::weak_ptr<ChangeParent>& parent, std::uint64_t entry) { Append(parent, entry); }

void ChangeLinks::Remove(const ChangeParent* parent, std::uint64_t entry) {
    const std::lock_guard leaf(LeafMutexOf(this));
    if (Denotes({m_firstParent, m_firstEntry}, parent, entry))
        m_firstParent.reset();
    else if (m_more)
        std::erase_if(*m_more, [&](const Link& link) { return Denotes(link, parent, entry); });
}

std::vector<ChangeLinks::Link> ChangeLinks::GetAll() const {
    std::vector<Link> links;
    if (!MayHaveAny())
        return links;
    const std::lock_guard leaf(LeafMutexOf(this));
    if (!m_firstParent.expired())
        links.push_back({m_firstParent, m_firstEntry});
    if (m_more)
        links.insert(links.end(), m_more->begin(), m_more->end());
    return links;
}

namespace {

std::atomic<int> sizeTrackers{0};

} // namespace

void ChangeLinks::AddSizeTracker(int count) { sizeTrackers += count; }

bool ChangeLinks::HasSizeTrackers() { return sizeTrackers.load(std::memory_order_relaxed) != 0; }

void ChangeLinks::Note() const {
    if (!HasSizeTrackers())
        return;
    for (const Link& link : GetAll())
        if (const std::shared_ptr<ChangeParent> parent = link.parent.lock())
            parent->NoteChildChange(link.entry);
}

void ChangeLinks::Report(EDataChange change) const {
    for (const Link& link : GetAll())
        if (const std::shared_ptr<ChangeParent> parent = link.parent.lock())
            parent->OnChildChanged(link.entry, change);
}

} // namespace Qor::Tivor
