# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# Warnings and language level of the project's own targets; never passed on to users of the library.
add_library(orb_flags INTERFACE)
target_compile_features(orb_flags INTERFACE cxx_std_17)
target_compile_options(orb_flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow
  $<$<COMPILE_LANGUAGE:CXX>:-Wconversion -Wnon-virtual-dtor -Woverloaded-virtual>)
# Log lines and debug information name files from the project's root, wherever it was built.
target_compile_options(orb_flags INTERFACE -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)
if(ORB_WERROR)
  target_compile_options(orb_flags INTERFACE -Werror)
endif()
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 99)
set(CMAKE_C_EXTENSIONS OFF)
