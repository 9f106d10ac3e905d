# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# A note in each installed file that names its build: by it the debug information of a file that was
# stripped, or of one in a crash report, is found again. The linker makes it. There are linkers that
# take the flag and make none: the library's note is then made here, of what it is linked from.
include(CheckLinkerFlag)
check_linker_flag(CXX LINKER:--build-id=sha1 ORB_HAS_build_id_flag)
if(ORB_HAS_build_id_flag AND NOT DEFINED ORB_HAS_BUILD_ID)
  set(ORB_BUILD_ID_TRIAL ${CMAKE_CURRENT_BINARY_DIR}/CMakeFiles/OrbBuildIdTrial)
  file(WRITE ${ORB_BUILD_ID_TRIAL}.cpp "int main() { return 0; }\n")
  try_compile(ORB_BUILD_ID_LINKED ${ORB_BUILD_ID_TRIAL} SOURCES ${ORB_BUILD_ID_TRIAL}.cpp
    LINK_OPTIONS LINKER:--build-id=sha1 COPY_FILE ${ORB_BUILD_ID_TRIAL}.out)
  file(STRINGS ${ORB_BUILD_ID_TRIAL}.out notes REGEX "note\\.gnu\\.build-id")
  string(COMPARE NOTEQUAL "${notes}" "" made)
  set(ORB_HAS_BUILD_ID ${made} CACHE INTERNAL "The linker makes a build id")
endif()
set(ORB_BUILD_ID_LINK $<$<BOOL:${ORB_HAS_BUILD_ID}>:LINKER:--build-id=sha1>)

set(ORB_BUILD_ID_SCRIPT ${CMAKE_CURRENT_LIST_DIR}/OrbBuildIdNote.cmake)

# orb_build_id(TARGET FILE...): the note of a library that is linked from these files.
function(orb_build_id TARGET)
  if(ORB_HAS_BUILD_ID)
    return()
  endif()
  set(note ${CMAKE_CURRENT_BINARY_DIR}/${TARGET}BuildId.c)
  add_custom_command(OUTPUT ${note} VERBATIM
    COMMAND ${CMAKE_COMMAND} "-DFILES=${ARGN}" -DNOTE=${note} -P ${ORB_BUILD_ID_SCRIPT}
    DEPENDS ${ARGN} ${ORB_BUILD_ID_SCRIPT}
    COMMENT "Naming the build of ${TARGET}")
  target_sources(${TARGET} PRIVATE ${note})
endfunction()
