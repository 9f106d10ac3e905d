// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <stdlib.h>

// Whether an emulator runs this test (scripts/target), in which everything takes tens of times as
// long.
inline bool emulated() {
  static const bool is = getenv("ORB_EMULATED") != nullptr;
  return is;
}

// A number of rounds, or a size, that only makes a fault more likely to show: an eighth of it under
// the emulator. What the code does there is the same.
template <class Number>
Number fewerEmulated(Number count) {
  return emulated() ? static_cast<Number>(count / 8) : count;
}
