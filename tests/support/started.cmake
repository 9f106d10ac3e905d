# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# How tests start programs of this build, and which tests a build for another processor lacks.

# orb_started(RESULT TARGET): the path with which a test starts a target's program. In a build for
# another processor this is a script that calls the emulator. It passes its own path as the program's
# name, so a program that starts itself again also starts the script. So the kernel need not support
# the emulator. The emulator itself sets the limit ORB_STARTED_DESCRIPTORS for descriptors, because
# no shell could start with it.
function(orb_started RESULT TARGET)
  if(NOT CMAKE_CROSSCOMPILING_EMULATOR)
    set(${RESULT} $<TARGET_FILE:${TARGET}> PARENT_SCOPE)
    return()
  endif()
  set(script ${PROJECT_BINARY_DIR}/started/${TARGET})
  get_property(known GLOBAL PROPERTY ORB_STARTED_${TARGET} SET)
  if(NOT known)
    set_property(GLOBAL PROPERTY ORB_STARTED_${TARGET} ON)
    list(JOIN CMAKE_CROSSCOMPILING_EMULATOR "' '" emulator)
    file(GENERATE OUTPUT ${script} CONTENT
      "#!/bin/sh\nORB_STARTED_AS=$0 exec '${emulator}' '$<TARGET_FILE:${TARGET}>' \"$@\"\n"
      FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
      WORLD_READ WORLD_EXECUTE)
  endif()
  set(${RESULT} ${script} PARENT_SCOPE)
endfunction()

# orb_finds(TARGET DEFINITION PATH...): defines DEFINITION as the path of a file of the build for
# TARGET. The test passes it through built() of support/Built.h, because tests may be copied to another
# machine.
function(orb_finds TARGET)
  set(definitions ORB_BUILD="${PROJECT_BINARY_DIR}"
    ORB_STARTED_BY_SCRIPT=$<BOOL:${CMAKE_CROSSCOMPILING_EMULATOR}>)
  while(ARGN)
    list(POP_FRONT ARGN definition path)
    list(APPEND definitions ${definition}="${path}")
  endwhile()
  target_compile_definitions(${TARGET} PRIVATE ${definitions})
endfunction()

# orb_starts(TARGET DEFINITION PROGRAM...): the same for how PROGRAM is started.
function(orb_starts TARGET)
  while(ARGN)
    list(POP_FRONT ARGN definition program)
    orb_started(started ${program})
    orb_finds(${TARGET} ${definition} ${started})
    add_dependencies(${TARGET} ${program})
  endwhile()
endfunction()

# orb_not_run(REASON NAME...): tests that the build for this machine has and this build lacks. The list
# is in not_run.txt of the build, and `scripts/target test` prints it.
file(WRITE ${PROJECT_BINARY_DIR}/not_run.txt "")
function(orb_not_run REASON)
  foreach(name ${ARGN})
    file(APPEND ${PROJECT_BINARY_DIR}/not_run.txt "${name}: ${REASON}\n")
  endforeach()
endfunction()

# orb_carried(NAME NEEDS TARGET ARGUMENT...): a test that can run on a device (tests/device). NEEDS are
# the programs that it needs, or -. Paths of files among its arguments start at the build's root.
function(orb_carried NAME NEEDS TARGET)
  string(JOIN " " line ${NAME} ${NEEDS} 600 $<TARGET_FILE:${TARGET}> ${ARGN})
  set_property(GLOBAL APPEND PROPERTY ORB_CARRIED "${line}")
endfunction()
