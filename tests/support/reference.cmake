# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# A second implementation of the cryptography, for the tests of the first, and keys for them. Every
# test that decrypts needs it, so each build requires it.
find_package(PkgConfig REQUIRED)
pkg_check_modules(GCRYPT REQUIRED IMPORTED_TARGET libgcrypt)
add_library(orb_test_reference STATIC support/Reference.cpp support/TestKeys.cpp)
target_link_libraries(orb_test_reference PUBLIC orb_test_include OpenSSL::Crypto
  PRIVATE orb_flags PkgConfig::GCRYPT)
