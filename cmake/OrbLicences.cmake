# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# What is used of others: THIRD-PARTY for people, an SPDX document for programs. Both follow from what the
# targets link, so nothing is forgotten: whoever links something new has to give its licence here.
include(${CMAKE_CURRENT_LIST_DIR}/OrbRelease.cmake)

# orb_others(NAME LICENCE VERSION LIBRARY REGEX): what a target links if one of its items is like REGEX.
# LIBRARY is the file, or "headers".
set(ORB_OTHERS)
macro(orb_others NAME LICENCE VERSION LIBRARY REGEX)
  list(APPEND ORB_OTHERS "${NAME}")
  set(ORB_OTHER_${NAME} "${REGEX}")
  set(ORB_OTHER_${NAME}_LICENCE "${LICENCE}")
  set(ORB_OTHER_${NAME}_VERSION "${VERSION}")
  set(ORB_OTHER_${NAME}_LIBRARY "${LIBRARY}")
endmacro()
foreach(package CLI11 fmt nlohmann_json valijson)
  if(ORB_BUILD_TOOLS OR ORB_BUILD_TESTS OR ORB_BUILD_BENCH)
    find_package(${package} QUIET)
  endif()
endforeach()
set(curses)
if(CURSES_INCLUDE_PATH AND EXISTS ${CURSES_INCLUDE_PATH}/curses.h)
  file(STRINGS ${CURSES_INCLUDE_PATH}/curses.h curses REGEX "^#define NCURSES_VERSION \"")
  string(REGEX REPLACE ".*\"(.*)\".*" "\\1" curses "${curses}")
endif()
set(runtime libstdc++)
set(runtime_licence "GPL-3.0-or-later WITH GCC-exception-3.1")
if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CROSSCOMPILING)
  set(runtime libc++)
  set(runtime_licence "Apache-2.0 WITH LLVM-exception")
endif()
orb_others(protobuf BSD-3-Clause "${Protobuf_VERSION}" "${Protobuf_LITE_LIBRARIES}" "protobuf")
orb_others(OpenSSL Apache-2.0 "${OPENSSL_VERSION}" "${OPENSSL_CRYPTO_LIBRARY}" "OpenSSL::Crypto|libcrypto")
orb_others(CLI11 BSD-3-Clause "${CLI11_VERSION}" headers "CLI11")
orb_others(fmt MIT "${fmt_VERSION}" headers "^fmt::fmt-header-only$")
orb_others(nlohmann-json MIT "${nlohmann_json_VERSION}" headers "nlohmann_json")
orb_others(valijson BSD-2-Clause "${valijson_VERSION}" headers "^valijson$")
orb_others(ncurses X11-distribute-modifications-variant "${curses}" "${CURSES_NCURSES_LIBRARY}" "curses|tinfo|libform")
orb_others(${runtime} "${runtime_licence}" "" shared "^runtime$")

# orb_linked(RESULT TARGET): the items that TARGET links and that are not of this project.
function(orb_linked RESULT TARGET)
  set(found "runtime")
  set(seen)
  set(open ${TARGET})
  while(open)
    list(POP_FRONT open item)
    if(item IN_LIST seen)
      continue()
    endif()
    list(APPEND seen ${item})
    if(item MATCHES "^(orb|Orb|Threads::|dl$|rt$)" OR item STREQUAL TARGET)
      if(TARGET ${item})
        foreach(property LINK_LIBRARIES INTERFACE_LINK_LIBRARIES)
          get_target_property(links ${item} ${property})
          # A target's file stands for the target, and nothing is linked on a condition.
          foreach(layer RANGE 2)
            list(TRANSFORM links REPLACE "^\\$<(BUILD_INTERFACE|LINK_ONLY|TARGET_FILE):(.*)>$" "\\2")
          endforeach()
          # Not items: how CMake notes in which folder one was added.
          list(FILTER links EXCLUDE REGEX "NOTFOUND$|^::@")
          list(APPEND open ${links})
        endforeach()
      endif()
    else()
      list(APPEND found "${item}")
    endif()
  endwhile()
  set(${RESULT} "${found}" PARENT_SCOPE)
endfunction()

# orb_used_by(RESULT TARGET...): the names of ORB_OTHERS that these targets link.
function(orb_used_by RESULT)
  set(used)
  foreach(target ${ARGN})
    orb_linked(items ${target})
    foreach(item ${items})
      set(name)
      foreach(other ${ORB_OTHERS})
        if(item MATCHES "${ORB_OTHER_${other}}")
          set(name ${other})
        endif()
      endforeach()
      if(NOT name)
        message(FATAL_ERROR "${target} links ${item}: cmake/OrbLicences.cmake has no licence of that")
      endif()
      list(APPEND used ${name})
    endforeach()
  endforeach()
  list(REMOVE_DUPLICATES used)
  list(SORT used)
  set(${RESULT} "${used}" PARENT_SCOPE)
endfunction()

# How COMPONENT gets what NAME is: inside, or from the system.
function(orb_linkage RESULT COMPONENT NAME)
  set(linkage DYNAMIC_LINK)
  set(library "${ORB_OTHER_${NAME}_LIBRARY}")
  if(library STREQUAL "headers" OR library MATCHES "\\.a$" OR (NAME STREQUAL "protobuf" AND COMPONENT STREQUAL "testkit")
      OR (library STREQUAL "shared" AND COMPONENT STREQUAL "runtime" AND ORB_STATIC_CXX))
    set(linkage STATIC_LINK)
  endif()
  set(${RESULT} ${linkage} PARENT_SCOPE)
endfunction()

# An identifier of the document has few signs.
function(orb_spdx_id RESULT NAME)
  string(REGEX REPLACE "[^A-Za-z0-9.-]" "x" id "${NAME}")
  set(${RESULT} "SPDXRef-${id}" PARENT_SCOPE)
endfunction()
function(orb_spdx_package RESULT NAME CALLED VERSION LICENCE)
  orb_spdx_id(id "${NAME}")
  if(VERSION)
    set(version "\n      \"versionInfo\": \"${VERSION}\",")
  endif()
  set(${RESULT} "    {
      \"SPDXID\": \"${id}\",
      \"name\": \"${CALLED}\",${version}
      \"downloadLocation\": \"NOASSERTION\",
      \"filesAnalyzed\": false,
      \"licenseConcluded\": \"${LICENCE}\",
      \"licenseDeclared\": \"${LICENCE}\",
      \"copyrightText\": \"NOASSERTION\"
    }" PARENT_SCOPE)
endfunction()
function(orb_spdx_relation RESULT FROM TYPE TO)
  orb_spdx_id(from "${FROM}")
  orb_spdx_id(to "${TO}")
  set(${RESULT} "    {
      \"spdxElementId\": \"${from}\",
      \"relationshipType\": \"${TYPE}\",
      \"relatedSpdxElement\": \"${to}\"
    }" PARENT_SCOPE)
endfunction()

function(orb_install_licences)
  set(parts_runtime OrbSdlSdk orb_objects)
  set(parts_tools orbctl orblog orbd-sim orbdiag)
  set(parts_host orb_log orb_cutils orb_diag)
  set(parts_testkit orb_testkit_objects)
  set(all)
  set(packages)
  set(relations)
  set(text "What libOrbSdlSdk ${PROJECT_VERSION} and what comes with it use of others.\n")
  foreach(component runtime host tools testkit)
    set(targets)
    foreach(target ${parts_${component}})
      if(TARGET ${target})
        list(APPEND targets ${target})
      endif()
    endforeach()
    if(NOT targets)
      continue()
    endif()
    orb_spdx_package(package ${component} "OrbSdlSdk ${component}" ${PROJECT_VERSION} Apache-2.0)
    list(APPEND packages "${package}")
    orb_spdx_relation(relation DOCUMENT DESCRIBES ${component})
    list(APPEND relations "${relation}")
    orb_used_by(used ${targets})
    list(APPEND all ${used})
    string(APPEND text "\n${component}:\n")
    foreach(name ${used})
      orb_linkage(linkage ${component} ${name})
      orb_spdx_relation(relation ${component} ${linkage} ${name})
      list(APPEND relations "${relation}")
      set(where "from the system")
      if(linkage STREQUAL "STATIC_LINK")
        set(where inside)
      endif()
      string(STRIP "${name} ${ORB_OTHER_${name}_VERSION}" called)
      string(APPEND text "  ${called}, ${where}; licence: ${ORB_OTHER_${name}_LICENCE}\n")
    endforeach()
  endforeach()
  list(REMOVE_DUPLICATES all)
  list(SORT all)
  foreach(name ${all})
    orb_spdx_package(package ${name} ${name} "${ORB_OTHER_${name}_VERSION}" "${ORB_OTHER_${name}_LICENCE}")
    list(APPEND packages "${package}")
  endforeach()
  list(JOIN packages ",\n" packages)
  list(JOIN relations ",\n" relations)
  string(UUID id NAMESPACE 6ba7b811-9dad-11d1-80b4-00c04fd430c8 NAME "${packages}${relations}" TYPE SHA1)
  orb_release_date(created "%Y-%m-%dT%H:%M:%SZ")
  file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/OrbSdlSdk.spdx.json @ONLY CONTENT "{
  \"spdxVersion\": \"SPDX-2.3\",
  \"dataLicense\": \"CC0-1.0\",
  \"SPDXID\": \"SPDXRef-DOCUMENT\",
  \"name\": \"OrbSdlSdk-${PROJECT_VERSION}\",
  \"documentNamespace\": \"urn:uuid:${id}\",
  \"creationInfo\": {
    \"created\": \"${created}\",
    \"creators\": [\"Organization: The OrbSdlSdk authors\"]
  },
  \"packages\": [\n${packages}\n  ],
  \"relationships\": [\n${relations}\n  ]\n}\n")
  file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/THIRD-PARTY @ONLY CONTENT "${text}")
  install(FILES ${PROJECT_BINARY_DIR}/OrbSdlSdk.spdx.json ${PROJECT_BINARY_DIR}/THIRD-PARTY
    DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT doc)
endfunction()
