# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# Warnings and language level of the project's own targets; never passed on to users of the library.
add_library(orb_flags INTERFACE)
target_compile_features(orb_flags INTERFACE cxx_std_17)
# The warnings of a project that takes this one in, perhaps as errors, are about that project's code.
if(ORB_STANDALONE OR ORB_WERROR)
  target_compile_options(orb_flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow
    $<$<COMPILE_LANGUAGE:CXX>:-Wconversion -Wnon-virtual-dtor -Woverloaded-virtual>)
else()
  target_compile_options(orb_flags INTERFACE -w)
endif()
if(ORB_WERROR)
  target_compile_options(orb_flags INTERFACE -Werror)
endif()
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 99)
set(CMAKE_C_EXTENSIONS OFF)

# Log lines and debug information name files from the project's root, and generated ones from the
# build's, wherever the two were. The last map that fits counts: one folder may hold the other.
set(ORB_FILE_MAPS -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)
cmake_path(IS_PREFIX CMAKE_BINARY_DIR ${PROJECT_SOURCE_DIR} NORMALIZE ORB_SOURCES_IN_BUILD)
if(ORB_SOURCES_IN_BUILD)
  list(PREPEND ORB_FILE_MAPS -ffile-prefix-map=${CMAKE_BINARY_DIR}=build)
else()
  list(APPEND ORB_FILE_MAPS -ffile-prefix-map=${CMAKE_BINARY_DIR}=build)
endif()
add_compile_options(${ORB_FILE_MAPS})
