// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// The events of the daemon stand-in's device, for tests that compare them with what clients
// receive.

#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "orbsim/Control.h"
#include "orbsim/Device.h"

namespace orbsimtest {

// Milliseconds between reports of which none is to be missing. A daemon that the machine keeps from
// running for 128 intervals goes on with the present, and leaves out what came before.
constexpr int kUnhurried = 10;

// A second device with the same seed: it does the same at the same time.
class Course {
 public:
  explicit Course(int64_t stepMs, uint64_t seed = orbsim::Options{}.seed)
      : mStepMs(stepMs), mDevice(seed, {}) {
    mDevice.setStep(stepMs);
  }

  orbsim::Estimate next() { return mDevice.step(mTick++ * mStepMs); }
  // The next event that matches. Clients begin at any time, and a late client misses some events.
  bool find(const std::function<bool(const orbsim::Estimate&)>& wanted) {
    for (int i = 0; i < 100000; ++i) {
      if (wanted(next())) return true;
    }
    return false;
  }
  LliProto::LliIndResp nextPhase() {
    for (;;) {
      if (const orbsim::HandoffPhase* const phase = mDevice.phaseFrom(mPhase)) {
        ++mPhase;
        return phase->indication;
      }
      next();
    }
  }

 private:
  const int64_t mStepMs;
  int64_t mTick = 0;
  uint64_t mPhase = 0;
  orbsim::Device mDevice;
};

}  // namespace orbsimtest
