// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "orbsim/LatencyModel.h"

#include <algorithm>

namespace orbsim {

LatencyEstimate LatencyModel::next(const Radio& radio, uint64_t waitedUs,
                                   std::optional<uint64_t> held) {
  const Technology& technology = radio.technology();
  if (mTechnology != &technology) {
    mTechnology = &technology;
    mUplink = settled(technology.uplinkLatency);
    mDownlink = settled(technology.downlinkLatency);
  }
  step(mUplink, technology.uplinkLatency, radio.load());
  step(mDownlink, technology.downlinkLatency, radio.load());

  LatencyEstimate estimate;
  estimate.ulLatency = waitedUs + held.value_or(static_cast<uint64_t>(mUplink.latency));
  estimate.ulVariance = static_cast<uint64_t>(mUplink.variance);
  estimate.dlLatency = waitedUs + held.value_or(static_cast<uint64_t>(mDownlink.latency));
  estimate.dlVariance = static_cast<uint64_t>(mDownlink.variance);
  estimate.rat = technology.latencyRat;
  return estimate;
}

LatencyModel::Direction LatencyModel::settled(Range range) {
  const int64_t middle = (range.low + range.high) / 2;
  const int64_t deviation = (range.high - range.low) / 8;
  return {middle, middle, deviation * deviation};
}

void LatencyModel::step(Direction& direction, Range range, int64_t load) {
  const int64_t width = range.high - range.low;
  const int64_t target = range.low + width * load / 1000;
  const int64_t jitter = width / 8;
  direction.sample += (target - direction.sample) / 4 - jitter +
                      static_cast<int64_t>(mRandom.below(static_cast<uint32_t>(2 * jitter + 1)));
  direction.sample = std::clamp(direction.sample, range.low, range.high);

  const int64_t deviation = direction.sample - direction.latency;
  direction.latency += deviation / 4;
  direction.variance += (deviation * deviation - direction.variance) / 8;
}

}  // namespace orbsim
