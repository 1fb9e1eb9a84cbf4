# SPDX-License-Identifier: Apache-2.0
# How others find the library: kestrove.pc for pkg-config and a package for CMake with the target kestrove::kestrove. Both
# lie in the library's folder, one set for each width, and reach the rest from where they lie.
include(CMakePackageConfigHelpers)
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/kestrove)
set(prefix_of_pc /usr) # written out, pkg-config leaves away what compilers know by themselves
if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  file(RELATIVE_PATH prefix_of_pc /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
  string(REGEX REPLACE "(.*[^/])/*$" "\${pcfiledir}/\\1" prefix_of_pc ${prefix_of_pc})
endif()

configure_file(cmake/kestrove.pc.in kestrove.pc @ONLY)
configure_file(cmake/kestroveConfig.cmake.in kestroveConfig.cmake @ONLY)
# It also turns away whoever builds for the other width.
write_basic_package_version_file(kestroveConfigVersion.cmake COMPATIBILITY SameMajorVersion)

install(FILES ${PROJECT_BINARY_DIR}/kestrove.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT library)
install(EXPORT kestrove FILE kestroveTargets.cmake NAMESPACE kestrove:: DESTINATION ${package_folder} COMPONENT library)
install(FILES ${PROJECT_BINARY_DIR}/kestroveConfig.cmake ${PROJECT_BINARY_DIR}/kestroveConfigVersion.cmake
        DESTINATION ${package_folder} COMPONENT library)
