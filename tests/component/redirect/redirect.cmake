# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# The redirection inside a test's own program, and loaded before another.
add_executable(redirect_probe component/redirect/redirect_probe.cpp)
target_link_libraries(redirect_probe PRIVATE orb_flags)
target_link_libraries(HostRedirect_test PRIVATE orb_redirect_objects ${CMAKE_DL_LIBS})
orb_starts(HostRedirect_test REDIRECT_PROBE redirect_probe)
orb_finds(HostRedirect_test HOST_LIBREDIRECT $<TARGET_FILE:orb_redirect>)
add_dependencies(HostRedirect_test orb_redirect)
