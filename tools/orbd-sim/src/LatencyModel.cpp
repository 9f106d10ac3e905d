// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "orbsim/LatencyModel.h"

#include <algorithm>

namespace orbsim {

LatencyModel::Range LatencyModel::uplink(LleProto::RatType rat) {
  if (rat == LleProto::WCDMA) return {70000, 160000};
  if (rat == LleProto::LTE) return {18000, 45000};
  return {4000, 12000};
}

LatencyModel::Range LatencyModel::downlink(LleProto::RatType rat) {
  if (rat == LleProto::WCDMA) return {50000, 120000};
  if (rat == LleProto::LTE) return {12000, 35000};
  return {2000, 9000};
}

LatencyModel::LatencyModel(uint64_t seed) : mRandom(seed) { changeRat(LleProto::LTE); }

LatencyEstimate LatencyModel::next() {
  if (mStepsOnRat == 0) {
    // LTE lies between the two others: they are reached from it and left to it.
    const auto neighbour = mRandom.below(2) == 0 ? LleProto::WCDMA : LleProto::NR5G;
    changeRat(mRat == LleProto::LTE ? neighbour : LleProto::LTE);
  }
  --mStepsOnRat;
  step(mUplink, uplink(mRat));
  step(mDownlink, downlink(mRat));

  LatencyEstimate estimate;
  estimate.ulLatency = static_cast<uint64_t>(mUplink.latency);
  estimate.ulVariance = static_cast<uint64_t>(mUplink.variance);
  estimate.dlLatency = static_cast<uint64_t>(mDownlink.latency);
  estimate.dlVariance = static_cast<uint64_t>(mDownlink.variance);
  estimate.rat = mRat;
  return estimate;
}

void LatencyModel::changeRat(LleProto::RatType rat) {
  mRat = rat;
  mStepsOnRat = 8 + mRandom.below(16);
  mUplink = settled(uplink(rat));
  mDownlink = settled(downlink(rat));
}

LatencyModel::Direction LatencyModel::settled(Range range) {
  const int64_t middle = (range.low + range.high) / 2;
  const int64_t deviation = (range.high - range.low) / 8;
  return {middle, middle, middle, deviation * deviation, 0};
}

void LatencyModel::step(Direction& direction, Range range) {
  if (direction.stepsToTarget == 0) {
    direction.target = within(range);
    direction.stepsToTarget = 3 + mRandom.below(6);
  }
  --direction.stepsToTarget;
  const int64_t jitter = (range.high - range.low) / 20;
  direction.sample += (direction.target - direction.sample) / 4 + within({-jitter, jitter});
  direction.sample = std::clamp(direction.sample, range.low, range.high);

  const int64_t deviation = direction.sample - direction.latency;
  direction.latency += deviation / 4;
  direction.variance += (deviation * deviation - direction.variance) / 8;
}

int64_t LatencyModel::within(Range range) {
  return range.low + mRandom.below(static_cast<uint32_t>(range.high - range.low + 1));
}

}  // namespace orbsim
