// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <cstdint>
#include <optional>

#include "lle.pb.h"
#include "orbsim/Radio.h"
#include "orbsim/Random.h"

namespace orbsim {

// One estimate of the latency in each direction.
struct LatencyEstimate {
  uint64_t ulLatency = 0;   // microseconds
  uint64_t ulVariance = 0;  // square microseconds
  uint64_t dlLatency = 0;
  uint64_t dlVariance = 0;
  LleProto::RatType rat = LleProto::LTE;
};

// The latency of the device's link: each direction moves within what the technology can do, towards
// its upper end as the load of the cell grows, and the variance follows how much it moves. While
// the link is interrupted everything waits, so the latency grows by the time that this lasts. In
// another technology the estimates start over. The same seed gives the same estimates on every
// machine. Owned and used by one thread at a time.
class LatencyModel {
 public:
  explicit LatencyModel(uint64_t seed) : mRandom(seed) {}

  // `waitedUs` is how long the link has been interrupted, `held` a latency in microseconds that
  // takes the place of what the radio gives.
  LatencyEstimate next(const Radio& radio, uint64_t waitedUs, std::optional<uint64_t> held);

 private:
  using Range = Technology::Range;
  struct Direction {
    int64_t sample = 0;    // what the link does
    int64_t latency = 0;   // the estimate of it: a running mean
    int64_t variance = 0;  // and its mean square deviation
  };

  static Direction settled(Range range);
  void step(Direction& direction, Range range, int64_t load);

  Random mRandom;
  const Technology* mTechnology = nullptr;  // that the estimates are about
  Direction mUplink;
  Direction mDownlink;
};

}  // namespace orbsim
