# libzip as LibZip::LibZip. Not by its own package files: Debian's end the configuration unless the zip tools are there.
# A static one is taken to know no compression but zlib's, and no cipher; with another, a project may make
# LibZip::LibZip itself.
if(TARGET LibZip::LibZip)
  set(LibZip_FOUND TRUE)
  return()
endif()

find_path(LIBZIP_INCLUDE_DIRECTORY zipconf.h) # zip.h stands beside it; other libraries have a zip.h too
find_library(LIBZIP_LIBRARY zip)
set(libZipParts LIBZIP_LIBRARY LIBZIP_INCLUDE_DIRECTORY)
set(libZipLinks)
if(LIBZIP_INCLUDE_DIRECTORY)
  file(READ ${LIBZIP_INCLUDE_DIRECTORY}/zipconf.h libZipConf)
  if(libZipConf MATCHES "#define LIBZIP_VERSION \"([0-9.]+)")
    set(LibZip_VERSION ${CMAKE_MATCH_1})
  endif()
  if(libZipConf MATCHES "#define ZIP_STATIC") # programs need not define it: zip.h includes this file
    find_package(ZLIB QUIET)
    list(APPEND libZipParts ZLIB_LIBRARIES)
    set(libZipLinks ${ZLIB_LIBRARIES} $<$<PLATFORM_ID:Windows>:advapi32>)
  endif()
endif()

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(LibZip REQUIRED_VARS ${libZipParts} VERSION_VAR LibZip_VERSION)
if(LibZip_FOUND)
  add_library(LibZip::LibZip UNKNOWN IMPORTED GLOBAL) # whoever links what the plug-in is made of sees it too
  set_target_properties(LibZip::LibZip PROPERTIES
    IMPORTED_LOCATION ${LIBZIP_LIBRARY} INTERFACE_INCLUDE_DIRECTORIES ${LIBZIP_INCLUDE_DIRECTORY})
  target_link_libraries(LibZip::LibZip INTERFACE ${libZipLinks})
endif()
