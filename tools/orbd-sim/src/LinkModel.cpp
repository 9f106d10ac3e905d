// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "orbsim/LinkModel.h"

#include <algorithm>
#include <cstdlib>

namespace orbsim {
namespace {

constexpr int64_t kMinRate = 2000;
constexpr int64_t kMaxRate = 120000;
// Offered uplink load in kbit/s; what the link cannot take queues up.
constexpr int64_t kLoad = 40000;

}  // namespace

LinkEstimate LinkModel::next() {
  if (mStepsToTarget == 0) {
    mTarget =
        kMinRate + static_cast<int64_t>(mRandom.below(static_cast<uint32_t>(kMaxRate - kMinRate)));
    mStepsToTarget = 5 + mRandom.below(12);
  }
  --mStepsToTarget;
  if (mStepsToTurn == 0) {
    mDownlink = !mDownlink;
    mStepsToTurn = 3 + mRandom.below(5);
  }
  --mStepsToTurn;

  const int64_t before = mRate;
  mRate += (mTarget - mRate) / 5 + static_cast<int64_t>(mRandom.below(2001)) - 1000;
  mRate = std::clamp(mRate, kMinRate, kMaxRate);
  mQueue = std::clamp<int64_t>(mQueue + (kLoad - mRate) / 8, 0, 64000);
  const bool steady = std::llabs(mRate - before) < before / 16;
  mConfidence = std::clamp<int64_t>(mConfidence + (steady ? 1 : -1), 1, 7);

  LinkEstimate estimate;
  estimate.rate = static_cast<uint32_t>(mRate);
  estimate.confidence = static_cast<uint32_t>(mConfidence);
  estimate.downlink = mDownlink;
  estimate.queueSizeUl = static_cast<uint32_t>(mQueue);
  return estimate;
}

}  // namespace orbsim
