// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <cstdint>
#include <optional>

#include "orbsim/Radio.h"
#include "orbsim/Random.h"

namespace orbsim {

// One estimate of the link, in the units of the service messages.
struct LinkEstimate {
  uint32_t rate = 0;        // kbit/s
  uint32_t confidence = 0;  // 0 to 7
  bool downlink = false;
  uint32_t queueSizeUl = 0;  // bytes
};

// The capacity of the device's link: what signal and load leave of the technology's, and nothing
// while the link is interrupted. The uplink queue fills while the uplink takes less than the device
// offers, the confidence grows while the rate is steady, and estimates alternate between runs of
// uplink and of downlink. The same seed gives the same estimates on every machine. Owned and used
// by one thread at a time.
class LinkModel {
 public:
  explicit LinkModel(uint64_t seed) : mRandom(seed) {}

  // `held` is a rate in kbit/s that takes the place of what the radio gives.
  LinkEstimate next(const Radio& radio, bool interrupted, std::optional<int64_t> held);

 private:
  Random mRandom;
  int64_t mRates[2] = {0, 0};  // of uplink and downlink, the last time
  int64_t mQueue = 6000;
  int64_t mConfidence = 3;
  uint32_t mStepsToTurn = 4;
  bool mDownlink = false;
};

}  // namespace orbsim
