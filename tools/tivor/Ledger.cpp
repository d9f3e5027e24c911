#include "Ledger.h"

#include <algorithm>

namespace Qor::Tivor::Tool {

bool IsLoss(const Core::Warning& warning) { return warning.GetTypeName() == "LosingData"; }

LedgerEntry LossOf(const Core::Warning& warning) {
    const auto& names = LedgerEntry::names;
    const auto name = std::find(names.begin(), names.end(), warning.GetVariable("Kind"));
    LedgerEntry entry{name == names.end() ? LedgerEntry::eDROPPED
                                          : static_cast<LedgerEntry::EKind>(name - names.begin()),
                      warning.GetVariable("Place"), warning.GetText()};
    if (const std::string start = entry.place + ": "; entry.text.starts_with(start))
        entry.text.erase(0, start.size());
    return entry;
}

LedgerSums SumUp(const Ledger& ledger) {
    LedgerSums sums{};
    for (const LedgerEntry& entry : ledger)
        ++sums[entry.kind];
    return sums;
}

std::string Describe(const LedgerSums& sums) {
    std::string text;
    for (std::size_t kind = 0; kind < sums.size(); ++kind)
        if (sums[kind] > 0)
            text += (text.empty() ? "" : ", ") + std::to_string(sums[kind]) + ' ' + LedgerEntry::names[kind];
    return text;
}

void PrintTable(std::ostream& out, const LedgerSums& sums) {
    out << "kind\tentries\n";
    for (std::size_t kind = 0; kind < sums.size(); ++kind)
        out << LedgerEntry::names[kind] << '\t' << sums[kind] << '\n';
}

void PrintText(std::ostream& out, const Ledger& ledger) {
    for (const LedgerEntry& entry : ledger)
        out << "  " << LedgerEntry::names[entry.kind] << ": " << OneLine(entry.place) << ": " << OneLine(entry.text)
            << '\n';
}

Json ToJson(const Ledger& ledger) {
    Json json = Json::array();
    for (const LedgerEntry& entry : ledger)
        json.push_back({{"kind", LedgerEntry::names[entry.kind]},
                        {"place", TextJson(entry.place)},
                        {"text", TextJson(entry.text)}});
    return json;
}

Json ToJson(const LedgerSums& sums) {
    Json json = Json::object();
    for (std::size_t kind = 0; kind < sums.size(); ++kind)
        json[LedgerEntry::names[kind]] = sums[kind];
    return json;
}

} // namespace Qor::Tivor::Tool
