# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# The package orbsim, which finds its files from where it lies, as that of the library does.
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME testkit)
set(kit ${PROJECT_SOURCE_DIR}/tools/testkit)
get_property(archive GLOBAL PROPERTY ORB_TESTKIT_ARCHIVE)

install(FILES ${archive} DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY ${kit}/inc/orbsim DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  FILES_MATCHING PATTERN "*.h")
install(FILES ${kit}/python/orbsim_pytest.py DESTINATION ${CMAKE_INSTALL_DATADIR}/orbsim/python)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples/testkit
  DESTINATION ${CMAKE_INSTALL_DATADIR}/orbsim/examples)

set(ORBSIM_ARCHIVE ${CMAKE_INSTALL_LIBDIR}/liborbsim.a)
set(ORBSIM_EXPORT_FLAG)
if(ORB_HAS_export_dynamic_symbol)
  set(ORBSIM_EXPORT_FLAG -Wl,--export-dynamic-symbol=connect)
endif()
configure_package_config_file(${kit}/orbsimConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/orbsimConfig.cmake INSTALL_DESTINATION ${ORB_CMAKE_DIR}/orbsim
  PATH_VARS ORBSIM_ARCHIVE CMAKE_INSTALL_INCLUDEDIR CMAKE_INSTALL_BINDIR CMAKE_INSTALL_DATADIR)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/orbsimConfigVersion.cmake
  VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/orbsimConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/orbsimConfigVersion.cmake DESTINATION ${ORB_CMAKE_DIR}/orbsim)
orb_pc_folder(ORB_PC_DATADIR ${CMAKE_INSTALL_DATADIR})
orb_install_pc(orbsim ${kit}/orbsim.pc.in testkit)
