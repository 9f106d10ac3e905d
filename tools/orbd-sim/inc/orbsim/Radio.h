// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <cstdint>

#include "orbsim/Random.h"
#include "orbsim/Technology.h"

namespace orbsim {

// The radio conditions of the device: the signal of its cell, which varies while the device moves
// and fades before a handoff, and the load of the cell by other devices. The models of capacity and
// latency use it. Owned and used by one thread at a time.
class Radio {
 public:
  Radio(uint64_t seed, const Technology& technology) : mRandom(seed), mTechnology(&technology) {}

  // One step of movement.
  void step();
  // Enters another cell, near its centre.
  void enterCell(const Technology& technology);
  // The device approaches the border of its cell, or moves away from the border.
  void setLeaving(bool leaving) { mLeaving = leaving; }

  const Technology& technology() const { return *mTechnology; }
  int64_t signal() const { return mSignal; }  // thousandths
  int64_t load() const { return mLoad; }      // thousandths
  // The part of this capacity that is available.
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
