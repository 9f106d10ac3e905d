// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "orbsim/Radio.h"

#include <algorithm>

namespace orbsim {
namespace {

constexpr int64_t kBorderSignal = 150;

}  // namespace

void Radio::step() {
  if (mStepsToTarget == 0) {
    mSignalTarget = 350 + static_cast<int64_t>(mRandom.below(651));
    mLoadTarget = 50 + static_cast<int64_t>(mRandom.below(751));
    mStepsToTarget = 5 + mRandom.below(12);
  }
  --mStepsToTarget;
  const int64_t signalTarget = mLeaving ? kBorderSignal : mSignalTarget;
  const auto jitter = [this] { return static_cast<int64_t>(mRandom.below(21)) - 10; };
  mSignal = std::clamp<int64_t>(mSignal + (signalTarget - mSignal) / 5 + jitter(), 100, 1000);
  mLoad = std::clamp<int64_t>(mLoad + (mLoadTarget - mLoad) / 5 + jitter(), 0, 900);
}

void Radio::enterCell(const Technology& technology) {
  mTechnology = &technology;
  mSignal = 800;
  mLeaving = false;
}

int64_t Radio::share(int64_t capacity) const {
  return capacity * mSignal / 1000 * (1000 - mLoad * 6 / 10) / 1000;
}

}  // namespace orbsim
