# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# Before anything is installed from a build of this project alone: a component that there is not is refused,
# and the folders that were there before are noted, for `uninstall` leaves those. Included before any
# other install(), because rules are executed in the order in which they stand.
#
#   runtime      the library, nothing else
#   development  headers, the link that the linker uses, CMake package, pkg-config file
#   tools        the programs with their man pages and completions
#   host         the desktop's stand-ins of the platform's libraries: never where a platform has its own
#   examples     sources to copy
#   doc          documents, licence, what is used of others and an SPDX document about that
#   testkit      what applications are tested with
set(ORB_COMPONENTS runtime development)
if(ORB_BUILD_TOOLS OR ORB_BUILD_TESTS OR ORB_BUILD_BENCH)
  list(APPEND ORB_COMPONENTS tools)
endif()
if(ORB_PLATFORM STREQUAL "host")
  list(APPEND ORB_COMPONENTS host)
endif()
list(APPEND ORB_COMPONENTS examples doc)

# orb_start_of_install(): fills in what is known when all targets are.
function(orb_start_of_install)
  if(TARGET orb_testkit)
    list(APPEND ORB_COMPONENTS testkit)
  endif()
  configure_file(${PROJECT_SOURCE_DIR}/cmake/OrbInstallStart.cmake.in
    ${PROJECT_BINARY_DIR}/OrbInstallStart.cmake @ONLY)
endfunction()

if(IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
  set(ORB_CMAKE_DIR lib/cmake)
else()
  set(ORB_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake)
endif()

# A project that takes this one in has components of its own, and may have a target of that name.
if(ORB_STANDALONE)
  if(CMAKE_VERSION VERSION_GREATER_EQUAL 3.21)
    set(every ALL_COMPONENTS)
  endif()
  install(SCRIPT ${PROJECT_BINARY_DIR}/OrbInstallStart.cmake ${every})
  add_custom_target(uninstall VERBATIM
    COMMAND ${CMAKE_COMMAND} -DBUILD=${PROJECT_BINARY_DIR} -P ${PROJECT_SOURCE_DIR}/cmake/OrbUninstall.cmake
    COMMENT "Removing what was installed from ${PROJECT_BINARY_DIR}")
endif()
