# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# What `cmake --install` gives: library, public headers, CMake package, pkg-config file.
include(CMakePackageConfigHelpers)
install(TARGETS OrbSdlSdk EXPORT OrbSdlSdkTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/orb DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
set(ORB_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/OrbSdlSdk)
install(EXPORT OrbSdlSdkTargets NAMESPACE OrbSdlSdk:: DESTINATION ${ORB_PACKAGE_DIR}
  FILE OrbSdlSdkConfig.cmake)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/OrbSdlSdkConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
configure_file(cmake/OrbSdlSdk.pc.in OrbSdlSdk.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/OrbSdlSdkConfigVersion.cmake
  DESTINATION ${ORB_PACKAGE_DIR})
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/OrbSdlSdk.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
