#pragma once

namespace Qor::Core::Testing {

#ifdef TIVOR_TEST_ON_WINDOWS
inline constexpr bool isWindows = true;
#else
inline constexpr bool isWindows = false;
#endif

} // namespace Qor::Core::Testing
