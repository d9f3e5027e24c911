#include "Conversion.h"

#include "Files.h"

#include <algorithm>
#include <functional>

namespace Qor::Tivor::Tool {

namespace {

/// What the files add up to.
struct Sum {
    std::size_t numConverted = 0;
    std::size_t numPassedOver = 0;
    std::size_t numFailed = 0;
    std::uint64_t bytesBefore = 0;
    std::uint64_t bytesAfter = 0;
    LedgerSums ledger{};
};

Sum AddUp(const std::vector<Conversion>& conversions) {
    Sum sum;
    for (const Conversion& conversion : conversions) {
        if (conversion.fate != Conversion::eCONVERTED) {
            ++(conversion.fate == Conversion::eFAILED ? sum.numFailed : sum.numPassedOver);
            continue;
        }
        ++sum.numConverted;
        sum.bytesBefore += conversion.bytesBefore;
        sum.bytesAfter += conversion.bytesAfter;
        const LedgerSums ledger = SumUp(conversion.ledger);
        std::transform(ledger.begin(), ledger.end(), sum.ledger.begin(), sum.ledger.begin(), std::plus<>());
    }
    return sum;
}

void PrintText(std::ostream& out, const Conversion& conversion) {
    out << Show(conversion.source);
    if (conversion.fate != Conversion::eCONVERTED) {
        out << (conversion.fate == Conversion::eFAILED ? ": not converted: " : ": passed over: ")
            << OneLine(conversion.reason) << '\n';
        return;
    }
    out << " (" << Show(conversion.sourceType) << ", " << Count(conversion.bytesBefore, "byte", "bytes") << ") -> "
        << Show(conversion.target) << " (" << Show(conversion.targetType) << ", "
        << Count(conversion.bytesAfter, "byte", "bytes") << "): " << Count(conversion.numEntries, "entry", "entries");
    const std::string sums = Describe(SumUp(conversion.ledger));
    out << (sums.empty() ? "" : ", ") << sums << '\n';
    PrintText(out, conversion.ledger);
}

void PrintText(std::ostream& out, const Sum& sum) {
    out << Count(sum.numConverted, "file", "files") << " converted, " << Count(sum.bytesBefore, "byte", "bytes")
        << " -> " << Count(sum.bytesAfter, "byte", "bytes") << "; " << sum.numPassedOver << " passed over, "
        << sum.numFailed << " not converted\n";
    if (sum.ledger != LedgerSums{})
        PrintTable(out, sum.ledger);
}

Json ToJson(const Conversion& conversion) {
    if (conversion.fate != Conversion::eCONVERTED)
        return {{"source", TextJson(conversion.source)},
                {"reason", TextJson(conversion.reason)},
                {"ledger", ToJson(conversion.ledger)}};
    Json dropped = Json::array();
    for (const UnreadEntry& entry : conversion.dropped)
        dropped.push_back(
            {{"path", PathJson(entry.path)}, {"class", TextJson(entry.typeName)}, {"reason", TextJson(entry.reason)}});
    return {{"source", TextJson(conversion.source)}, {"sourceType", TextJson(conversion.sourceType)},
            {"target", TextJson(conversion.target)}, {"targetType", TextJson(conversion.targetType)},
            {"entries", conversion.numEntries},      {"bytesBefore", conversion.bytesBefore},
            {"bytesAfter", conversion.bytesAfter},   {"dropped", std::move(dropped)},
            {"ledger", ToJson(conversion.ledger)}};
}

} // namespace

void PrintText(std::ostream& out, const std::vector<Conversion>& conversions, bool isFolder) {
    for (const Conversion& conversion : conversions)
        PrintText(out, conversion);
    if (isFolder)
        PrintText(out, AddUp(conversions));
}

Json ToJson(const std::vector<Conversion>& conversions) {
    const Sum sum = AddUp(conversions);
    Json lists[] = {Json::array(), Json::array(), Json::array()};
    for (const Conversion& conversion : conversions)
        lists[conversion.fate].push_back(ToJson(conversion));
    return {{"converted", std::move(lists[Conversion::eCONVERTED])},
            {"passedOver", std::move(lists[Conversion::ePASSED_OVER])},
            {"notConverted", std::move(lists[Conversion::eFAILED])},
            {"bytesBefore", sum.bytesBefore},
            {"bytesAfter", sum.bytesAfter},
            {"ledger", ToJson(sum.ledger)}};
}

void TellDropped(const std::vector<Conversion>& conversions, std::ostream& err) {
    for (const Conversion& conversion : conversions)
        if (!conversion.dropped.empty() && conversion.fate == Conversion::eCONVERTED)
            err << "tivor: " << Show(conversion.source) << ": " << Count(conversion.dropped.size(), "entry", "entries")
                << " could not be read:\n"
                << ListUnread(conversion.dropped);
}

EStatus StatusOf(const std::vector<Conversion>& conversions) {
    EStatus status = eFINE;
    for (const Conversion& conversion : conversions)
        status = std::max(status, conversion.fate == Conversion::eFAILED ? eERROR
                                  : conversion.deviates                  ? eDEVIATES
                                                                         : eFINE);
    return status;
}

} // namespace Qor::Tivor::Tool
