#include "UnitTable.h"

#include <QorCore/Message.h>
#include <QorCore/UnitDictionary.h>

#include <algorithm>
#include <cmath>
#include <mutex>
#include <unordered_map>

namespace Qor::Core {

using Units = QorConstPtr<UnitDescriptor>;

UnitNotFound::~UnitNotFound() = default;

struct UnitDictionary::Entries {
    Entries() {
        for (const Units& unit : GetStandardUnits())
            standard.emplace(unit->GetName(), unit);
    }

    Units FindAdded(std::string_view name) const {
        const auto found =
            std::find_if(added.begin(), added.end(), [&](const Units& unit) { return unit->GetName() == name; });
        return found != added.end() ? *found : nullptr;
    }

    std::unordered_map<std::string_view, Units> standard; // never changes, hence needs no lock
    std::mutex mutex;
    std::vector<Units> added;
};

namespace {

Units FirstLike(const std::vector<Units>& units, const UnitDescriptor::Exponents& exponents, double scale) {
    constexpr double tolerance = 1e-14;
    const auto isLike = [&](const Units& unit) {
        return unit->GetExponents() == exponents && unit->GetOffset() == 0 &&
               std::abs(unit->GetScale() - scale) <= tolerance * std::abs(scale);
    };
    const auto found = std::find_if(units.begin(), units.end(), isLike);
    return found != units.end() ? *found : nullptr;
}

} // namespace

UnitDictionary::UnitDictionary() : m_entries(std::make_unique<Entries>()) {}
UnitDictionary::~UnitDictionary() = default;

UnitDictionary& UnitDictionary::Instance() {
    static auto* const dictionary = new UnitDictionary;
    return *dictionary;
}

const std::vector<Units>& UnitDictionary::GetStandardUnits() {
    static const auto* const units = [] {
        auto all = std::make_unique<std::vector<Units>>();
        for (const auto& row : UnitTable::rows)
            all->push_back(UnitDescriptor::Create(row.name, row.symbol, row.scale, row.offset, row.exponents));
        return all.release();
    }();
    return *units;
}

Units UnitDictionary::Find(std::string_view name) const {
    if (const auto found = m_entries->standard.find(name); found != m_entries->standard.end())
        return found->second;
    const std::lock_guard lock(m_entries->mutex);
    return m_entries->FindAdded(name);
}

Units UnitDictionary::Get(std::string_view name) const {
    Units unit = Find(name);
    if (!unit)
        Error::RaiseError(UnitNotFound(FormatText("%1% unit not found in the unit dictionary", {name})),
                          QOR_CODE_CONTEXT("UnitDictionary"), "Qor.Core.UnitDictionary");
    return unit;
}

Units UnitDictionary::FindLike(const UnitDescriptor::Exponents& exponents, double scale) const {
    if (Units unit = FirstLike(GetStandardUnits(), exponents, scale))
        return unit;
    const std::lock_guard lock(m_entries->mutex);
    return FirstLike(m_entries->added, exponents, scale);
}

void UnitDictionary::Add(const UnitDescriptor& unit) {
    Units added = unit.Clone();
    const auto standard = m_entries->standard.find(unit.GetName());
    const std::lock_guard lock(m_entries->mutex);
    const Units former =
        standard != m_entries->standard.end() ? standard->second : m_entries->FindAdded(unit.GetName());
    if (!former)
        m_entries->added.push_back(std::move(added));
    else if (*former != unit)
        Error::RaiseError(LogicError(FormatText("A unit named \"%1%\" is in the unit dictionary already, and is a "
                                                "different one",
                                                {unit.GetName()})),
                          QOR_CODE_CONTEXT("UnitDictionary"), "Qor.Core.UnitDictionary");
}

} // namespace Qor::Core
