#pragma once

#include "Display.h"

#include <QorCore/Alert.h>

#include <array>
#include <string>
#include <vector>

namespace Qor::Tivor::Tool {

/// Something that a file which was written does not hold as its source does.
struct LedgerEntry {
    enum EKind { eDROPPED, eRETYPED, eROUNDED, eRESCALED };
    static constexpr std::array<const char*, 4> names{"dropped", "retyped", "rounded", "rescaled"};

    EKind kind = eDROPPED;
    std::string place; ///< what it is about, by its key or keys
    std::string text;
};

using Ledger = std::vector<LedgerEntry>;
/// How many entries there are of each kind.
using LedgerSums = std::array<std::size_t, LedgerEntry::names.size()>;

/// What a writer warns of.
bool IsLoss(const Core::Warning& warning);
LedgerEntry LossOf(const Core::Warning& warning);

LedgerSums SumUp(const Ledger& ledger);
/// As "2 dropped, 1 rounded", with the kinds that there are.
std::string Describe(const LedgerSums& sums);
/// A line for each kind, under headings.
void PrintTable(std::ostream& out, const LedgerSums& sums);
void PrintText(std::ostream& out, const Ledger& ledger);
Json ToJson(const Ledger& ledger);
Json ToJson(const LedgerSums& sums);

} // namespace Qor::Tivor::Tool
