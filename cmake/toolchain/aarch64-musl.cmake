# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# Toolchain: AArch64 Linux with the musl C library, the platform that the library is for.
#
# It describes the folder that `scripts/target` fills: compiler wrappers in bin/, libraries in include/
# and lib/, and in sysroot/ what a program needs to run. ORB_TARGET_CACHE, from the command line or the
# environment, names it; without one it is where `scripts/target` has it by default.
#
#   ORB_TARGET_UBSAN_TRAP   ON keeps the compiler's own default for builds without optimisation:
#                           undefined behaviour stops the program, with no message. OFF, the default,
#                           leaves the search to the host, where the sanitizer can speak.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)

# CMake reads this file again for every check of the compiler, which knows no variable but these.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES ORB_TARGET_CACHE ORB_TARGET_UBSAN_TRAP)

if(NOT ORB_TARGET_CACHE)
  if(NOT "$ENV{ORB_TARGET_CACHE}" STREQUAL "")
    set(ORB_TARGET_CACHE "$ENV{ORB_TARGET_CACHE}")
  elseif(NOT "$ENV{XDG_CACHE_HOME}" STREQUAL "")
    set(ORB_TARGET_CACHE "$ENV{XDG_CACHE_HOME}/orb-target")
  else()
    set(ORB_TARGET_CACHE "$ENV{HOME}/.cache/orb-target")
  endif()
endif()
get_filename_component(ORB_TARGET_CACHE "${ORB_TARGET_CACHE}" ABSOLUTE)
set(ORB_TARGET_CACHE "${ORB_TARGET_CACHE}" CACHE PATH "What scripts/target has made")
set(ORB_TARGET_UBSAN_TRAP OFF CACHE BOOL "Trap on undefined behaviour in builds without optimisation")
set(ORB_TARGET_TOOL "${ORB_TARGET_CACHE}/bin/aarch64-linux-musl")
if(NOT EXISTS "${ORB_TARGET_TOOL}-c++")
  message(FATAL_ERROR "No cross compiler in ${ORB_TARGET_CACHE}: run `scripts/target build`")
endif()

set(CMAKE_C_COMPILER "${ORB_TARGET_TOOL}-cc")
set(CMAKE_CXX_COMPILER "${ORB_TARGET_TOOL}-c++")
set(CMAKE_ASM_COMPILER "${ORB_TARGET_TOOL}-cc")
set(CMAKE_AR "${ORB_TARGET_TOOL}-ar" CACHE FILEPATH "")
set(CMAKE_RANLIB "${ORB_TARGET_TOOL}-ranlib" CACHE FILEPATH "")
# The machine's own knows its own processor only.
set(CMAKE_STRIP "${ORB_TARGET_TOOL}-strip" CACHE FILEPATH "")
set(CMAKE_USER_MAKE_RULES_OVERRIDE "${CMAKE_CURRENT_LIST_DIR}/zig-rules.cmake")
if(NOT CMAKE_PROJECT_INCLUDE)
  set(CMAKE_PROJECT_INCLUDE "${CMAKE_CURRENT_LIST_DIR}/zig-project.cmake")
endif()

if(NOT ORB_TARGET_UBSAN_TRAP)
  foreach(language C CXX)
    set(CMAKE_${language}_FLAGS_INIT "-fno-sanitize=undefined")
  endforeach()
endif()

# Stripped: the C++ runtime that goes into each has debug information, whatever is asked for, which
# names folders of the build machine and is nine tenths of the size.
foreach(kind EXE SHARED MODULE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT "-s")
endforeach()

# The linker makes a program static unless one of its inputs is a shared library, and in a static musl
# program every dlopen() fails. So each gets one, which is empty.
string(APPEND CMAKE_EXE_LINKER_FLAGS_INIT
  " -Wl,--as-needed ${ORB_TARGET_CACHE}/lib/libforce-dynamic.so -Wl,--no-as-needed")

# A dynamic program of code without optimisation that may not be moved crashes before main().
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

# Libraries, headers and packages are the target's, programs (protoc) this machine's.
set(CMAKE_FIND_ROOT_PATH "${ORB_TARGET_CACHE}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_LIBDIR} "${ORB_TARGET_CACHE}/lib/pkgconfig")
set(ENV{PKG_CONFIG_PATH} "")

# There is protobuf-lite only, and FindProtobuf insists on the whole library.
set(Protobuf_LIBRARY "${ORB_TARGET_CACHE}/lib/libprotobuf-lite.a" CACHE FILEPATH "")

# CMake and ctest start target programs through it.
set(CMAKE_CROSSCOMPILING_EMULATOR "${ORB_TARGET_TOOL}-run" CACHE FILEPATH "")
