// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <memory>

#include "SdkDisable.h"

// Finishes disables in place of threads that must not wait, those that disable inside a callback.
// One thread, "orb-closer", for all of them: it starts with the first one, forces each whose grace
// period is over, and ends after the last. All have the same grace period, so that of the oldest is
// the next one to end. Static, never destroyed; its lock guards the queue and is free while a
// disable is waited for.
class DisableWatch {
 public:
  // Takes no memory but what a thread takes. Without a thread the disable is forced at once.
  static void add(const std::shared_ptr<SdkDisable>& disable);

 private:
  struct State {
    Mutex lock;
    SdkDisable::Place queue ORB_GUARDED_BY(lock);
    bool running ORB_GUARDED_BY(lock) = false;
  };

  static State& state();
  // The next disable; empty, and the watch is over, when there is none.
  static std::shared_ptr<SdkDisable> next();
  static void watch();
  static void forceAll();
};
