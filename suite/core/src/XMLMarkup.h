#pragma once

#include <cstddef>
#include <string_view>

namespace Qor::Core {

inline constexpr std::string_view openingOfCData = "<![CDATA[";
inline constexpr std::string_view endOfCData = "]]>";

// The beginning of a text that is fed to a parser at once.
struct XMLPortion {
    std::size_t size = 0;
    bool opensCData = false; // its last bytes are `openingOfCData`
};

// The beginning of `text`, which is no part of a tag, comment or the like, up to and including the next opening of a
// CDATA section; without one, up to a tag, comment or processing instruction that does not end. Bytes that are no XML
// are passed over somehow.
XMLPortion FindPortion(std::string_view text);

} // namespace Qor::Core
