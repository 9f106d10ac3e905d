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

# What nobody calls goes: of the library itself little, of what is linked into it most.
foreach(target orb_objects orb_proto)
  target_compile_options(${target} PRIVATE -ffunction-sections -fdata-sections)
endforeach()
check_linker_flag(CXX LINKER:--gc-sections ORB_HAS_gc_sections)

# A C++ runtime inside the library. Compilers that always link theirs statically know neither flag.
set(ORB_RUNTIME_LINK)
if(ORB_STATIC_CXX)
  set(CMAKE_REQUIRED_FLAGS -Werror)
  foreach(flag -static-libstdc++ -static-libgcc)
    string(MAKE_C_IDENTIFIER "ORB_HAS${flag}" known)
    check_linker_flag(CXX ${flag} ${known})
    if(${known})
      list(APPEND ORB_RUNTIME_LINK ${flag})
    endif()
  endforeach()
  unset(CMAKE_REQUIRED_FLAGS)
endif()

# orb_library(NAME PLATFORM...): the library of the objects above. The targets PLATFORM satisfy its log,
# property and diagnostic calls; they are linked as files, so that the package of the library does not ask
# for them, which may be the platform's own where it is used.
check_linker_flag(CXX LINKER:-rpath-link,/ ORB_HAS_rpath_link)
set(ORB_EXPORTS ${PROJECT_SOURCE_DIR}/cmake/OrbSdlSdk.map)
function(orb_library NAME)
  add_library(${NAME} SHARED $<TARGET_OBJECTS:orb_objects> $<TARGET_OBJECTS:orb_proto>)
  set_target_properties(${NAME} PROPERTIES OUTPUT_NAME OrbSdlSdk VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR} LINK_DEPENDS ${ORB_EXPORTS} LINKER_LANGUAGE CXX
    CXX_VISIBILITY_PRESET hidden)
  if(ORB_STATIC_CXX)
    target_sources(${NAME} PRIVATE ${PROJECT_SOURCE_DIR}/utils/base/src/Demangler.cpp)
  endif()
  # As the headers of an installed library: warnings that somebody's project asks for are not about them.
  set(system)
  if(NOT ORB_STANDALONE)
    set(system SYSTEM)
  endif()
  target_include_directories(${NAME} ${system} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>)
  target_link_libraries(${NAME} PRIVATE $<BUILD_INTERFACE:orb_proto_headers>
    $<BUILD_INTERFACE:OpenSSL::Crypto> Threads::Threads ${CMAKE_DL_LIBS})
  add_dependencies(${NAME} ${ARGN})
  foreach(library ${ARGN})
    target_link_libraries(${NAME} PRIVATE $<BUILD_INTERFACE:$<TARGET_FILE:${library}>>)
    if(ORB_HAS_rpath_link)
      target_link_options(${NAME} INTERFACE
        $<BUILD_INTERFACE:LINKER:-rpath-link,$<TARGET_FILE_DIR:${library}>>)
    endif()
  endforeach()
  # nodelete: dlclose must never unmap code that one of the library's threads still runs.
  target_link_options(${NAME} PRIVATE -Wl,--version-script=${ORB_EXPORTS} -Wl,-z,nodelete
    $<$<BOOL:${ORB_HAS_gc_sections}>:LINKER:--gc-sections> ${ORB_RUNTIME_LINK})
  orb_harden(${NAME})
  orb_build_id(${NAME} $<TARGET_OBJECTS:orb_objects> $<TARGET_OBJECTS:orb_proto>
    $<TARGET_FILE:protobuf::libprotobuf-lite>)
endfunction()

# orb_device_library(NAME): linked to the stubs, which only the linker sees. A device's loader knows where
# its own libraries are.
function(orb_device_library NAME)
  orb_library(${NAME} orb_stub_log orb_stub_cutils orb_stub_diag)
  set_target_properties(${NAME} PROPERTIES SKIP_BUILD_RPATH ON)
  # What neither the stubs nor anything else has is missed here, not on the device.
  target_link_options(${NAME} PRIVATE LINKER:-z,defs)
endfunction()

orb_harden(orb_objects)
if(ORB_PLATFORM STREQUAL "host")
  orb_library(OrbSdlSdk orb_log orb_cutils orb_diag)
  # The stand-ins are installed beside the library and found there.
  set_target_properties(OrbSdlSdk PROPERTIES INSTALL_RPATH "$ORIGIN")
else()
  orb_device_library(OrbSdlSdk)
endif()
add_library(OrbSdlSdk::OrbSdlSdk ALIAS OrbSdlSdk)
