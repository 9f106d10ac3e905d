# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# The targets of this folder that tests and benchmarks link to.
include_guard(GLOBAL)

# Only the headers, for programs that have their own platform or need none.
add_library(orb_test_include INTERFACE)
target_include_directories(orb_test_include INTERFACE ${CMAKE_CURRENT_LIST_DIR}
  ${PROJECT_SOURCE_DIR}/platform/include)

# A platform that formats every line and drops it. It keeps nothing and has no lock that could stay
# locked in a forked child. The linker finds it before the recording platform.
add_library(orb_null_platform OBJECT ${CMAKE_CURRENT_LIST_DIR}/NullPlatform.cpp)
target_link_libraries(orb_null_platform PUBLIC orb_test_include PRIVATE orb_flags)
