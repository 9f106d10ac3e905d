// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <cstdint>

#include "orbsim/Random.h"

namespace orbsim {

// One estimate of the link, in the units of the service messages.
struct LinkEstimate {
  uint32_t rate = 0;        // kbit/s
  uint32_t confidence = 0;  // 0 to 7
  bool downlink = false;
  uint32_t queueSizeUl = 0;  // bytes
};

// A plausible radio link: the rate wanders around a mean and fades now and then, the uplink queue
// fills while the rate is low and drains while it is high, the confidence grows while the rate is
// steady, and estimates alternate between runs of uplink and of downlink. The same seed gives the
// same estimates on every machine. Owned and used by one thread.
class LinkModel {
 public:
  explicit LinkModel(uint64_t seed) : mRandom(seed) {}

  LinkEstimate next();

 private:
  Random mRandom;
  int64_t mRate = 48000;
  int64_t mTarget = 48000;
  int64_t mQueue = 6000;
  int64_t mConfidence = 3;
  uint32_t mStepsToTarget = 0;
  uint32_t mStepsToTurn = 4;
  bool mDownlink = false;
};

}  // namespace orbsim
