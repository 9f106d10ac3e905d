# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# What `cmake --install` gives, in the components of OrbComponents.cmake; the tools' folders install
# theirs. Library, public headers, CMake package and pkg-config file find each other from where they lie,
# so the prefix may be chosen late and be moved. An absolute folder for libraries is where it is: the
# package lies below the prefix nevertheless, where it is looked for, and the pkg-config file beside the
# libraries is told the prefix when it is installed.
include(CMakePackageConfigHelpers)

install(TARGETS OrbSdlSdk EXPORT OrbSdlSdkTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
if(ORB_PLATFORM STREQUAL "host")
  # Nobody links them by name, so the package of the library holds where they are not installed.
  install(TARGETS orb_log orb_cutils orb_diag
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT host)
endif()
install(DIRECTORY include/orb DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development
  FILES_MATCHING PATTERN "*.h")

# A folder as the pkg-config file names it.
function(orb_pc_folder RESULT FOLDER)
  if(NOT IS_ABSOLUTE ${FOLDER})
    set(FOLDER "\${prefix}/${FOLDER}")
  endif()
  set(${RESULT} ${FOLDER} PARENT_SCOPE)
endfunction()
orb_pc_folder(ORB_PC_LIBDIR ${CMAKE_INSTALL_LIBDIR})
orb_pc_folder(ORB_PC_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR})

# orb_install_pc(NAME TEMPLATE COMPONENT): a pkg-config file beside the libraries.
function(orb_install_pc NAME TEMPLATE COMPONENT)
  set(pc ${CMAKE_CURRENT_BINARY_DIR}/${NAME}.pc)
  if(IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
    set(ORB_PC_PREFIX @ORB_PC_PREFIX@)
    configure_file(${TEMPLATE} ${pc}.in @ONLY)
    install(CODE "
      set(ORB_PC_PREFIX \"\${CMAKE_INSTALL_PREFIX}\")
      configure_file(\"${pc}.in\" \"${pc}\" @ONLY)" COMPONENT ${COMPONENT})
  else()
    file(RELATIVE_PATH ORB_PC_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
    set(ORB_PC_PREFIX "\${pcfiledir}/${ORB_PC_PREFIX}")
    configure_file(${TEMPLATE} ${pc} @ONLY)
  endif()
  install(FILES ${pc} DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT ${COMPONENT})
endfunction()
orb_install_pc(OrbSdlSdk ${PROJECT_SOURCE_DIR}/cmake/OrbSdlSdk.pc.in development)

install(EXPORT OrbSdlSdkTargets NAMESPACE OrbSdlSdk:: DESTINATION ${ORB_CMAKE_DIR}/OrbSdlSdk
  COMPONENT development FILE OrbSdlSdkConfig.cmake)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/OrbSdlSdkConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/OrbSdlSdkConfigVersion.cmake
  DESTINATION ${ORB_CMAKE_DIR}/OrbSdlSdk COMPONENT development)

if(TARGET orb_testkit)
  include(tools/testkit/install.cmake)
endif()

# As in the sources, so that what the documents name is found beside them.
install(FILES README.md CHANGELOG.md SECURITY.md LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT doc)
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT doc
  FILES_MATCHING PATTERN "*.md" PATTERN "*.svg" PATTERN "man" EXCLUDE)
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT examples
  PATTERN "testkit" EXCLUDE)
include(cmake/OrbLicences.cmake)
orb_install_licences()
orb_start_of_install()
