# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# Compiles every public header alone with strict flags and fails on the first diagnostic. It also
# finds headers that are missing in this folder's CMakeLists.txt.
file(GLOB headers RELATIVE ${INCLUDE_DIR} ${INCLUDE_DIR}/orb/*.h)
if(NOT headers)
  message(FATAL_ERROR "no headers in ${INCLUDE_DIR}/orb")
endif()

# Some compilers need the right file name and an output file.
function(compile COMPILER LANGUAGE STANDARD HEADER)
  file(WRITE empty.${LANGUAGE} "")
  set(flags -pedantic -Wall -Wextra -Wconversion -Wsign-conversion -Wshadow -Wundef -Wcast-qual -Werror)
  if(LANGUAGE STREQUAL "cpp")
    list(APPEND flags -Wold-style-cast -Wzero-as-null-pointer-constant)
  endif()
  execute_process(
    COMMAND ${COMPILER} -std=${STANDARD} ${flags} -I${INCLUDE_DIR} -include ${HEADER}
            -c empty.${LANGUAGE} -o empty.o
    RESULT_VARIABLE result ERROR_VARIABLE errors OUTPUT_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${HEADER} as ${STANDARD}:\n${output}${errors}")
  endif()
  message(STATUS "${HEADER} as ${STANDARD}: clean")
endfunction()

foreach(header ${headers})
  compile(${C_COMPILER} c c99 ${header})
  compile(${C_COMPILER} c c11 ${header})
  compile(${CXX_COMPILER} cpp c++11 ${header})
  compile(${CXX_COMPILER} cpp c++17 ${header})
endforeach()
