#pragma once

namespace Qor::Tivor {

/// Where the metadata of a data set hold the keys of the channels.
inline constexpr const char* channels2DKey = "2D_Channels";
inline constexpr const char* channels1DKey = "1D_Channels";
/// What the primary surface is called in sets that are made of something else.
inline constexpr const char* primary2DKey = "Primary2D";

} // namespace Qor::Tivor
