# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# What the tests of orblog have beyond other tests: the reader's library, the program, its man page,
# and for writing log files an AES-GCM that is not the reader's own.
configure_file(${PROJECT_SOURCE_DIR}/docs/man/orblog.1 ${CMAKE_CURRENT_BINARY_DIR}/orblog.1 COPYONLY)
file(GLOB ORBLOG_TESTS ${CMAKE_CURRENT_LIST_DIR}/../unit/Orblog*_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/../e2e/Orblog*_test.cpp)
foreach(source ${ORBLOG_TESTS})
  get_filename_component(test ${source} NAME_WE)
  target_link_libraries(${test} PRIVATE orblog_core PkgConfig::GCRYPT)
  orb_finds(${test} ORBLOG_MAN_PAGE ${CMAKE_CURRENT_BINARY_DIR}/orblog.1)
  orb_starts(${test} ORBLOG_PROGRAM orblog)
endforeach()
