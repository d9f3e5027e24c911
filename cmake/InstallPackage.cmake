# What makes the installed headers and libraries a package: find_package(Tivor) and Tivor.pc. Both find everything
# relative to themselves, so that an installed tree may be moved.
include(CMakePackageConfigHelpers)

set(packageDirectory ${CMAKE_INSTALL_LIBDIR}/cmake/Tivor)
# Below 1.0 each minor version may break what users wrote.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/TivorConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(EXPORT TivorTargets NAMESPACE Qor:: DESTINATION ${packageDirectory})
install(FILES cmake/TivorConfig.cmake ${PROJECT_BINARY_DIR}/TivorConfigVersion.cmake DESTINATION ${packageDirectory})

file(RELATIVE_PATH prefixFromPc /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/Tivor.pc.in Tivor.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/Tivor.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
