# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# Makes all names of the object FROM local but those in KEEP: -DNM= -DOBJCOPY= -DFROM= -DTO= -DKEEP=.
#
# Names that are to be one in the whole process (GNU's unique ones, for variables of inline functions) are
# not made local by objcopy; weak ones are, so they become that first.
execute_process(COMMAND ${NM} ${FROM} OUTPUT_VARIABLE names COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL " u [^\n]+" unique "${names}")
list(TRANSFORM unique REPLACE "^ u " "")
list(JOIN unique "\n" unique)
file(WRITE ${TO}.unique "${unique}\n")
execute_process(COMMAND ${OBJCOPY} --weaken-symbols=${TO}.unique ${FROM} ${TO}.weak
  COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${OBJCOPY} --wildcard --keep-global-symbols=${KEEP} --strip-debug ${TO}.weak ${TO}
  COMMAND_ERROR_IS_FATAL ANY)
file(REMOVE ${TO}.unique ${TO}.weak)
