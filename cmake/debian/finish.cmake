# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# CPack gives each package with a library scripts that call ldconfig, which Debian's does by itself when a
# trigger says so. Without them a package has no program that runs as root when it is installed. Packed
# again, files have the date of the release at most, so two packages of the same files are the same.
cmake_policy(VERSION 3.20)
find_program(DPKG_DEB dpkg-deb REQUIRED)
if("$ENV{SOURCE_DATE_EPOCH}" STREQUAL "")
  set(ENV{SOURCE_DATE_EPOCH} ${CPACK_ORB_RELEASE_EPOCH})
endif()
foreach(package ${CPACK_PACKAGE_FILES})
  set(folder ${package}.files)
  file(REMOVE_RECURSE ${folder})
  execute_process(COMMAND ${DPKG_DEB} --raw-extract ${package} ${folder} COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE ${folder}/DEBIAN/postinst ${folder}/DEBIAN/postrm)
  execute_process(COMMAND ${DPKG_DEB} --root-owner-group --build ${folder} ${package}
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE_RECURSE ${folder})
endforeach()
