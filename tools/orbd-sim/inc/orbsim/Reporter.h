// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <cstdint>
#include <optional>

#include "orbsim/World.h"

namespace orbsim {

// A service's place among the ticks of the world: which one it tells next. Owned and used by one
// thread.
class Reporter {
 public:
  Reporter(World& world, uint32_t sdkType) : mWorld(world), mSdkType(sdkType) {}

  // The first report tells the present tick and follows at once.
  void start() {
    mNext = mWorld.tick(Clock::now());
    mLast.reset();
    mWorld.wanted(mSdkType);
  }
  std::optional<Clock::time_point> due() { return mWorld.tickDue(mNext); }
  const Estimate& next() {
    mLast = mWorld.estimate(mNext++);
    return *mLast;
  }
  // While periodic reports are running the last one sent is the last one there is; otherwise
  // whoever asks gets the present one.
  const Estimate& latest(bool reportsAreRunning) {
    if (reportsAreRunning && mLast) return *mLast;
    if (!reportsAreRunning) mWorld.wanted(mSdkType);
    mLast = mWorld.present();
    return *mLast;
  }

 private:
  World& mWorld;
  const uint32_t mSdkType;
  uint64_t mNext = 0;
  std::optional<Estimate> mLast;
};

}  // namespace orbsim
