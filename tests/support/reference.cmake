# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# A second implementation of the cryptography, for the tests of the first, and keys for them. Every
# test that decrypts needs it, so each build requires it.
find_package(PkgConfig REQUIRED)
pkg_check_modules(GCRYPT REQUIRED IMPORTED_TARGET libgcrypt)
add_library(orb_test_reference STATIC support/Reference.cpp)
target_link_libraries(orb_test_reference PUBLIC orb_test_keys
  PRIVATE orb_flags PkgConfig::GCRYPT)

find_program(ORB_OPENSSL openssl REQUIRED NO_CMAKE_FIND_ROOT_PATH)
set(folder ${CMAKE_CURRENT_BINARY_DIR}/keys)
file(MAKE_DIRECTORY ${folder})
add_custom_command(OUTPUT ${folder}/TestKeysPem.h VERBATIM
  COMMAND bash ${CMAKE_CURRENT_LIST_DIR}/make_keys.sh ${ORB_OPENSSL} ${folder}/TestKeysPem.h
  DEPENDS ${CMAKE_CURRENT_LIST_DIR}/make_keys.sh COMMENT "Making RSA keys for tests")
add_library(orb_test_keys STATIC support/TestKeys.cpp ${folder}/TestKeysPem.h)
target_include_directories(orb_test_keys PRIVATE ${folder})
target_link_libraries(orb_test_keys PUBLIC orb_test_include OpenSSL::Crypto PRIVATE orb_flags)
unset(folder)
