#pragma once

#include <Tivor/DataContainer.h>

namespace Qor::Tivor::Testing {

/// One of the two contents, of about `size` bytes or twice as many, that the program which is killed saves in turn.
inline void FillWithAlternative(DataContainer& container, std::size_t size, bool longer) {
    container.Clear();
    const std::size_t pieces = 4;
    for (std::size_t i = 0; i < pieces; ++i)
        container.PutValue(std::to_string(i), std::string(size / pieces * (longer ? 2 : 1), longer ? 'l' : 's'));
    container.GetSubData({"nested"}, true)->PutValue("longer", longer);
}

} // namespace Qor::Tivor::Testing
