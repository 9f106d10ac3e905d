// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <cstdint>
#include <optional>

#include "orbsim/World.h"

namespace orbsim {

// Finds the next tick of the world that a service reports. Owned and used by one thread.
class Reporter {
 public:
  Reporter(World& world, uint32_t sdkType) : mWorld(world), mSdkType(sdkType) {}

  // The first report is for the current tick and is sent at once.
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
  // The last report: while periodic reports are sent, the last one sent; otherwise the current one.
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
