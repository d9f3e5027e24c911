#pragma once

#include "MeasurementDifferences.h"

#include <Tivor/DataFile.h>

namespace Qor::Tivor::Tool {

/// In what two files differ.
struct Differences {
    struct OfMeasured {
        Path path;
        Path pathInB;
        std::vector<MeasuredDifference> found;
    };
    struct OfValue {
        Path path;
        std::string a;
        std::string b;
    };
    struct Entry {
        Path path;
        std::string text; ///< what it is, or why it cannot be compared, or a note
    };

    bool AreNone() const {
        return measured.empty() && onlyInA.empty() && onlyInB.empty() && values.empty() && unread.empty();
    }

    std::vector<OfMeasured> measured;
    std::vector<Entry> onlyInA;
    std::vector<Entry> onlyInB;
    std::vector<OfValue> values;
    std::vector<Entry> unread; ///< which could not be read in one of the files
    std::vector<Entry> notes;  ///< what is no difference
};

/// Of the measured arrays only, when told so; else of all entries.
Differences FindDifferences(const DataFile& a, const DataFile& b, const Tolerance* tolerance, bool onlyMeasured);

} // namespace Qor::Tivor::Tool
