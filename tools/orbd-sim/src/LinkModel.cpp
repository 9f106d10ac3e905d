// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "orbsim/LinkModel.h"

#include <algorithm>
#include <cstdlib>

namespace orbsim {
namespace {

// Offered uplink load in kbit/s; the part that the link cannot carry is queued.
constexpr int64_t kOffered = 18000;
constexpr int64_t kQueueRoom = 64000;

}  // namespace

LinkEstimate LinkModel::next(const Radio& radio, bool interrupted, std::optional<int64_t> held) {
  if (mStepsToTurn == 0) {
    mDownlink = !mDownlink;
    mStepsToTurn = 3 + mRandom.below(5);
  }
  --mStepsToTurn;

  const auto rateOf = [&](int64_t capacity) -> int64_t {
    if (interrupted) return 0;
    if (held) return *held;
    const int64_t rate = radio.share(capacity);
    return rate + rate * (static_cast<int64_t>(mRandom.below(41)) - 20) / 1000;
  };
  const Technology& technology = radio.technology();
  const int64_t before = mRates[mDownlink ? 1 : 0];
  mRates[0] = rateOf(technology.uplinkRate);
  mRates[1] = rateOf(technology.downlinkRate);
  const int64_t rate = mRates[mDownlink ? 1 : 0];
  mQueue = std::clamp<int64_t>(mQueue + (kOffered - mRates[0]) / 8, 0, kQueueRoom);
  const bool steady = !interrupted && std::llabs(rate - before) <= before / 12;
  mConfidence = std::clamp<int64_t>(mConfidence + (steady ? 1 : -1), 1, 7);

  LinkEstimate estimate;
  estimate.rate = static_cast<uint32_t>(rate);
  estimate.confidence = static_cast<uint32_t>(mConfidence);
  estimate.downlink = mDownlink;
  estimate.queueSizeUl = static_cast<uint32_t>(mQueue);
  return estimate;
}

}  // namespace orbsim
