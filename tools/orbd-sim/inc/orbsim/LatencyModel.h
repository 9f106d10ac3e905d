// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <cstdint>

#include "lle.pb.h"
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

// A plausible radio link: the latency of each direction wanders within what its technology can do,
// WCDMA being the slowest and NR5G the fastest, and the variance follows how much it moves. Now and
// then the link changes to a neighbouring technology and the estimates start over there. The same
// seed gives the same estimates on every machine. Owned and used by one thread.
class LatencyModel {
 public:
  explicit LatencyModel(uint64_t seed);

  LatencyEstimate next();

 private:
  // In microseconds.
  struct Range {
    int64_t low;
    int64_t high;
  };
  struct Direction {
    int64_t sample = 0;    // what the link does
    int64_t target = 0;    // where that is heading
    int64_t latency = 0;   // the estimate of it: a running mean
    int64_t variance = 0;  // and its mean square deviation
    uint32_t stepsToTarget = 0;
  };

  static Range uplink(LleProto::RatType rat);
  static Range downlink(LleProto::RatType rat);
  static Direction settled(Range range);
  void changeRat(LleProto::RatType rat);
  void step(Direction& direction, Range range);
  int64_t within(Range range);

  Random mRandom;
  LleProto::RatType mRat = LleProto::LTE;
  uint32_t mStepsOnRat = 0;
  Direction mUplink;
  Direction mDownlink;
};

}  // namespace orbsim
