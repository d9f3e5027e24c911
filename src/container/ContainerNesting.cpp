#include "ContainerStateParts.h"

#include <QorCore/Message.h>

#include <algorithm>

namespace Qor::Tivor {

namespace {

constexpr const char* category = "Qor.Tivor.DataContainer.Put";

[[noreturn]] void RaiseNesting(std::string text) {
    Core::Error::RaiseError(Core::LogicError(std::move(text)), QOR_CODE_CONTEXT("DataContainer"), category);
}

} // namespace

std::recursive_mutex& NestingMutex() {
    static auto& mutex = *new std::recursive_mutex;
    return mutex;
}

std::shared_ptr<ContainerState> ContainerState::HeldBy(const MutexLockableDataObject* object) {
    if (!HoldsContainer(object))
        return nullptr;
    if (const auto* const holder = dynamic_cast<const Details::ContentHolder*>(object)) {
        const std::shared_ptr<DataContainer> content = holder->GetContent();
        return content ? Of(*content) : nullptr;
    }
    const auto* const wrapper = dynamic_cast<const DataContainerWrapper*>(object);
    if (wrapper == nullptr)
        RaiseNesting("A container stands in another one by a DataContainerWrapper only");
    return wrapper->GetState();
}

// Only containers are parents of containers.
std::vector<std::shared_ptr<ContainerState>> ContainerState::GetParents() const {
    std::vector<std::shared_ptr<ContainerState>> parents;
    for (const ChangeLinks::Link& link : m_links.GetAll())
        if (const std::shared_ptr<ChangeParent> parent = link.parent.lock())
            parents.push_back(std::static_pointer_cast<ContainerState>(parent));
    return parents;
}

std::uint32_t ContainerState::CountLevelsAbove(const ContainerState& forbidden,
                                               std::unordered_map<const ContainerState*, std::uint32_t>& known) const {
    if (this == &forbidden)
        RaiseNesting("A container cannot be stored in itself, nor in a container that it holds");
    if (const auto found = known.find(this); found != known.end())
        return found->second;
    std::uint32_t levels = 0;
    for (const std::shared_ptr<ContainerState>& parent : GetParents())
        levels = std::max(levels, parent->CountLevelsAbove(forbidden, known));
    return known[this] = levels + 1;
}

std::uint32_t ContainerState::MeasureHeight(std::unordered_map<const ContainerState*, std::uint32_t>& known) {
    if (const auto found = known.find(this); found != known.end())
        return found->second;
    std::uint32_t height = 0;
    if (m_nesting)
        for (const auto& [number, child] : m_nesting->children)
            if (const std::shared_ptr<ContainerState> living = child.lock())
                height = std::max(height, living->MeasureHeight(known));
    m_height = height + 1;
    return known[this] = m_height;
}

void ContainerState::RequireNestable(const ContainerState& parent, const ContainerState& child) {
    if (child.m_standsAlone)
        RaiseNesting("A data file cannot be stored in a container; store a container with its entries instead");
    std::unordered_map<const ContainerState*, std::uint32_t> levels;
    const std::uint32_t above = parent.CountLevelsAbove(child, levels);
    if (above + child.m_height <= mostLevels)
        return;
    // Heights only grow while containers come and go: measure before refusing.
    std::unordered_map<const ContainerState*, std::uint32_t> heights;
    if (const std::uint32_t height = const_cast<ContainerState&>(child).MeasureHeight(heights);
        above + height > mostLevels)
        RaiseNesting(Core::FormatText("Storing a container of %1% levels below %2% levels exceeds the %3% levels that "
                                      "containers may be nested",
                                      {height, above, mostLevels}));
}

void ContainerState::Nest(std::uint64_t number, ContainerState& child) {
    if (!m_nesting)
        m_nesting = std::make_unique<Nesting>();
    m_nesting->children[number] = child.Share();
    child.m_links.Add(m_parentOfEntries, number);
    std::vector<std::pair<ContainerState*, std::uint32_t>> growing{{this, child.m_height + 1}};
    std::vector<std::shared_ptr<ContainerState>> alive;
    while (!growing.empty()) {
        const auto [state, height] = growing.back();
        growing.pop_back();
        if (state->m_height >= height)
            continue;
        state->m_height = height;
        for (std::shared_ptr<ContainerState>& above : state->GetParents()) {
            growing.emplace_back(above.get(), height + 1);
            alive.push_back(std::move(above));
        }
    }
}

void ContainerState::Unnest(std::uint64_t number, ContainerState& child) {
    child.m_links.Remove(this, number);
    if (!m_nesting)
        return;
    // An entry that was given another container has that one's record already.
    if (const auto found = m_nesting->children.find(number);
        found != m_nesting->children.end() && found->second.lock().get() == &child)
        m_nesting->children.erase(found);
}

void ContainerState::ExchangeHeld(const MutexLockableDataObject& holder, const std::shared_ptr<ContainerState>& former,
                                  const std::shared_ptr<ContainerState>& next, const std::function<void()>& exchange) {
    const std::lock_guard graph(NestingMutex());
    std::vector<std::pair<std::shared_ptr<ContainerState>, std::uint64_t>> places;
    for (const ChangeLinks::Link& link : holder.m_links.GetAll())
        if (const std::shared_ptr<ChangeParent> parent = link.parent.lock())
            places.emplace_back(std::static_pointer_cast<ContainerState>(parent), link.entry);
    if (former != next) {
        if (next)
            NestInAll(places, *next, former);
        if (former)
            for (const auto& [place, number] : places)
                place->Unnest(number, *former);
    }
    exchange();
}

// In all these places, or, when something fails, in none.
void ContainerState::NestInAll(const std::vector<std::pair<std::shared_ptr<ContainerState>, std::uint64_t>>& places,
                               ContainerState& next, const std::shared_ptr<ContainerState>& former) {
    for (const auto& [place, number] : places)
        RequireNestable(*place, next);
    std::size_t nested = 0;
    try {
        for (; nested < places.size(); ++nested)
            places[nested].first->Nest(places[nested].second, next);
    } catch (...) {
        for (std::size_t i = 0; i <= nested; ++i) {
            next.m_links.Remove(places[i].first.get(), places[i].second);
            if (places[i].first->m_nesting)
                places[i].first->m_nesting->children[places[i].second] = former;
        }
        throw;
    }
}

void Details::ExchangeContent(const MutexLockableDataObject& holder, const std::shared_ptr<DataContainer>& former,
                              const std::shared_ptr<DataContainer>& next, const std::function<void()>& exchange) {
    const auto stateOf = [](const auto& content) { return content ? ContainerState::Of(*content) : nullptr; };
    ContainerState::ExchangeHeld(holder, stateOf(former), stateOf(next), exchange);
}

} // namespace Qor::Tivor
