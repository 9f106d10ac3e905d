// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <stdlib.h>

// Whether an emulator runs this test (scripts/target).
inline bool emulated() {
  static const bool is = getenv("ORB_EMULATED") != nullptr;
  return is;
}

// Whether this test takes much longer than in a plain build: under the emulator, or in a build for
// which CMake says so.
inline bool slow() {
#ifdef ORB_SLOW_BUILD
  return true;
#else
  return emulated();
#endif
}

// A number of rounds, or a size, that only makes it more likely to find a fault. An eighth of it
// where the test is slow. The code does the same there.
template <class Number>
Number fewerIf(bool isSlow, Number count) {
  return isSlow ? static_cast<Number>(count / 8) : count;
}
