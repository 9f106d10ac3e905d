# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# Debian packages: `cpack -G DEB` in a build folder makes them of what is installed. A package is one
# component or a few; cmake/debian/stage.cmake adds what a package of Debian has besides.
set(CPACK_PACKAGE_NAME OrbSdlSdk)
set(CPACK_PACKAGE_VENDOR "The OrbSdlSdk authors")
# No mail comes to this address: who distributes packages gives another one.
if(NOT CPACK_PACKAGE_CONTACT)
  set(CPACK_PACKAGE_CONTACT "The OrbSdlSdk authors <maintainers@orbsdlsdk.example>")
endif()
set(CPACK_GENERATOR DEB)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE
  GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_COMPONENTS_ALL runtime development tools host examples doc)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE gzip) # packed again, by xz
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SOURCE orbsdlsdk)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR} ${PROJECT_BINARY_DIR}/platform/host)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/debian/stage.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/debian/finish.cmake)
set(CPACK_ORB_RELEASE_EPOCH ${ORB_RELEASE_EPOCH})
set(ORB_DEBIAN ${PROJECT_BINARY_DIR}/debian)
set(version ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})

# orb_debian_package(GROUP NAME SECTION DEPENDS DESCRIPTION): what others of these it needs; what it
# needs of the system is found in its files.
macro(orb_debian_package GROUP NAME SECTION DEPENDS DESCRIPTION)
  string(TOUPPER ${GROUP} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${NAME})
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${SECTION})
  set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "${DEPENDS}")
  set(CPACK_DEBIAN_${upper}_DESCRIPTION "${DESCRIPTION}")
  list(APPEND CPACK_ORB_PACKAGES ${GROUP}=${NAME})
endmacro()
set(about "libOrbSdlSdk gives applications on a modem platform three services of the
system's link daemon: estimates of capacity and latency of the link, and
notice of its interruptions.")
orb_debian_package(library liborbsdlsdk${PROJECT_VERSION_MAJOR} libs
  "orb-host-platform (= ${version}) | orb-platform"
  "link services of the modem platform - library\n${about}\n.\nThis package has the library.")
orb_debian_package(headers liborbsdlsdk-dev libdevel "liborbsdlsdk${PROJECT_VERSION_MAJOR} (= ${version})"
  "link services of the modem platform - development\n${about}\n.\nThis package has headers, CMake package, pkg-config file, examples and\ndocuments.")
orb_debian_package(programs orb-tools utils "liborbsdlsdk${PROJECT_VERSION_MAJOR} (= ${version})"
  "link services of the modem platform - tools\n${about}\n.\nThis package has orbctl, orblog, orbdiag, and orbd-sim, which stands in for\nthe daemon.")
orb_debian_package(standins orb-host-platform libs ""
  "link services of the modem platform - stand-ins\n${about}\n.\nThis package has what takes the place of the platform's libraries on a\ndesktop: log, properties and diagnostics.")
# There is nothing in these that a loader reads, and CPack would look at each file.
set(CPACK_DEBIAN_HEADERS_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_KIT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_STANDINS_PACKAGE_PROVIDES orb-platform)
set(CPACK_DEBIAN_PROGRAMS_PACKAGE_RECOMMENDS bubblewrap)
set(CPACK_DEBIAN_PROGRAMS_PACKAGE_SUGGESTS "gnuplot-nox | gnuplot") # for orbctl plot
if(TARGET orb_testkit)
  list(APPEND CPACK_COMPONENTS_ALL testkit)
  orb_debian_package(kit liborbsim-dev libdevel
    "liborbsdlsdk-dev (= ${version}), orb-tools (= ${version})"
    "link services of the modem platform - tests of applications\n${about}\n.\nThis package has what applications are tested with: a daemon inside the\ntest's process, and fixtures for GoogleTest and pytest.")
endif()

# A symbol is as old as the node of the map that it stands in: LIBORBSDLSDK_1 is 1.0, ..._1_2 is 1.2.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${ORB_EXPORTS})
file(STRINGS ${ORB_EXPORTS} lines)
set(symbols)
set(nodes)
foreach(line ${lines})
  if(line MATCHES "^(LIBORBSDLSDK_([0-9]+)_?([0-9]*)) ")
    set(node ${CMAKE_MATCH_1})
    set(since ${CMAKE_MATCH_2}.${CMAKE_MATCH_3})
    string(REGEX REPLACE "\\.$" ".0" since ${since})
    list(APPEND nodes " ${node}@${node} ${since}\n")
  elseif(line MATCHES "^ *([A-Za-z_][A-Za-z0-9_]*) *$" OR line MATCHES "^ *([A-Za-z_][A-Za-z0-9_]*);")
    list(APPEND symbols " ${CMAKE_MATCH_1}@${node} ${since}\n")
  endif()
endforeach()
list(SORT symbols)
list(JOIN nodes "" nodes)
list(JOIN symbols "" symbols)
set(name liborbsdlsdk${PROJECT_VERSION_MAJOR})
file(CONFIGURE OUTPUT ${ORB_DEBIAN}/symbols @ONLY
  CONTENT "libOrbSdlSdk.so.${PROJECT_VERSION_MAJOR} ${name} #MINVER#\n${nodes}${symbols}")
file(CONFIGURE OUTPUT ${ORB_DEBIAN}/shlibs @ONLY
  CONTENT "libOrbSdlSdk ${PROJECT_VERSION_MAJOR} ${name} (>= ${PROJECT_VERSION})\n")
file(CONFIGURE OUTPUT ${ORB_DEBIAN}/triggers @ONLY CONTENT "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA
  "${ORB_DEBIAN}/symbols;${ORB_DEBIAN}/shlibs;${ORB_DEBIAN}/triggers")
set(CPACK_DEBIAN_STANDINS_PACKAGE_CONTROL_EXTRA ${ORB_DEBIAN}/triggers)
set(CPACK_DEBIAN_PROGRAMS_PACKAGE_CONTROL_EXTRA ${ORB_DEBIAN}/triggers)

orb_release_date(ORB_RELEASE_DATE "%a, %d %b %Y %H:%M:%S +0000")
configure_file(cmake/debian/changelog.in ${ORB_DEBIAN}/changelog @ONLY)
file(READ ${PROJECT_BINARY_DIR}/THIRD-PARTY others)
string(REGEX REPLACE "\n+$" "" others "${others}")
string(REPLACE "\n\n" "\n.\n" others "${others}")
string(REPLACE "\n" "\n " ORB_OTHERS_COMMENT "${others}")
configure_file(cmake/debian/copyright.in ${ORB_DEBIAN}/copyright @ONLY)
set(CPACK_ORB_DEBIAN ${ORB_DEBIAN})

include(CPack)
foreach(group library headers programs standins kit)
  cpack_add_component_group(${group})
endforeach()
cpack_add_component(runtime GROUP library)
foreach(component development examples doc)
  cpack_add_component(${component} GROUP headers)
endforeach()
cpack_add_component(tools GROUP programs)
cpack_add_component(host GROUP standins)
cpack_add_component(testkit GROUP kit)
