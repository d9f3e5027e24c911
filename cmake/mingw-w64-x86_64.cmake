# Builds for 64-bit Windows on Linux, by Debian's MinGW-w64 with posix threads.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
# The names without "-posix" may stand for the other flavour, which has no std::thread.
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
# Heavy templates overflow the 65,535 sections of a plain object file.
set(CMAKE_CXX_FLAGS_INIT -Wa,-mbig-obj)

# Header-only libraries of this machine serve both systems. Only links to them stand on the include path: /usr/include
# itself would bring Linux's system headers along.
set(sharedHeaders ${CMAKE_BINARY_DIR}/shared-headers)
file(MAKE_DIRECTORY ${sharedHeaders}/include)
foreach(header boost xxhash.h CLI nlohmann)
  file(CREATE_LINK /usr/include/${header} ${sharedHeaders}/include/${header} SYMBOLIC)
endforeach()

# Libraries come from where the continuous integration has windows-deps.sh put them.
cmake_path(SET windowsDeps NORMALIZE ${CMAKE_CURRENT_LIST_DIR}/../build/windows-deps)
set(CMAKE_FIND_ROOT_PATH ${sharedHeaders} ${windowsDeps} /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
include_directories(SYSTEM ${sharedHeaders}/include)

set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/wine-run.sh)
