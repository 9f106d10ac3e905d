# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# The library: every room adds its sources to orb_objects; tests of internal classes link the same objects.
add_library(orb_objects OBJECT)
set_target_properties(orb_objects PROPERTIES CXX_VISIBILITY_PRESET hidden
  VISIBILITY_INLINES_HIDDEN ON)
target_compile_definitions(orb_objects PRIVATE _GNU_SOURCE)
# Clang checks what the library says about its locks (utils/base/inc/Mutex.h).
target_compile_options(orb_objects PRIVATE
  $<$<CXX_COMPILER_ID:Clang,AppleClang>:-Wthread-safety>)
target_include_directories(orb_objects PUBLIC
  ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/platform/include
  ${PROJECT_SOURCE_DIR}/utils/base/inc ${PROJECT_SOURCE_DIR}/utils/logUtil/inc
  ${PROJECT_SOURCE_DIR}/utils/eventManager/inc
  ${PROJECT_SOURCE_DIR}/utils/processUtils/inc ${PROJECT_SOURCE_DIR}/le/utils/orb_ipc/inc
  ${PROJECT_SOURCE_DIR}/sdk/inc ${PROJECT_SOURCE_DIR}/le/sdk/inc ${PROJECT_SOURCE_DIR}/sdk/Sdl/inc)
target_link_libraries(orb_objects PRIVATE orb_flags
  PUBLIC orb_proto_headers OpenSSL::Crypto Threads::Threads ${CMAKE_DL_LIBS})
foreach(room utils/base utils/logUtil utils/eventManager utils/processUtils le/utils/processUtils
        le/utils/orb_ipc sdk le/sdk sdk/Sdl)
  add_subdirectory(${room})
endforeach()

set(ORB_EXPORTS ${PROJECT_SOURCE_DIR}/cmake/OrbSdlSdk.map)
add_library(OrbSdlSdk SHARED $<TARGET_OBJECTS:orb_objects> $<TARGET_OBJECTS:orb_proto>)
add_library(OrbSdlSdk::OrbSdlSdk ALIAS OrbSdlSdk)
set_target_properties(OrbSdlSdk PROPERTIES VERSION ${PROJECT_VERSION}
  SOVERSION ${PROJECT_VERSION_MAJOR} LINK_DEPENDS ${ORB_EXPORTS} LINKER_LANGUAGE CXX)
target_include_directories(OrbSdlSdk PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>)
target_link_libraries(OrbSdlSdk PRIVATE $<BUILD_INTERFACE:orb_proto_headers>
  $<BUILD_INTERFACE:OpenSSL::Crypto> Threads::Threads ${CMAKE_DL_LIBS})
# nodelete: dlclose must never unmap code that one of the library's threads still runs.
target_link_options(OrbSdlSdk PRIVATE -Wl,--version-script=${ORB_EXPORTS} -Wl,-z,nodelete)
orb_harden(orb_objects OrbSdlSdk)
orb_build_id(OrbSdlSdk $<TARGET_OBJECTS:orb_objects> $<TARGET_OBJECTS:orb_proto>
  $<TARGET_FILE:protobuf::libprotobuf-lite>)
# The platform's libraries satisfy the log, property and diagnostic calls; which ones is the build's
# choice. The device's are named as flags: another project's target may have such a name.
if(ORB_PLATFORM STREQUAL "host")
  # The stand-ins are installed beside the library and found there.
  set_target_properties(OrbSdlSdk PROPERTIES INSTALL_RPATH "$ORIGIN")
  target_link_libraries(OrbSdlSdk PRIVATE $<BUILD_INTERFACE:orb_log> $<BUILD_INTERFACE:orb_cutils>
    $<BUILD_INTERFACE:orb_diag>)
else()
  target_link_libraries(OrbSdlSdk PRIVATE -llog -lcutils -ldiag)
endif()
