# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# Between CPack's install and its packages: each gets copyright and changelog, manual pages are compressed,
# completions lie where Debian's shells look, pkg-config files name the prefix, and folders are everybody's
# whoever packs.
cmake_policy(VERSION 3.20)
find_program(GZIP gzip REQUIRED)

# Without a name and a time in the file, the same bytes every time.
function(compress FILE)
  execute_process(COMMAND ${GZIP} -9 -n -f "${FILE}" COMMAND_ERROR_IS_FATAL ANY)
endfunction()

foreach(entry ${CPACK_ORB_PACKAGES})
  string(REPLACE "=" ";" entry ${entry})
  list(GET entry 0 group)
  list(GET entry 1 package)
  set(share ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${group}${CPACK_PACKAGING_INSTALL_PREFIX}/share)
  file(GLOB pages ${share}/man/man*/*)
  foreach(page ${pages})
    compress(${page})
  endforeach()
  if(EXISTS ${share}/zsh/site-functions)
    file(RENAME ${share}/zsh/site-functions ${share}/zsh/vendor-completions)
  endif()
  # A package is never moved. pkg-config prints no option for a folder that it knows as the system's:
  # as -isystem it would hide the C library's headers from those of C++.
  file(GLOB_RECURSE files ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${group}/*.pc)
  foreach(file ${files})
    file(READ ${file} text)
    string(REGEX REPLACE "^prefix=[^\n]*" "prefix=${CPACK_PACKAGING_INSTALL_PREFIX}" text "${text}")
    file(WRITE ${file} "${text}")
  endforeach()
  set(folder ${share}/doc/${package})
  file(MAKE_DIRECTORY ${folder})
  file(COPY_FILE ${CPACK_ORB_DEBIAN}/copyright ${folder}/copyright)
  file(COPY_FILE ${CPACK_ORB_DEBIAN}/changelog ${folder}/changelog.Debian)
  file(CHMOD ${folder}/copyright ${folder}/changelog.Debian PERMISSIONS
    OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
  compress(${folder}/changelog.Debian)
  file(GLOB_RECURSE entries LIST_DIRECTORIES true ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${group}/*)
  foreach(entry ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${group} ${entries})
    if(IS_DIRECTORY ${entry} AND NOT IS_SYMLINK ${entry})
      file(CHMOD ${entry} PERMISSIONS ${CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS})
    endif()
  endforeach()
endforeach()
