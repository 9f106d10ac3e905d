# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# What tests and benchmarks link to of this folder.
include_guard(GLOBAL)

# The headers alone, for programs that bring or need no platform of the tests'.
add_library(orb_test_include INTERFACE)
target_include_directories(orb_test_include INTERFACE ${CMAKE_CURRENT_LIST_DIR}
  ${PROJECT_SOURCE_DIR}/platform/include)

# A platform that formats every line and drops it: it keeps nothing, has no lock that a forked child
# might find taken, and comes before the recording one.
add_library(orb_null_platform OBJECT ${CMAKE_CURRENT_LIST_DIR}/NullPlatform.cpp)
target_link_libraries(orb_null_platform PUBLIC orb_test_include PRIVATE orb_flags)
