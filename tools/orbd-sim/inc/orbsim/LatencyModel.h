// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <cstdint>
#include <optional>

#include "lle.pb.h"
#include "orbsim/Radio.h"
#include "orbsim/Random.h"

namespace orbsim {

// One estimate of the latency in both directions.
struct LatencyEstimate {
  uint64_t ulLatency = 0;   // microseconds
  uint64_t ulVariance = 0;  // square microseconds
  uint64_t dlLatency = 0;
  uint64_t dlVariance = 0;
  LleProto::RatType rat = LleProto::LTE;
};

// The latency of the device's link. Each direction moves within the range of the technology,
// towards its upper end as the load of the cell grows; the variance depends on how much it moves.
// During an interruption everything waits, so the latency grows by that time. The estimates start
// again with a new technology. The same seed gives the same estimates on every machine. Owned and
// used by one thread at a time.
class LatencyModel {
 public:
  explicit LatencyModel(uint64_t seed) : mRandom(seed) {}

  // `waitedUs` is the time since the link was interrupted. `held` is a fixed latency in
  // microseconds that replaces the calculated one.
  LatencyEstimate next(const Radio& radio, uint64_t waitedUs, std::optional<uint64_t> held);

 private:
  using Range = Technology::Range;
  struct Direction {
    int64_t sample = 0;    // the latency of the link
    int64_t latency = 0;   // the estimate: a running mean
    int64_t variance = 0;  // the mean square deviation
  };

  static Direction settled(Range range);
  void step(Direction& direction, Range range, int64_t load);

  Random mRandom;
  const Technology* mTechnology = nullptr;  // of the current estimates
  Direction mUplink;
  Direction mDownlink;
};

}  // namespace orbsim
