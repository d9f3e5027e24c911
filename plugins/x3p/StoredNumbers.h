#pragma once

#include "../common/Measured.h"
#include "Description.h"

#include <variant>
#include <vector>

namespace Qor::Tivor::Measurements {

/// The samples of all layers, one after the other, in one of the types that the format has.
struct StoredNumbers {
    bool HasMissing() const { return !missing.empty(); }

    EStored type = EStored::float64;
    std::variant<std::vector<double>, std::vector<float>, std::vector<int>, std::vector<short>> values;
    std::vector<bool> missing; ///< empty when no point is; floating point values are NaN there, integers 0
};

/// `preferred`: the letter of an integer type, which is taken when it holds all samples. Else small integers become I,
/// int32 L, float F, and all others D; what that rounds is told.
StoredNumbers StoreNumbers(const std::vector<const Measured*>& layers, const std::string& preferred,
                           const Report& report);

} // namespace Qor::Tivor::Measurements
