#pragma once

#include "Commands.h"
#include "Display.h"

#include <Tivor/SerializationManager.h>

namespace Qor::Tivor::Tool {

/// What became of a file.
struct Conversion {
    enum EFate { eCONVERTED, ePASSED_OVER, eFAILED };

    std::string source;
    std::string target;
    std::string targetType;
    std::string sourceType;
    std::uint64_t bytesBefore = 0;
    std::uint64_t bytesAfter = 0;
    std::size_t numEntries = 0;
    std::vector<UnreadEntry> dropped;
    Ledger ledger; ///< what the target does not hold as the source does
    EFate fate = eCONVERTED;
    std::string reason;    ///< of another fate
    bool deviates = false; ///< not what the user expects of such a file
};

/// A line for each file; of a folder what they add up to, too.
void PrintText(std::ostream& out, const std::vector<Conversion>& conversions, bool isFolder);
Json ToJson(const std::vector<Conversion>& conversions);
/// Which entries were left out, for each file that was converted without them.
void TellDropped(const std::vector<Conversion>& conversions, std::ostream& err);
EStatus StatusOf(const std::vector<Conversion>& conversions);

} // namespace Qor::Tivor::Tool
