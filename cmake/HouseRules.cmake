# What every target of this project is built with.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
# A warning ends our own builds, not those of a project that takes this one in as a folder.
set(CMAKE_COMPILE_WARNING_AS_ERROR ${PROJECT_IS_TOP_LEVEL})

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "" FORCE)
endif()

# Programs and libraries side by side: Windows finds libraries there, plug-ins live below.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
set(CMAKE_INSTALL_RPATH $ORIGIN/../${CMAKE_INSTALL_LIBDIR})

if(MINGW) # the run time of the language beside the programs; linked into each library, exceptions would not cross
  foreach(name libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name}
      OUTPUT_VARIABLE file OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    file(COPY ${file} DESTINATION ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
    install(FILES ${file} TYPE BIN)
  endforeach()
endif()

add_library(tivor_rules INTERFACE)
target_compile_options(tivor_rules INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # Optimised, g++ 12 finds overlapping copies in `"text" + std::string(...)`, where there are none.
  target_compile_options(tivor_rules INTERFACE -Wno-restrict)
endif()
if(WIN32)
  target_compile_definitions(tivor_rules INTERFACE _WIN32_WINNT=0x0601 WIN32_LEAN_AND_MEAN NOMINMAX)
elseif(NOT TIVOR_SANITIZE)
  # As strict as Windows; a library built with clang's sanitizers finds their run time in the program only.
  add_link_options(-Wl,-z,defs)
  # Smaller relocations: what a program pays for at every start.
  include(CheckLinkerFlag)
  check_linker_flag(CXX -Wl,-z,pack-relative-relocs TIVOR_PACKS_RELOCATIONS)
  if(TIVOR_PACKS_RELOCATIONS)
    add_link_options(-Wl,-z,pack-relative-relocs)
  endif()
endif()
if(TIVOR_SANITIZE)
  add_compile_options(-fsanitize=${TIVOR_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${TIVOR_SANITIZE})
endif()

# A shared library of the suite: tivor_library(NAME EXPORT_MACRO_STEM HEADER_DIRECTORY sources...)
# Users see QorCore as Qor::Core, any other NAME as Qor::NAME, here and in the installed package.
function(tivor_library name stem headers)
  string(REGEX REPLACE "^Qor" "" exportName ${name})
  add_library(${name} SHARED ${ARGN})
  add_library(Qor::${exportName} ALIAS ${name})
  target_compile_features(${name} PUBLIC cxx_std_20)
  target_compile_definitions(${name} PRIVATE ${stem}_BUILDING)
  target_include_directories(${name} PUBLIC
    $<BUILD_INTERFACE:${headers}> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:tivor_rules>)
  set_target_properties(${name} PROPERTIES
    EXPORT_NAME ${exportName} INSTALL_RPATH $ORIGIN VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
  if(WIN32)
    set_target_properties(${name} PROPERTIES PREFIX "")
  elseif(NOT TIVOR_SANITIZE)
    set(map ${PROJECT_SOURCE_DIR}/cmake/own-symbols.map)
    set(list ${PROJECT_SOURCE_DIR}/cmake/shared-data.list)
    target_link_options(${name} PRIVATE -Wl,--version-script=${map} -Wl,--dynamic-list=${list})
    set_target_properties(${name} PROPERTIES LINK_DEPENDS "${map};${list}")
  endif()
  if(NOT WIN32)
    target_compile_options(${name} PRIVATE -fno-semantic-interposition)
  endif()
  install(TARGETS ${name} EXPORT TivorTargets)
  install(DIRECTORY ${headers}/ TYPE INCLUDE FILES_MATCHING PATTERN *.h)
endfunction()
