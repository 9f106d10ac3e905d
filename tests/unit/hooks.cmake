# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# Hook libraries for the log tests: complete, and with each function missing. The library opens a
# fixed name, so each has a separate directory. A test changes to that directory, and the program's
# run path is the working directory. (DT_RPATH, because it also works for a dlopen through a
# sanitizer.)
set(HOOKS_DIR ${PROJECT_BINARY_DIR}/tests/hooks)
function(orb_test_hook NAME)
  add_library(test_hook_${NAME} MODULE hooks/hook.cpp)
  target_compile_definitions(test_hook_${NAME} PRIVATE ${ARGN})
  target_link_libraries(test_hook_${NAME} PRIVATE orb_flags)
  set_target_properties(test_hook_${NAME} PROPERTIES OUTPUT_NAME orbalog
    LIBRARY_OUTPUT_DIRECTORY ${HOOKS_DIR}/${NAME})
endfunction()
orb_test_hook(complete)
orb_test_hook(no_alog HOOK_WITHOUT_ALOG)
orb_test_hook(no_get_persist_setting HOOK_WITHOUT_GET_PERSIST_SETTING)
orb_test_hook(no_decode_buffer HOOK_WITHOUT_DECODE_BUFFER)

add_dependencies(LogHook_test test_hook_complete test_hook_no_alog test_hook_no_get_persist_setting
  test_hook_no_decode_buffer)
orb_finds(LogHook_test TEST_HOOKS_DIR ${HOOKS_DIR})
target_link_options(LogHook_test PRIVATE -Wl,--disable-new-dtags,-rpath,.)
