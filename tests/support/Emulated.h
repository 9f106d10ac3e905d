// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <stdlib.h>

// Whether an emulator runs this test (scripts/target). Everything takes tens of times as long
// there.
inline bool emulated() {
  static const bool is = getenv("ORB_EMULATED") != nullptr;
  return is;
}

// A number of rounds, or a size, that only makes it more likely to find a fault. An eighth of it
// under the emulator. The code does the same there.
template <class Number>
Number fewerEmulated(Number count) {
  return emulated() ? static_cast<Number>(count / 8) : count;
}
