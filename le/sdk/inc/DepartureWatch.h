// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <memory>

#include "SdkDeparture.h"

// Waits for departures in place of threads that must not wait, those that disable inside a
// callback. One thread, "orb-closer", for all departures under way: it starts with the first of
// them, frees the worker from each whose patience is over, and ends after the last. Departures come
// with the same patience, so the oldest is the next to run out. Static, never destroyed; its lock
// guards the queue and is free while a departure is waited for.
class DepartureWatch {
 public:
  // Takes no memory but what a thread takes. Without a thread the departure is abandoned at once.
  static void add(const std::shared_ptr<SdkDeparture>& departure);

 private:
  struct State {
    Mutex lock;
    SdkDeparture::Place queue ORB_GUARDED_BY(lock);
    bool running ORB_GUARDED_BY(lock) = false;
  };

  static State& state();
  // The next departure; empty, and the watch is over, when there is none.
  static std::shared_ptr<SdkDeparture> next();
  static void watch();
  static void abandonAll();
};
