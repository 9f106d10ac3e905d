// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <cstdint>

#include "orbsim/Random.h"
#include "orbsim/Technology.h"

namespace orbsim {

// What the device's antenna meets: the signal of its cell, which wanders while the device moves and
// fades before a handoff, and the load that others put on the cell. The models of capacity and
// latency are views of it. Owned and used by one thread at a time.
class Radio {
 public:
  Radio(uint64_t seed, const Technology& technology) : mRandom(seed), mTechnology(&technology) {}

  // One step of the way.
  void step();
  // Into another cell, near its middle.
  void enterCell(const Technology& technology);
  // The device nears the border of its cell, or turns away from it.
  void setLeaving(bool leaving) { mLeaving = leaving; }

  const Technology& technology() const { return *mTechnology; }
  int64_t signal() const { return mSignal; }  // thousandths
  int64_t load() const { return mLoad; }      // thousandths
  // What is left of such a capacity.
  int64_t share(int64_t capacity) const;

 private:
  Random mRandom;
  const Technology* mTechnology;
  int64_t mSignal = 800;
  int64_t mSignalTarget = 800;
  int64_t mLoad = 300;
  int64_t mLoadTarget = 300;
  uint32_t mStepsToTarget = 0;
  bool mLeaving = false;
};

}  // namespace orbsim
