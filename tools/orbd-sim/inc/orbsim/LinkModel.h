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

// The capacity of the device's link: the maximum of the technology, reduced by signal and load;
// zero during an interruption. The uplink queue fills while the uplink takes less data than the
// device offers. The confidence grows while the rate is stable. Estimates alternate between series
// of uplink and of downlink. The same seed gives the same estimates on every machine. Owned and
// used by one thread at a time.
class LinkModel {
 public:
  explicit LinkModel(uint64_t seed) : mRandom(seed) {}

  // `held` is a fixed rate in kbit/s that replaces the calculated one.
  LinkEstimate next(const Radio& radio, bool interrupted, std::optional<int64_t> held);

 private:
  Random mRandom;
  int64_t mRates[2] = {0, 0};  // last rates of uplink and downlink
  int64_t mQueue = 6000;
  int64_t mConfidence = 3;
  uint32_t mStepsToTurn = 4;
  bool mDownlink = false;
};

}  // namespace orbsim
