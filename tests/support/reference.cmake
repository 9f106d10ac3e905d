# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# A second implementation of the cryptography for the tests of the first, and keys for them. A cross build
# that has no libgcrypt goes without these tests; a native one does not.
find_package(PkgConfig QUIET)
if(CMAKE_CROSSCOMPILING)
  if(PkgConfig_FOUND)
    pkg_check_modules(GCRYPT QUIET IMPORTED_TARGET libgcrypt)
  endif()
else()
  pkg_check_modules(GCRYPT REQUIRED IMPORTED_TARGET libgcrypt)
endif()
if(TARGET PkgConfig::GCRYPT)
  add_library(orb_test_reference STATIC support/Reference.cpp support/TestKeys.cpp)
  target_include_directories(orb_test_reference PUBLIC support)
  target_link_libraries(orb_test_reference PUBLIC OpenSSL::Crypto
    PRIVATE orb_flags PkgConfig::GCRYPT)
endif()
