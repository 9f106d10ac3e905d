# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# What the compiler and the linker can do against faults that somebody exploits, as far as they know
# how. orb_harden(TARGET...) asks for it; whatever is installed does.
#
#   stack protector         a canary behind the arrays of a function
#   stack clash protection  no frame, however large, steps over the guard page below the stack
#   fortified calls         the C library checks sizes that the compiler knows; OrbFortify.h
#   control flow            jumps and returns go only where they may: IBT and SHSTK, or BTI and PAC
#   RELRO, immediate        the tables of addresses are read-only before the program starts
#   no executable stack, no text relocations, programs at an address of chance
#
# Such a file also names its build (OrbBuildId.cmake).
include(CheckCompilerFlag)
include(CheckCXXSourceCompiles)
include(CheckLinkerFlag)
include(CheckPIESupported)
check_pie_supported()
include(${CMAKE_CURRENT_LIST_DIR}/OrbBuildId.cmake)

# A flag that is ignored with a warning is none.
set(CMAKE_REQUIRED_FLAGS -Werror)
foreach(flag -fstack-protector-strong -fstack-clash-protection -fcf-protection=full
        -mbranch-protection=standard)
  string(MAKE_C_IDENTIFIER "ORB_HAS${flag}" known)
  check_compiler_flag(CXX ${flag} ${known})
  if(${known})
    list(APPEND ORB_HARDENED_CODE ${flag})
  endif()
endforeach()
# Level 3 needs both a compiler and a C library; where one lacks it, the library's headers say so.
string(APPEND CMAKE_REQUIRED_FLAGS " -O2")
check_cxx_source_compiles("
  #undef _FORTIFY_SOURCE
  #define _FORTIFY_SOURCE 3
  #include <stdio.h>
  int main() { return 0; }" ORB_HAS_FORTIFY_3)
unset(CMAKE_REQUIRED_FLAGS)
foreach(flag relro now noexecstack text)
  check_linker_flag(CXX LINKER:-z,${flag} ORB_HAS_Z_${flag})
  if(ORB_HAS_Z_${flag})
    list(APPEND ORB_HARDENED_LINK LINKER:-z,${flag})
  endif()
endforeach()

set(ORB_FORTIFY_HEADER ${CMAKE_CURRENT_LIST_DIR}/OrbFortify.h)

function(orb_harden)
  foreach(target ${ARGN})
    target_compile_options(${target} PRIVATE ${ORB_HARDENED_CODE}
      "SHELL:-include \"${ORB_FORTIFY_HEADER}\"")
    target_compile_definitions(${target} PRIVATE
      ORB_FORTIFY_LEVEL=$<IF:$<BOOL:${ORB_HAS_FORTIFY_3}>,3,2>)
    target_link_options(${target} PRIVATE ${ORB_HARDENED_LINK} ${ORB_BUILD_ID_LINK})
  endforeach()
endfunction()
