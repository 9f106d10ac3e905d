// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <memory>

#include "SdkDisable.h"

// Finishes disables that were called inside a callback, where a thread must not wait. One thread,
// "orb-closer", does it for all of them: it starts with the first disable, forces each one whose
// grace period is over, and ends after the last. All grace periods have the same length, so the
// oldest ends first. Static, never destroyed. Its lock guards the queue and is not held during a
// wait.
class DisableWatch {
 public:
  // Allocates only what a thread needs. If no thread can be started, it forces the disable at once.
  static void add(const std::shared_ptr<SdkDisable>& disable);

 private:
  struct State {
    Mutex lock;
    SdkDisable::Place queue ORB_GUARDED_BY(lock);
    bool running ORB_GUARDED_BY(lock) = false;
  };

  static State& state();
  // The next disable. Empty if there is none; the watch then ends.
  static std::shared_ptr<SdkDisable> next();
  static void watch();
  static void forceAll();
};
