#pragma once

#include <Tivor/DataKinds.h>
#include <Tivor/MeasuredArray.h>

namespace Qor::Tivor {

/// The kind of the data, and `sUNKNOWN_DATA` of what names none.
inline std::string KindOf(const MeasuredArray& item) {
    const std::string kind = item.GetDataKind();
    return kind.empty() ? sUNKNOWN_DATA : kind;
}

} // namespace Qor::Tivor
