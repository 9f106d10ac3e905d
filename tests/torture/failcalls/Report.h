// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <atomic>
#include <chrono>
#include <cstdio>
#include <functional>
#include <string>

#include "Fault.h"

namespace failcalls {

// What a run reports to the driver. It is in memory that both share, so it remains however the
// process ends. Texts are cut to the size of their members.
struct Report {
  Probe probe;
  char phase[40];    // the latest step of the scenario
  bool finished;     // the scenario is complete; only the end of the process follows
  bool terminated;   // std::terminate was called
  Stack terminator;  // the caller of std::terminate
  bool logStopped;   // the log's threads did not run although nothing failed any more
  // Counted by any thread, without a lock.
  std::atomic<unsigned> refused;  // functions that returned a failure
  std::atomic<unsigned> errors;   // status "internal error"
  std::atomic<unsigned> downs;    // status "service down" that the scenario did not cause
  unsigned lost;                  // expected callbacks that did not come
  unsigned late;                  // callbacks of a service whose disable had returned
  unsigned slowest;               // milliseconds of the slowest function
  char firstLost[64];             // the first of these
  char firstLate[64];
  char slowestName[40];
  char broken[160];       // a rule of the lifecycle contract that did not hold
  char lines[32 * 1024];  // one line of each kind that reports a failure, without numbers
};

template <size_t kSize>
void put(char (&room)[kSize], const std::string& text) {
  std::snprintf(room, kSize, "%s", text.c_str());
}

// One run of a scenario.
struct Run {
  Report& report;
  Fault fault;
  std::string socketPath;
  std::chrono::milliseconds patience;  // how long to wait for a callback after a call has failed
  // Stops the scenario's daemon, once, from any thread. The library can end the process during the
  // scenario; then the threads of ended sessions are not joined yet.
  std::function<void()> stopDaemon;
};

}  // namespace failcalls
