# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# A second implementation of the cryptography for the tests of the first, and keys for them. A build
# without it would lack every test that decrypts, so there is none, whatever it is for.
find_package(PkgConfig REQUIRED)
pkg_check_modules(GCRYPT REQUIRED IMPORTED_TARGET libgcrypt)
add_library(orb_test_reference STATIC support/Reference.cpp support/TestKeys.cpp)
target_link_libraries(orb_test_reference PUBLIC orb_test_include OpenSSL::Crypto
  PRIVATE orb_flags PkgConfig::GCRYPT)
