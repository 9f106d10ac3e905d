# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# The tests of orbctl: its library, the program beside a daemon in the test's process.
find_package(nlohmann_json REQUIRED)
file(GLOB ORBCTL_TESTS CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/../tools/orbctl/*_test.cpp)
foreach(source ${ORBCTL_TESTS})
  get_filename_component(test ${source} NAME_WE)
  orb_test(${source} SANDBOX LINK orbctl_core orbd_sim $<TARGET_OBJECTS:orb_proto>
    nlohmann_json::nlohmann_json)
  target_include_directories(${test} PRIVATE ${CMAKE_CURRENT_LIST_DIR}/../tools/orbctl)
  target_compile_definitions(${test} PRIVATE ORB_VERSION="${PROJECT_VERSION}")
  orb_starts(${test} ORBCTL_PROGRAM orbctl)
endforeach()
if(CMAKE_CROSSCOMPILING)
  orb_not_run("there is no ncurses for the target" "OrbctlScreen_test, the whole screen alone")
endif()
