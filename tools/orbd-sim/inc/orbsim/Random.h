// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <cstdint>

namespace orbsim {

// The random numbers of the models: splitmix64. It is small, has good quality and does not use the
// standard library's distributions, so that a seed gives the same run on every machine. Owned and
// used by one thread.
class Random {
 public:
  explicit Random(uint64_t seed) : mState(seed) {}

  // 0 to bound - 1.
  uint32_t below(uint32_t bound) {
    mState += 0x9E3779B97F4A7C15u;
    uint64_t z = mState;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
    z ^= z >> 31;
    return static_cast<uint32_t>(z % bound);
  }

 private:
  uint64_t mState;
};

}  // namespace orbsim
