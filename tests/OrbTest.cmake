# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# Functions that make a program and a ctest entry from a test.

# Compiling a test spends most of the time in the same few headers. The programs share a precompiled
# header with the same flags. Each source still includes what it needs; a build with
# CMAKE_DISABLE_PRECOMPILE_HEADERS checks this.
set(ORB_TEST_OPTIONS -O0)  # tests are built more often than they run
if(CMAKE_BUILD_TYPE STREQUAL "RelWithDebInfo")
  list(APPEND ORB_TEST_OPTIONS -g1)  # lines for a stack; variables would take a quarter of the compile time
endif()
if(CMAKE_CXX_FLAGS MATCHES "-fsanitize=[a-z,]*undefined")
  # It would take a third of the compile time, and only the library and the tools are checked for
  # undefined behaviour.
  list(APPEND ORB_TEST_OPTIONS -fno-sanitize=undefined)
endif()
function(orb_test_headers NAME)
  cmake_parse_arguments(ARG "" "" "HEADERS;LINK" ${ARGN})
  add_executable(${NAME} EXCLUDE_FROM_ALL support/headers.cpp)
  target_link_libraries(${NAME} PRIVATE orb_flags orb_test_support ${ARG_LINK} GTest::gtest)
  target_compile_options(${NAME} PRIVATE ${ORB_TEST_OPTIONS})
  target_precompile_headers(${NAME} PRIVATE <gtest/gtest.h> <algorithm> <atomic> <chrono>
    <condition_variable> <functional> <map> <mutex> <string> <thread> <vector> ${ARG_HEADERS})
endfunction()
orb_test_headers(test_headers)
# For tests with the daemon stand-in, whose headers include the messages.
orb_test_headers(daemon_test_headers LINK orb_proto_headers
  HEADERS <lce.pb.h> <lle.pb.h> <lli.pb.h> <memory> <optional> <set>)

# Each test is linked separately, so a fast linker saves time. Installed files are linked by the
# compiler's default linker.
include(CheckLinkerFlag)
check_linker_flag(CXX -fuse-ld=gold ORB_HAS_GOLD)

# The libraries that a test may link to, besides the recording platform.
set(ORB_INTERNALS orb_objects $<TARGET_OBJECTS:orb_proto>)  # the library's objects
set(ORB_SHARED OrbSdlSdk $<TARGET_OBJECTS:orb_proto>)       # the library as shipped: its C API alone

# Tests that run out of memory. scripts/test also runs them built by clang, which initialises less
# memory than g++.
add_custom_target(memory_tests)

# orb_test(SOURCE [SANDBOX] [NEEDS PROGRAM] [SOURCES FILE...] [LINK LIBRARY...] [DEFINES DEFINITION...]
#          [STARTS DEFINITION PROGRAM...] [FINDS DEFINITION PATH...])
#   SANDBOX  it runs in scripts/sandbox
#   NEEDS    a program that it needs on a device: openssl, cmake, bash
#   SOURCES  more source files
#   LINK     more libraries, besides GoogleTest and the recording platform
#   STARTS, FINDS  programs and files of the build that it uses (support/started.cmake)
function(orb_test SOURCE)
  cmake_parse_arguments(ARG "SANDBOX" "NEEDS" "SOURCES;LINK;DEFINES;STARTS;FINDS" ${ARGN})
  get_filename_component(NAME ${SOURCE} NAME_WE)
  add_executable(${NAME} ${SOURCE} ${ARG_SOURCES})
  target_link_libraries(${NAME} PRIVATE orb_flags orb_test_support ${ARG_LINK} GTest::gtest_main)
  target_compile_options(${NAME} PRIVATE ${ORB_TEST_OPTIONS})
  target_compile_definitions(${NAME} PRIVATE ${ARG_DEFINES})
  orb_starts(${NAME} ${ARG_STARTS})
  if(ARG_FINDS)
    orb_finds(${NAME} ${ARG_FINDS})
  endif()
  if(ORB_HAS_GOLD AND NOT CMAKE_CROSSCOMPILING)
    target_link_options(${NAME} PRIVATE -fuse-ld=gold)
  endif()
  set(headers test_headers)
  if(orbd_sim IN_LIST ARG_LINK)
    set(headers daemon_test_headers)
  endif()
  target_precompile_headers(${NAME} REUSE_FROM ${headers})
  orb_started(COMMAND ${NAME})
  if(ARG_SANDBOX)
    list(PREPEND COMMAND ${PROJECT_SOURCE_DIR}/scripts/sandbox)
  endif()
  add_test(NAME ${NAME} COMMAND ${COMMAND})
  set_tests_properties(${NAME} PROPERTIES TIMEOUT 600)
  if(NOT ARG_NEEDS)
    set(ARG_NEEDS -)
  endif()
  orb_carried(${NAME} ${ARG_NEEDS} ${NAME})
endfunction()

# orb_tests([EXCEPT SOURCE] ARGUMENT...): calls orb_test() with these arguments for each *_test.cpp
# of this folder without an earlier orb_test().
function(orb_tests)
  cmake_parse_arguments(ARG "" "EXCEPT" "" ${ARGN})
  file(GLOB sources RELATIVE ${CMAKE_CURRENT_SOURCE_DIR} CONFIGURE_DEPENDS *_test.cpp)
  foreach(source ${sources})
    get_filename_component(name ${source} NAME_WE)
    if(NOT TARGET ${name} AND NOT source STREQUAL "${ARG_EXCEPT}")
      orb_test(${source} ${ARG_UNPARSED_ARGUMENTS})
    endif()
  endforeach()
endfunction()

# The program's AllocationHook gets each allocation of the program and of its libraries. If each
# library contains the C++ runtime, it has its own operator new; then malloc is hooked.
function(orb_hook_allocations PROGRAM)
  target_sources(${PROGRAM} PRIVATE ${PROJECT_SOURCE_DIR}/tests/support/AllocationHook.cpp)
  target_link_libraries(${PROGRAM} PRIVATE orb_test_include)
  get_target_property(libraries ${PROGRAM} LINK_LIBRARIES)
  if(CMAKE_CROSSCOMPILING AND OrbSdlSdk IN_LIST libraries)
    target_compile_definitions(${PROGRAM} PRIVATE ORB_HOOK_MALLOC)
  endif()
endfunction()

# A test with failing allocations.
function(orb_memory_test NAME)
  add_dependencies(memory_tests ${NAME})
  set_tests_properties(${NAME} PROPERTIES LABELS memory)
endfunction()

# orb_out_of_memory(NAME...): tests that make allocations fail with support/FailingNew.h.
function(orb_out_of_memory)
  foreach(name ${ARGN})
    target_sources(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests/support/FailingNew.cpp)
    orb_hook_allocations(${name})
    orb_memory_test(${name})
  endforeach()
endfunction()
