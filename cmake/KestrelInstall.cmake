# SPDX-License-Identifier: Apache-2.0
# Installs the library, its headers, kestrel.pc and the CMake package Kestrel, and manual pages. Every
# file finds the others from where it is itself, so that the prefix may be given at install time and
# moved later. The components Runtime, Development, Tools, Board and Relay are packages elsewhere; Licences
# is what the licences of all of them want to come along.
include(CMakePackageConfigHelpers)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/Kestrel")
set(pkgconfig_dir "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
set(packaging "${PROJECT_BINARY_DIR}/packaging")

install(TARGETS kestrel EXPORT KestrelTargets
  LIBRARY
    DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    COMPONENT Runtime
    NAMELINK_COMPONENT Development)
install(DIRECTORY "${PROJECT_SOURCE_DIR}/inc/public/kestrel"
  DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}"
  COMPONENT Development
  FILES_MATCHING PATTERN "*.h")

install(EXPORT KestrelTargets
  NAMESPACE Kestrel::
  DESTINATION "${package_dir}"
  COMPONENT Development)
configure_package_config_file("${PROJECT_SOURCE_DIR}/packaging/KestrelConfig.cmake.in"
  "${packaging}/KestrelConfig.cmake"
  INSTALL_DESTINATION "${package_dir}"
  NO_SET_AND_CHECK_MACRO)
# Before 1.0 a new minor version may change the interface.
set(compatibility SameMajorVersion)
if(PROJECT_VERSION_MAJOR EQUAL 0)
  set(compatibility SameMinorVersion)
endif()
write_basic_package_version_file("${packaging}/KestrelConfigVersion.cmake"
  COMPATIBILITY ${compatibility})
install(FILES "${packaging}/KestrelConfig.cmake" "${packaging}/KestrelConfigVersion.cmake"
  DESTINATION "${package_dir}"
  COMPONENT Development)

file(RELATIVE_PATH KESTREL_PREFIX_FROM_PKGCONFIG
  "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
# An absolute folder, as some distributions set, stays as it is.
set(KESTREL_PC_LIBDIR "\${prefix}")
set(KESTREL_PC_INCLUDEDIR "\${prefix}")
cmake_path(APPEND KESTREL_PC_LIBDIR "${CMAKE_INSTALL_LIBDIR}")
cmake_path(APPEND KESTREL_PC_INCLUDEDIR "${CMAKE_INSTALL_INCLUDEDIR}")
configure_file("${PROJECT_SOURCE_DIR}/packaging/kestrel.pc.in" "${packaging}/kestrel.pc" @ONLY)
install(FILES "${packaging}/kestrel.pc" DESTINATION "${pkgconfig_dir}" COMPONENT Development)

install(DIRECTORY "${PROJECT_SOURCE_DIR}/man/man3"
  DESTINATION "${CMAKE_INSTALL_MANDIR}"
  COMPONENT Development
  FILES_MATCHING PATTERN "*.3")

# Debian's packages have them in folders of their own.
install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" "${PROJECT_SOURCE_DIR}/THIRD_PARTY_NOTICES"
  DESTINATION "${CMAKE_INSTALL_DOCDIR}"
  COMPONENT Licences)
